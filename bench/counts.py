"""Counts the instructions of the benchmark's rows and holds them against those on record.

Instruction counts repeat, unlike times, so a change that costs more is seen in review. A row that
takes over 3 percent more than on record fails; one that takes as much less is told. Accept new
figures with --update and commit them.
"""

import argparse
import json
import re
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

RECORD = Path(__file__).with_name("instruction_counts.json")
TOLERANCE = 0.03
VALGRIND = ["valgrind", "--tool=callgrind", "--instr-atstart=no", "--callgrind-out-file=/dev/null"]


def run(command):
    result = subprocess.run(command, capture_output=True, text=True)
    if result.returncode != 0:
        sys.exit(f"{' '.join(map(str, command))}:\n{result.stderr}")
    return result


def rows(program, wanted):
    """Name and size of every row that is counted."""
    listed = (line.split() for line in run([program, "--list"]).stdout.splitlines())
    return [(name, int(size)) for name, size in listed if int(size) and re.search(wanted, name)]


def count(program, name, size):
    """Instructions per item of one row."""
    result = run([*VALGRIND, program, "--measure", name, "--size", str(size)])
    items = float(result.stdout.split()[1])
    collected = int(re.search(r"Collected : (\d+)", result.stderr)[1])
    if not collected:
        sys.exit(f"{name}: nothing counted; was {program} built without valgrind's headers?")
    return round(collected / items, 1)


def count_all(program, wanted):
    # Two at a time: counts do not care, and the machine has two cores.
    with ThreadPoolExecutor(2) as pool:
        counted = pool.map(lambda row: (row[0], count(program, *row)), rows(program, wanted))
        return dict(counted)


def compare(counts, recorded):
    """Prints every row and returns how many fail."""
    failures = 0
    for name, now in counts.items():
        before = recorded.get(name)
        if before is None:
            change, remark = "", "not on record"
            failures += 1
        else:
            ratio = now / before - 1 if before else 0.0
            remark = "COSTS MORE" if ratio > TOLERANCE else "cheaper" if ratio < -TOLERANCE else ""
            change = f"{ratio:+.1%}"
            failures += ratio > TOLERANCE
        print(
            f"{name:20}{now:10.1f}{before if before is not None else '-':>10}{change:>9}  {remark}"
        )
    return failures


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("program", help="the kxsim_bench of a release build")
    parser.add_argument("--rows", default="", help="only rows that match this regular expression")
    parser.add_argument("--update", action="store_true", help="record the present counts")
    options = parser.parse_args()

    counts = count_all(options.program, options.rows)
    compiler = run([options.program, "--compiler"]).stdout.strip()
    record = json.loads(RECORD.read_text()) if RECORD.exists() else {"rows": {}}
    print(f"{'instructions per item':20}{'now':>9}{'record':>10}")
    failures = compare(counts, record["rows"])
    if options.update:
        kept = {} if not options.rows else record["rows"]
        record = {"compiler": compiler, "rows": kept | counts}
        RECORD.write_text(json.dumps(record, indent=2) + "\n")
        return
    if record.get("compiler") != compiler:
        print(f"\nNot judged: the record is of {record.get('compiler')}, this is {compiler}.")
        return
    if failures:
        sys.exit(
            f"\n{failures} rows cost over {TOLERANCE:.0%} more than on record or are not on it; "
            "accept with: make bench-counts ARGS=--update"
        )


if __name__ == "__main__":
    main()
