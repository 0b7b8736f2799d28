"""One small example, held letter by letter, so that a change of the generated code is seen."""

from pathlib import Path

from generator import emit
from generator.build import build

GOLDEN = Path(__file__).parent / "golden"
RENEW = "python -m generator --out tests/generator/golden/expected tests/generator/golden/shelf/*"


def test_the_shelf_is_generated_as_it_was():
    texts = emit.render(build(sorted(GOLDEN.glob("shelf/*.toml"))))
    expected = {
        path.relative_to(GOLDEN / "expected").as_posix(): path.read_text(encoding="utf-8")
        for path in (GOLDEN / "expected").rglob("*.*")
    }
    assert texts.keys() == expected.keys()
    for path, text in texts.items():
        assert text == expected[path], f"{path} differs; if that is meant: {RENEW}"
