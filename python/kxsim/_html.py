"""How elements, lists and results show themselves in notebooks: tables of limited length."""

from __future__ import annotations

import reprlib
from collections.abc import Mapping
from html import escape
from itertools import islice
from typing import Any

ROWS, COLUMNS, LINES, LETTERS = 20, 20, 60, 60

_shortened = reprlib.Repr()
_shortened.maxother = _shortened.maxlong = LETTERS


def cell(value: Any) -> str:
    """A value in a few letters, none for None; a collection by how much it holds."""
    if value is None:
        return ""
    value = value.item() if getattr(value, "ndim", None) == 0 else value
    if hasattr(value, "toArray") and hasattr(value, "__len__"):
        word = f"{len(value):,} {'item' if len(value) == 1 else 'items'}"
    elif isinstance(value, float):
        word = f"{value:g}"
    else:
        text = value if isinstance(value, str) else _shortened.repr(value)
        word = " ".join(text[: 8 * LETTERS].split())
    return escape(word if len(word) <= LETTERS else f"{word[: LETTERS - 3]}...")


def table(caption: str, rows: Mapping[Any, Mapping[str, Any]], total: int) -> str:
    """Rows by their heads, of a whole of so many; columns by name, in the order in which they
    appear."""
    names = list(dict.fromkeys(name for row in rows.values() for name in row))
    rest = [f"{total - len(rows):,} more"] if total > len(rows) else []
    rest += [f"{len(names) - COLUMNS:,} more columns"] if len(names) > COLUMNS else []
    names = names[:COLUMNS]
    head = "".join(f"<th>{cell(name)}</th>" for name in ["", *names])
    body = "".join(
        f"<tr><th>{cell(key)}</th>"
        + "".join(f"<td>{cell(row[name]) if name in row else ''}</td>" for name in names)
        + "</tr>"
        for key, row in rows.items()
    )
    foot = f"<p>... {' and '.join(rest)}</p>" if rest else ""
    caption = f"<caption>{escape(caption)}</caption>"
    return f"<table>{caption}<thead><tr>{head}</tr></thead><tbody>{body}</tbody></table>{foot}"


def pairs(caption: str, values: Mapping[str, Any]) -> str:
    """The first values by name, a row each."""
    rows = "".join(
        f"<tr><th>{cell(name)}</th><td>{cell(value)}</td></tr>"
        for name, value in islice(values.items(), LINES)
    )
    foot = f"<p>... {len(values) - LINES:,} more</p>" if len(values) > LINES else ""
    return f"<table><caption>{escape(caption)}</caption>{rows}</table>{foot}"


def listing(items: Any, name: str) -> str:
    """The first items by their places from 0, with their plain properties; runs with their
    values."""
    count = len(items)
    rows = {k: _row(items[k]) for k in range(min(count, ROWS))}
    return table(f"{name}: {count:,}", rows, count)


def _row(item: Any) -> Mapping[str, Any]:
    if hasattr(item, "ParameterSamples"):
        from kxsim import _describe

        return _describe.values_of(item)
    return dict(item._values()) if hasattr(item, "_values") else {"value": item}


def preformatted(text: str) -> str:
    """The first lines of a text as they stand."""
    lines = text.splitlines()
    rest = [f"... {len(lines) - LINES:,} more"] if len(lines) > LINES else []
    return f"<pre>{escape(chr(10).join([*lines[:LINES], *rest]))}</pre>"
