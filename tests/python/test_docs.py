"""What the pages show runs as it stands."""

import codeop
import re
import subprocess
import sys
from pathlib import Path

import pytest

ROOT = Path(__file__).parents[2]


def blocks_of(page):
    blocks = re.findall(r"```python\n(.*?)```", (ROOT / page).read_text(), re.DOTALL)
    assert blocks
    return blocks


@pytest.mark.parametrize("page", ["docs/tutorial.md", "docs/python.md"])
def test_the_examples_of_a_page_run_in_order(page, tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    names = {}
    for block in blocks_of(page):
        exec(compile(block, page, "exec"), names)


@pytest.mark.parametrize("page", ["README.md", "docs/tutorial.md", "docs/python.md"])
def test_the_examples_of_a_page_can_be_pasted_line_by_line(page):
    for block in blocks_of(page):
        typed = []
        for line in [*block.splitlines(), ""]:
            typed.append(line)
            is_whole = codeop.compile_command("\n".join(typed)) is not None
            typed = [] if is_whole else typed
        assert typed == []


def test_the_first_page_s_study_runs_as_a_file(tmp_path):
    (tmp_path / "study.py").write_text(blocks_of("README.md")[0])
    command = [sys.executable, "-m", "kxsim", "run", "study.py", "-q"]
    done = subprocess.run(command, cwd=tmp_path, capture_output=True, text=True, timeout=120)
    assert done.returncode == 0, done.stderr
    assert len((tmp_path / "results.csv").read_text().splitlines()) == 1 + 9
    assert len([*tmp_path.glob("pictures/*.png")]) == 2
