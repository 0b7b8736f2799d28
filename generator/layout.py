"""Breaks lines that are too wide, as clang-format with the project's style would.

Templates write each statement on one line, however long; only these forms occur:
comments, class heads, aliases, functions with one statement, and calls or declarations with
arguments.
"""

import re
import textwrap

WIDTH = 100
COMMENT = re.compile(r"( *)(///?) (.*)")
CLASS_HEAD = re.compile(r"( *)((?:class|struct) .*?) (: public .*|: [\w:<>, ]+ \{)$")
ALIAS = re.compile(r"( *)(using \w+ =) (.*;)$")
ONE_LINER = re.compile(r"( *)(.*\)(?: const)?(?: override)?) \{ (.*) \}$")


def fit(text: str) -> str:
    squeezed = re.sub(r"\n{3,}", "\n\n", text)
    squeezed = re.sub(r"\n+(\n *\};)", r"\1", squeezed.strip("\n"))
    return "".join(f"{fitted}\n" for line in squeezed.splitlines() for fitted in fit_line(line))


def fit_line(line: str) -> list[str]:
    if len(line) <= WIDTH:
        return [line]
    if match := COMMENT.match(line):
        lead = f"{match[1]}{match[2]} "
        return textwrap.wrap(match[3], WIDTH, initial_indent=lead, subsequent_indent=lead)
    if match := CLASS_HEAD.match(line):
        return [f"{match[1]}{match[2]}", f"{match[1]}    {match[3]}"]
    if match := ALIAS.match(line):
        return [f"{match[1]}{match[2]}", f"{match[1]}    {match[3]}"]
    if match := ONE_LINER.match(line):
        indent, head, body = match.groups()
        return [*fit_line(f"{indent}{head} {{"), *fit_line(f"{indent}  {body}"), f"{indent}}}"]
    call = line.find("{" if line.endswith("};") else "(")
    if call < 0:
        return enumerate_names(line)
    ways = [align(line, call), hang(line, call)]
    if line[call] == "(" and 0 <= (assigned := line.find(" = ")) < call:
        indent = " " * (len(line) - len(line.lstrip()) + 4)
        rest = align(indent + line[assigned + 3 :], call - assigned - 3 + len(indent))
        ways.insert(0, [line[: assigned + 2], *rest])
    best = min(ways, key=lambda way: (max(map(len, way)) > WIDTH, len(way)))
    return [inner for line in best for inner in fit_braces(line)]


def fit_braces(line: str) -> list[str]:
    """Fills once more where a braced argument alone is too wide."""
    is_list = len(line) > WIDTH and line.lstrip().startswith("{")
    return align(line, line.index("{")) if is_list else [line]


def enumerate_names(line: str) -> list[str]:
    """Fills lines with the names that one declaration declares."""
    indent = " " * (len(line) - len(line.lstrip()) + 4)
    *pieces, last = line.split(", ")
    return fill("", [*(f"{piece}," for piece in pieces), last], indent)


def align(line: str, opening: int) -> list[str]:
    """Fills lines with what the bracket at `opening` holds, all of them aligned behind it."""
    head, pieces = split(line, opening)
    return fill(head, pieces, " " * len(head))


def hang(line: str, opening: int) -> list[str]:
    """The same on lines of their own, four columns in."""
    head, pieces = split(line, opening)
    margin = " " * (len(head) - len(head.lstrip()) + 4)
    return [head, *fill(margin, pieces, margin)]


def fill(first: str, pieces: list[str], indent: str) -> list[str]:
    """The pieces with spaces between, as many on a line as fit."""
    lines, current, joint = [], first, ""
    for piece in pieces:
        if joint and len(current + joint + piece) > WIDTH:
            lines.append(current)
            current, joint = indent, ""
        current += joint + piece
        joint = " "
    return [*lines, current]


def split(line: str, opening: int) -> tuple[str, list[str]]:
    """The line up to the bracket at `opening`, and the pieces after it: what the commas of that
    bracket separate, the last one with the rest of the line."""
    pieces, depth, begin, is_quoted = [], 0, opening + 1, False
    for at in range(begin, len(line)):
        char = line[at]
        if char == '"' and line[at - 1] != "\\":
            is_quoted = not is_quoted
        elif is_quoted:
            continue
        elif char in "({[<":
            depth += 1
        elif char in ")}]>":
            depth -= 1
        elif char == "," and depth == 0:
            pieces.append(line[begin : at + 1].strip())
            begin = at + 1
    return line[: opening + 1], [*pieces, line[begin:].strip()]
