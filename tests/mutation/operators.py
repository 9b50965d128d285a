# SPDX-License-Identifier: MIT
"""One-line changes of C++ sources that a test should notice."""

import functools
import re
from dataclasses import dataclass

# Logging: what is written is covered by tests of its own, line by line.
_LOG = re.compile(r"\b(q(Debug|Info|Warning|Critical|Fatal|C(Debug|Info|Warning|Critical))|fprintf|qPrintable)\b")
# No test can see these, or no program can be in a state in which they matter.
_UNSEEN = re.compile(r"Q_UNUSED|Q_UNREACHABLE|Q_ASSERT|qt_assert|static_assert|Q_DECLARE|Q_DISABLE|Q_OBJECT|\bassert\(")
# Comments, raw strings (both may lack their end), strings, and characters.
_HIDDEN = re.compile(r'''//[^\n]*|/\*.*?(?:\*/|\Z)|R"(\w*)\(.*?(?:\)\1"|\Z)'''
                     r'''|(?<!\w)"(?:[^"\\\n]|\\[^\n])*"|'(?:[^'\\\n]|\\[^\n])+[']''', re.DOTALL)
_CALL = re.compile(r"(?:[A-Za-z_]\w*(?:::|\.|->|\(\)->|\(\)\.))*(~?[A-Za-z_]\w*)\(")
_NO_CALL = {"if", "while", "for", "switch", "return", "sizeof", "catch", "defined", "emit", "static_cast", "co_return"}
_CONNECTIONS = {"connect", "disconnect", "callOnTimeout", "g_signal_connect", "g_signal_handler_disconnect"}


@dataclass(frozen=True)
class Mutant:
    line: int  # from 1
    operator: str
    before: str
    after: str


def _blanked(found):
    text = found[0]
    if text[0] in "\"'":
        return text[0] + "_" * (len(text) - 2) + text[0]
    return re.sub(r"[^\n]", " ", text)


def masked(text):
    """The text's lines with comments and the insides of strings blanked, in their places."""
    return _HIDDEN.sub(_blanked, text).split("\n")


def _closing(code, start):
    """Place of the bracket that closes the one at start, on this line; -1 without."""
    depth = 0
    for i in range(start, len(code)):
        depth += (code[i] in "([{") - (code[i] in ")]}")
        if depth == 0:
            return i
    return -1


def _negated_conditions(code):
    for found in re.finditer(r"\b(if|while) (?:constexpr )?\(", code):
        start = found.end() - 1
        end = _closing(code, start)
        inner = code[start + 1:end]
        if end > 0 and "constexpr" not in found[0] and ";" not in inner and not re.search(r"(?<![=!<>])=(?!=)", inner):
            yield "negated condition", start, end + 1, lambda text: f"(!{text})"
    returned = re.match(r"\s*return (.+);\s*$", code)
    if returned and re.search(r"[=!]=|&&|\|\||^!", returned[1]) and "?" not in returned[1] and "[" not in returned[1]:
        yield "negated result", returned.start(1), returned.end(1), lambda text: f"!({text})"


def _swaps(code):
    for operator, pattern, swap in (
            ("swapped true and false", r"\b(true|false)\b", {"true": "false", "false": "true"}),
            ("negated comparison", r" (==|!=) ", {"==": "!=", "!=": "=="}),
            ("off by one", r" (<=|>=) ", {"<=": "<", ">=": ">"}),
            ("off by one", r"(?<=[\w)]) (<|>) (?=[\w(])", {"<": "<=", ">": ">="}),
            ("swapped and and or", r" (&&|\|\|) ", {"&&": "||", "||": "&&"}),
            ("minus to plus", r"(?<=[\w)\]]) (-) (?=[\w(])", {"-": "+"}),
            ("turned step", r"(\+\+|--)(?=\w|\)|;)", {"++": "--", "--": "++"}),
            ("added to instead of taken from", r" (-=) ", {"-=": "+="})):
        # Both kinds in one expression would be warned about, which ends the build.
        if "&&" in pattern and len(re.findall(r"&&|\|\|", code)) != 1:
            continue
        for found in re.finditer(pattern, code):
            if "template" not in code:
                yield operator, found.start(1), found.end(1), lambda text, swap=swap: swap[text]


def _constants(code):
    for found in re.finditer(r"(?<![\w.\"'])(\d[\d']*)(?![\w.'\"])", code):
        if not re.match(r"\s*(case|enum)\b", code):
            yield "changed constant", found.start(1), found.end(1), \
                lambda text: {"0": "1", "1": "0"}.get(text, f"({text} + 1)")
    for found in re.finditer(r"\b(?:QStringLiteral|QLatin1String|QByteArrayLiteral)\((\"_+\")\)", code):
        yield "changed text", found.start(1), found.end(1), lambda text: f'{text[:-1]}~"'


def _begins_statement(lines, number):
    """Whether the line is the beginning of a statement rather than the rest of one."""
    for before in reversed(lines[:number]):
        before = before.rstrip()
        if before:
            return before[-1] in ";{}" or bool(re.match(r"\s*(if|for|while) \(.*\)$|\s*else$|\s*(case .*|default):$", before))
    return False


def _removals(lines, number):
    code = lines[number]
    indent = len(code) - len(code.lstrip())
    if not indent or not _begins_statement(lines, number):
        return

    def unreached(text):
        # Rather than cut out: everything in it still counts as used, and no "else" changes its "if".
        return f"{text[:indent]}while (false) {text[indent:]}"

    statement = code.strip()
    call = _CALL.match(statement)
    if call and call[1] not in _NO_CALL and not call[1].startswith("Q_") and _whole_call(lines, number):
        operator = "removed connection" if call[1] in _CONNECTIONS else "removed call"
        yield operator, 0, len(code), unreached
    elif re.match(r"Q_EMIT \w", statement):
        yield "removed signal", 0, len(code), unreached
    elif re.match(r"[\w.]+(->\w+)*(\[.*\])? [-+|&]?= [^;]+;$", statement):
        yield "removed assignment", 0, len(code), unreached
    elif re.match(r"delete [^;]+;$", statement):
        pass  # what it leaves is a leak, which the sanitizer finds or not
    elif re.match(r"(return|break|continue);$", statement) and statement != "break;":
        yield "removed return", 0, len(code), unreached


def _whole_call(lines, number):
    """Whether the statement that begins here is a call, and no declaration nor the head of a function."""
    text = ""
    for line in lines[number:number + 12]:
        text += line.strip() + " "
        if line.rstrip().endswith((";", "{")):
            break
    text = text.strip()
    return text.endswith((");", "{")) and ("{" not in text or "[" in text) and not re.match(r"\w+::\w+\([^;]*\)\s*(const)?\s*[:{]", text)


def _in_log_statement(lines, number):
    """Whether the line belongs to a statement that writes a log line."""
    first = number
    while first > 0 and not _begins_statement(lines, first) and number - first < 8:
        first -= 1
    return any(_LOG.search(line) for line in lines[first:number + 1])


@functools.cache
def mutants(text):
    """All changes of a source file's text, in the order of its lines."""
    lines = text.split("\n")
    code = masked(text)
    found = []
    for number, line in enumerate(code):
        stripped = line.strip()
        if (not stripped or stripped.startswith(("#", "using ", "namespace ", "template", "struct ", "class ", "enum "))
                or _UNSEEN.search(line) or _in_log_statement(code, number)):
            continue
        places = [*_negated_conditions(line), *_swaps(line), *_constants(line), *_removals(code, number)]
        for operator, start, end, change in places:
            before = lines[number]
            after = before[:start] + change(before[start:end]) + before[end:]
            if after != before:
                found.append(Mutant(number + 1, operator, before, after))
    return tuple(found)


def place_of(lines, line, before):
    """Index of the line `before`, which once was number `line`: the nearest of its text; None when it is gone."""
    places = [i for i, text in enumerate(lines) if text == before]
    return min(places, key=lambda i: abs(i - (line - 1)), default=None)
