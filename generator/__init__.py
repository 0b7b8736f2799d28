"""Turns the schemas of a model package into its classes."""
