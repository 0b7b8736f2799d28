"""Breaks lines that are too wide, as clang-format with the project's style would.

Templates write each statement on one line, however long; only these forms occur:
comments, class heads, functions with one statement, and calls or declarations with arguments.
"""

import re
import textwrap

WIDTH = 100
COMMENT = re.compile(r"( *)(///?) (.*)")
CLASS_HEAD = re.compile(r"( *)((?:class|struct) .*?) (: public .*|: [\w:<>, ]+ \{)$")
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
    if match := ONE_LINER.match(line):
        indent, head, body = match.groups()
        return [*fit_line(f"{indent}{head} {{"), *fit_line(f"{indent}  {body}"), f"{indent}}}"]
    return fit_arguments(line)


def fit_arguments(line: str) -> list[str]:
    """Fills the arguments of the first call or declaration, aligned behind its parenthesis."""
    opening = line.find("(")
    if opening < 0:
        return [line]
    arguments, rest = split_arguments(line, opening + 1)
    lines, current = [], line[: opening + 1]
    indent = " " * len(current)
    for number, argument in enumerate(arguments):
        is_last = number == len(arguments) - 1
        piece = argument + (rest if is_last else ",")
        joint = "" if current.endswith("(") or not current.strip() else " "
        if current.strip() and not current.endswith("(") and len(current + joint + piece) > WIDTH:
            lines.append(current)
            current, joint = indent, ""
        current += joint + piece
    return [*lines, current]


def split_arguments(line: str, start: int) -> tuple[list[str], str]:
    """The arguments from `start` to the closing parenthesis, and what follows them with it."""
    arguments, depth, begin, quoted, at = [], 0, start, False, start
    while at < len(line):
        char = line[at]
        if quoted:
            at += char == "\\"
            quoted = char != '"'
        elif char == '"':
            quoted = True
        elif char in "({[<":
            depth += 1
        elif char in ")}]>" and depth > 0:
            depth -= 1
        elif char == ")":
            return [*arguments, line[begin:at].strip()], line[at:]
        elif char == "," and depth == 0:
            arguments.append(line[begin:at].strip())
            begin = at + 1
        at += 1
    return [*arguments, line[begin:].strip()], ""
