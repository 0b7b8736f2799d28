"""The command: `python -m generator --out DIR SCHEMAS...`, from the root of the repository."""

import argparse
import sys
from pathlib import Path

from generator import emit
from generator.build import build
from generator.schema import BadSchema
from generator.stats import report


def arguments(given: list[str]) -> argparse.Namespace:
    parser = argparse.ArgumentParser(prog="generator", description="Makes classes from schemas.")
    parser.add_argument("schemas", nargs="*", type=Path, metavar="SCHEMA")
    parser.add_argument("--out", type=Path, help="the folder that the files go under")
    task = parser.add_mutually_exclusive_group()
    task.add_argument("--list-outputs", action="store_true", help="print the files, write nothing")
    task.add_argument("--reference", action="store_true", help="write the reference instead")
    task.add_argument("--stats", action="store_true", help="print lines per class, write nothing")
    parsed = parser.parse_args(given)
    if parsed.out is None and not parsed.stats:
        parser.error("--out is needed")
    parsed.schemas = parsed.schemas or sorted(Path("src").rglob("*.toml"))
    return parsed


def main(given: list[str]) -> int:
    parsed = arguments(given)
    try:
        module = build(parsed.schemas)
    except BadSchema as refused:
        print("\n".join(refused.lines), file=sys.stderr)
        return 1
    if parsed.list_outputs:
        print("\n".join(str(parsed.out / path) for path in emit.outputs(module)))
    elif parsed.stats:
        print(report(module, emit.render(module)))
    else:
        plan = emit.plan_reference if parsed.reference else emit.plan
        emit.write(emit.render(module, plan), parsed.out)
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
