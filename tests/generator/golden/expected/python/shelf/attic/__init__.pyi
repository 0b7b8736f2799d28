# Generated from the schemas of shelf.attic.

__all__ = []
