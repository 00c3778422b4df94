"""Small faults in C++ text, as a slip of the pen would make them: where one can be put, and what stands there then.

The sources are formatted by clang-format, so that an operator between two values has a space on each side and a
template's bracket has not. What does not compile is found by the compiler: nothing here understands types."""

import collections
import re

# The text between `start` and `end` becomes `text`.
Fault = collections.namedtuple("Fault", "kind start end text")

OPENING, CLOSING = "([{", ")]}"


def blanked(text):
    """The same text with spaces where no fault is put: comments, strings, the preprocessor's lines, template
    parameters, assertions. Lines and places stay what they are."""

    def spaces(match):
        return re.sub(r"[^\n]", " ", match.group())

    text = re.sub(r"//[^\n]*|/\*.*?\*/|\"(?:\\.|[^\"\\\n])*\"|(?<!\w)'(?:\\.|[^'\\\n])+'", spaces, text, flags=re.S)
    text = re.sub(r"^[ \t]*#(?:[^\n]*\\\n)*[^\n]*", spaces, text, flags=re.M)
    for opening, bracket in ((r"\btemplate <", "<>"), (r"\b(?:static_assert|assert)\(", "()")):
        for match in list(re.finditer(opening, text)):
            end = matching(text, match.end() - 1, bracket)
            text = text[: match.start()] + re.sub(r"[^\n]", " ", text[match.start() : end + 1]) + text[end + 1 :]
    return text


def matching(text, place, bracket=None):
    """Where the bracket that opens at `place` is closed."""
    opening, closing = bracket or (text[place], CLOSING[OPENING.index(text[place])])
    depth = 0
    for i in range(place, len(text)):
        depth += (text[i] == opening) - (text[i] == closing)
        if depth == 0:
            return i
    return len(text) - 1


def operand_end(code, place):
    """The end of an operand of && or || that begins at `place`."""
    while place < len(code):
        if code[place] in OPENING:
            place = matching(code, place)
        elif code[place] in ")]};,?:" and code[place : place + 2] != "::" and code[place - 1 : place + 1] != "::":
            break
        elif code.startswith((" && ", " || "), place):
            break
        place += 1
    return place


# What stands between two values, and what could have been written instead.
BETWEEN = {
    "a comparison turned": {"<": ">=", "<=": ">", ">": "<=", ">=": "<", "==": "!=", "!=": "=="},
    "the equal case of a comparison": {"<": "<=", "<=": "<", ">": ">=", ">=": ">"},
    "+ for -": {"+": "-", "-": "+", "+=": "-=", "-=": "+=", "*": "+", "/": "*", "%": "/", "<<": ">>", ">>": "<<"},
    "& for |": {"&": "|", "|": "&", "^": "|", "&=": "|=", "|=": "&="},
    "&& for ||": {"&&": "||", "||": "&&"},
}

# Functions that are easily taken for each other.
NAMES = {
    "min for max": [("min", "max")],
    "+ for -": [("add", "sub"), ("addSaturated", "subSaturated")],
    "& for |": [("bitAnd", "bitOr"), ("both", "either")],
    "the equal case of a comparison": [("greater", "greaterEqual"), ("greater", "lessEqual")],
    "a comparison turned": [("equal", "notEqual")],
}
INTRINSICS = {
    "min for max": [("min", "max")],
    "+ for -": [("add", "sub"), ("adds", "subs")],
    "& for |": [("and", "or"), ("and", "andnot")],
    "a neighbour's lanes": [("unpacklo", "unpackhi")],
}


def between(code):
    for kind, table in BETWEEN.items():
        for match in re.finditer(r"(?<= )(?:[<>=!]=|<<|>>|&&|\|\||[-+&|]=|[-+*/%<>&|^])(?=[ \n])", code):
            if match.group() in table:
                yield Fault(kind, match.start(), match.end(), table[match.group()])


def names(code):
    for table, pattern in ((NAMES, r"(?<![\w.>])(?:std::)?({})(?=\(|<[\w:]+>\()"), (INTRINSICS, r"_mm(?:256)?_({})_")):
        for kind, pairs in table.items():
            for one, other in pairs:
                for match in re.finditer(pattern.format(one + "|" + other), code):
                    yield Fault(kind, match.start(1), match.end(1), other if match.group(1) == one else one)


def constants(code):
    for match in re.finditer(r"(?<![\w.])(0x[0-9a-fA-F]+|\d+\.\d*|\d+)(?=(?:e-?\d+)?[a-zA-Z]*\b|[^\w.])", code):
        number = match.group()
        for change in (1, -1):
            if "." in number:
                text = repr(float(number) + change)
            else:
                value = int(number, 0 if number.startswith("0x") else 10) + change
                text = hex(value) if number.startswith("0x") and value >= 0 else str(value)
            yield Fault("a constant", match.start(), match.end(), text)


def indices(code):
    for match in re.finditer(r"(?<=[\w)\]])\[|(?<=[.>]row)\(|\bat\(", code):
        start = match.end()
        end = matching(code, start - 1)
        inside = code[start:end]
        if inside.strip() and "," not in inside:
            value = inside if re.fullmatch(r"[\w.]+", inside) else f"({inside})"
            for change in (" + 1", " - 1"):
                yield Fault("an index", start, end, value + change)
    for match in re.finditer(r"\+\+|--", code):
        yield Fault("+ for -", match.start(), match.end(), "--" if match.group() == "++" else "++")


def conditions(code):
    for match in re.finditer(r"\b(if|while) \(", code):
        end = matching(code, match.end() - 1)
        for value in ("true", "false") if match.group(1) == "if" else ("false",):
            yield Fault("a dropped condition", match.end(), end, value)
    for match in re.finditer(r"\brequire\(", code):
        end = operand_end(code, match.end())
        while code.startswith((" && ", " || "), end):
            end = operand_end(code, end + 4)
        if code[end : end + 1] == ",":
            yield Fault("a dropped condition", match.end(), end, "true")
    for match in re.finditer(r" (?:&&|\|\|)\s", code):
        yield Fault("a dropped condition", match.start(), operand_end(code, match.end()), "")


def checks(code):
    """Neighbouring checks of a chain, and neighbouring chains, change places."""
    statements = []
    for match in re.finditer(r"\bchecks(?=\.)", code):
        calls, place = [], match.end()
        while call := re.compile(r"\s*\.\w+(?:<[\w:]+>)?\(").match(code, place):
            place = matching(code, call.end() - 1) + 1
            calls.append((call.start(), place))
        for (a, b), (c, d) in zip(calls, calls[1:]):
            if not re.search(r"\.(failed|status)\(", code[a:d]):
                yield Fault("two checks swapped", a, d, code[c:d] + code[a:c])
        if code[place : place + 1] == ";":
            statements.append((match.start(), place + 1))
    for (a, b), (c, d) in zip(statements, statements[1:]):
        if code[b:c].isspace():
            yield Fault("two checks swapped", a, d, code[c:d] + code[b:c] + code[a:b])


NO_STATEMENT = (
    r"(?:return\b(?!;)|case\b|default|using|const\b|constexpr|auto\b|static|if\b|for\b|while\b|else|do\b|switch"
    r"|struct|class|template|namespace|public|private|friend|typedef|enum|goto|explicit|virtual)"
)
DECLARATION = r"[\w:<>,\s*&]+\s[*&]*\w+\s*(?:=|;|\(|\{|\[)"


def statements(code):
    for match in re.finditer(r"(?<=[;{}]\n)[ \t]*([^\n{}]*;)$", code, flags=re.M):
        text = match.group(1)
        if text.count("(") != text.count(")") or re.match(NO_STATEMENT, text) or re.match(DECLARATION, text):
            continue
        if re.match(r"(?:break|continue|return);", text) or re.search(r"\(|\+\+|--|=", text):
            yield Fault("a dropped statement", match.start(1), match.end(1), "")


def faults_by_line(text):
    """{line from 1 on: {kind: [Fault]}} of everything that could be put into `text`."""
    code = blanked(text)
    lines = {}
    for operator in (between, names, constants, indices, conditions, checks, statements):
        for fault in operator(code):
            if "\n" in text[fault.start : fault.end] and fault.kind != "two checks swapped":
                continue
            # The blanked text stands in for the text where a fault repeats a part of it.
            if fault.text != text[fault.start : fault.end]:
                line = text.count("\n", 0, fault.start) + 1
                lines.setdefault(line, {}).setdefault(fault.kind, []).append(fault)
    return lines


def applied(text, fault):
    return text[: fault.start] + fault.text + text[fault.end :]
