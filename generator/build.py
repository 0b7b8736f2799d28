"""From schema files to a checked model."""

from pathlib import Path

from generator.checks import check
from generator.includes import resolve_includes
from generator.model import Module
from generator.resolve import Resolver
from generator.schema import BadSchema, Problems, read_files


def build(paths: list[Path]) -> Module:
    """Raises BadSchema with every problem of all files, in the order of the files."""
    problems = Problems()
    declared, files = read_files(paths, problems)
    if declared is None:
        raise BadSchema(problems.lines)
    module = Resolver(declared, files, problems).run()
    check(module, problems)
    if problems.lines:
        raise BadSchema(problems.lines)
    resolve_includes(module)
    return module
