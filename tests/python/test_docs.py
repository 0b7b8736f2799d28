"""What the pages show runs as it stands."""

import re
from pathlib import Path

import pytest

ROOT = Path(__file__).parents[2]


@pytest.mark.parametrize("page", ["README.md", "docs/python.md"])
def test_the_examples_of_a_page_run_in_order(page, tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    blocks = re.findall(r"```python\n(.*?)```", (ROOT / page).read_text(), re.DOTALL)
    assert blocks
    names = {}
    for block in blocks:
        exec(compile(block, page, "exec"), names)
