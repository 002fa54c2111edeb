# SPDX-License-Identifier: Apache-2.0
"""Changes of one place each to a C++ source: what a slip of the hand, or a colleague who thought
otherwise, would make of it. Comments, directives, static_asserts, attributes and declarations that
hold nothing to change are left alone."""

import dataclasses
import re

from cpptokens import closing_of, tokens_of

OPERATORS = {
    "==": ["!="], "!=": ["=="], "<": ["<=", ">="], "<=": ["<", ">"], ">": [">=", "<="],
    ">=": [">", "<"], "&&": ["||"], "||": ["&&"], "+": ["-"], "-": ["+"], "*": ["/"], "/": ["*"],
    "%": ["/"], "&": ["|"], "|": ["&"], "^": ["|"], "<<": [">>"], ">>": ["<<"],
}  # those with other meanings count with blanks around them, as clang-format sets them
COMPOUND = {"+=": "-=", "-=": "+=", "*=": "+=", "/=": "*=", "|=": "&=", "&=": "|=", "^=": "|=",
            "<<=": ">>=", ">>=": "<<=", "++": "--", "--": "++"}
SEVERITIES = ("kSeverityFailure", "kSeverityPrevented", "kSeverityProgress")
NAMES = {"true": ["false"], "false": ["true"], "min": ["max"], "max": ["min"],
         **{name: [other for other in SEVERITIES if other != name] for name in SEVERITIES}}
HEADS = ("if", "for", "while", "switch", "catch")
NOT_DROPPED = ("return", "using", "const", "constexpr", "static", "auto", "goto", "struct", "class",
               "enum", "union", "typedef", "namespace", "template", "friend", "static_assert",
               "public", "private", "protected", "case", "default", "else", "do", "try", "virtual",
               "explicit", "extern", "inline", "unsigned", "int", "bool", "char", "long", "short",
               "double", "float", "void", *HEADS)


@dataclasses.dataclass(frozen=True)
class Mutant:
    """The place of a source from start to end becomes the new text."""
    file: str
    kind: str
    start: int
    end: int
    new: str

    def applied(self, source):
        return source[:self.start] + self.new + source[self.end:]

    def lines(self, source):
        """The whole lines that are touched, before and after, in one line each."""
        first = source.rfind("\n", 0, self.start) + 1
        last = source.find("\n", self.end)
        last = len(source) if last < 0 else last
        after = source[first:self.start] + self.new + source[self.end:last]
        return one_line(source[first:last]), one_line(after)

    def line_number(self, source):
        return source.count("\n", 0, self.start) + 1


def one_line(text):
    return " ".join(text.split())


# ---- what is left alone

def statement_end(tokens, index):
    """The semicolon behind which the declaration that starts here is over."""
    while index < len(tokens) and tokens[index].text != ";":
        index = (closing_of(tokens, index) if tokens[index].text in ("(", "[", "{") else index) + 1
    return index


def template_head_end(tokens, index):
    depth = 0
    while index < len(tokens):
        depth += {"<": 1, ">": -1, ">>": -2}.get(tokens[index].text, 0)
        index += 1
        if depth <= 0:
            break
    return index


def left_alone(tokens):
    """The indices of the tokens in which nothing is changed."""
    alone = set()
    for index, token in enumerate(tokens):
        following = tokens[index + 1].text if index + 1 < len(tokens) else ""
        if token.text in ("static_assert", "noexcept", "alignas") and following == "(":
            alone.update(range(index, closing_of(tokens, index + 1) + 1))
        elif token.text == "[" and following == "[":
            alone.update(range(index, closing_of(tokens, index) + 1))
        elif token.text == "template":
            alone.update(range(index, template_head_end(tokens, index + 1)))
        elif token.text in ("using", "typedef"):
            alone.update(range(index, statement_end(tokens, index)))
        elif token.text in ("operator", "extern"):
            alone.update((index, index + 1))
        elif token.text == "0" and following == ";" and tokens[index - 1].text == "=" and (
                tokens[index - 2].text in (")", "const", "noexcept", "override")):
            alone.add(index)  # a pure virtual operation
    return alone


# ---- literals

def number_neighbours(text):
    """One more and one less, in the same notation."""
    match = re.fullmatch(r"(0[xX]|0[bB]|0(?=\d))?([0-9a-fA-F']+?)([uUlLzZ]*)", text)
    if match is None:
        return []
    prefix, digits, suffix = match[1] or "", match[2].replace("'", ""), match[3]
    base = {"0x": 16, "0b": 2, "0": 8, "": 10}[prefix.lower()]
    spelled = {16: "X", 2: "b", 8: "o", 10: "d"}[base]
    values = [v for v in (int(digits, base) + 1, int(digits, base) - 1) if v >= 0]
    width = 0 if base == 10 else len(digits)  # zeros in front would make it octal
    return [f"{prefix}{value:0{width}{spelled}}{suffix}" for value in values]


def changed_letter(letter):
    return {"z": "y", "Z": "Y", "9": "8", " ": "_"}.get(letter) or (
        chr(ord(letter) + 1) if letter.isalnum() else "x")


def changeable(inside):
    """Where a text can have another letter and stays a text: not in an escape or a conversion."""
    special = set()
    for match in re.finditer(r"\\(?:x[0-9a-fA-F]+|[0-7]{1,3}|u\w{4}|.)|%[-+ #0-9.*]*[a-z%]+", inside,
                             re.DOTALL):
        special.update(range(*match.span()))
    return [at for at, letter in enumerate(inside)
            if at not in special and letter.isascii() and letter.isprintable()]


def text_changes(text):
    """Another first, middle and last letter, and nothing at all; of no text a text."""
    start, end = text.index('"') + 1, len(text) - 1
    if text[:start - 1].endswith("R"):
        start, end = text.index("(") + 1, text.rindex(")")
    inside = text[start:end]
    if not inside:
        return [text[:start] + "x" + text[end:]]
    places = changeable(inside)
    chosen = sorted({places[0], places[len(places) // 2], places[-1]}) if places else []
    letters = [inside[:at] + changed_letter(inside[at]) + inside[at + 1:] for at in chosen]
    return [text[:start] + other + text[end:] for other in [*letters, ""]]


def other_character(text):
    inside = text[text.index("'") + 1:-1]
    if len(inside) == 1 and inside.isascii():
        return text[:text.index("'") + 1] + changed_letter(inside) + "'"
    return text[:text.index("'") + 1] + ("x" if inside != "x" else "y") + "'"


def literal_changes(token):
    """Kind and new text of each change to one token that is a literal."""
    if token.kind == "number":
        return [("constant", new) for new in number_neighbours(token.text)]
    if token.kind in ("text", "raw"):
        return [("text", new) for new in text_changes(token.text)]
    if token.kind == "character":
        return [("constant", other_character(token.text))]
    return []


# ---- operators, names

def word_changes(token):
    """Kind and new text of each change to one token that is an operator or a name."""
    if token.text in COMPOUND:
        return [("operator", COMPOUND[token.text])]
    if token.spaced and token.text in OPERATORS:
        return [("operator", new) for new in OPERATORS[token.text]]
    if token.text == "!":
        return [("condition", "")]
    if token.text in SEVERITIES:
        return [("severity", new) for new in NAMES[token.text]]
    if token.kind == "name" and token.text in NAMES:
        return [("constant", new) for new in NAMES[token.text]]
    return []


# ---- conditions

def last_part(tokens, first, end):
    """Where the condition of a head begins: behind the semicolon of what stands before it."""
    index = begin = first
    while index < end:
        if tokens[index].text == ";":
            begin = index + 1
        index = (closing_of(tokens, index) if tokens[index].text in ("(", "[", "{") else index) + 1
    return begin


def negated_by_an_operator(tokens, first, last):
    """Whether another operator in place of one of the condition's makes the opposite of it."""
    texts, index = [], first
    while index <= last:
        texts.append(tokens[index].text)
        index = (closing_of(tokens, index) if tokens[index].text in ("(", "[", "{") else index) + 1
    return not set(texts) & {"&&", "||"} and bool(set(texts) & {"!", "==", "!=", "<", ">", "<=", ">="})


def negations(tokens):
    """Spans (first and last index) of the conditions of if and while that need more than an operator."""
    for index, token in enumerate(tokens):
        opening = index + 1
        if token.text not in ("if", "while"):
            continue
        if tokens[opening].text == "constexpr":
            opening += 1
        closing = closing_of(tokens, opening)
        begin = last_part(tokens, opening + 1, closing)
        if not declares(tokens, begin) and not negated_by_an_operator(tokens, begin, closing - 1):
            yield begin, closing - 1


def choice_spans(tokens):
    """For each `? a : b` the indices of the question mark, the colon, and the last token of b."""
    for mark, token in enumerate(tokens):
        if token.text != "?":
            continue
        index, nested, colon = mark + 1, 0, None
        while index < len(tokens):
            text = tokens[index].text
            if text in ("(", "[", "{"):
                index = closing_of(tokens, index)
            elif text in (")", "]", "}", ";", ","):
                break
            elif text == "?":
                nested += 1
            elif text == ":":
                if nested == 0 and colon is None:
                    colon = index
                nested -= 1
            index += 1
        if colon is not None and index - 1 > colon:
            yield mark, colon, index - 1


# ---- statements

def opens_block(tokens, index):
    """Whether the brace at this index opens statements, and not a type, a name space or values."""
    before = tokens[index - 1].text if index else ""
    if before in (";", "{", "}", "else", "do", "try", "mutable", "noexcept", "override", "const"):
        return before != "{" or not values_around(tokens, index)
    if before == ":":
        return True
    head, back = [], index - 1
    while back >= 0 and tokens[back].text not in (";", "{", "}"):
        head.append(tokens[back].text)
        back -= 1
    if before == ")":
        return not set(head) & {"namespace", "enum"}
    return "->" in head and ")" in head and not set(head) & {"=", "return"} or before == "]"


def values_around(tokens, index):
    """Whether the brace before this one opens values: `{{1, 2}, {3, 4}}`."""
    return not opens_block(tokens, index - 1)


def statement_starts(tokens):
    """The indices at which a statement inside a block begins."""
    opened, heads = [], set()
    for index, token in enumerate(tokens):
        following = index + 1
        if token.text in HEADS:
            opening = index + (2 if tokens[index + 1].text == "constexpr" else 1)
            heads.add(closing_of(tokens, opening))
        if token.text in ("(", "[", "{"):
            opened.append("block" if token.text == "{" and opens_block(tokens, index) else token.text)
        elif token.text in (")", "]", "}") and opened:
            opened.pop()
        in_block = bool(opened) and opened[-1] == "block"
        starts = token.text in ("{", "}", ";", "else", "do") or index in heads
        if token.text == ":" and in_block:
            back = index
            while back > 0 and tokens[back].text not in (";", "{", "}", "case", "default"):
                back -= 1
            starts = tokens[back].text in ("case", "default")
        if in_block and starts and following < len(tokens):
            yield following


def declares(tokens, index):
    """Whether a declaration begins here: a type, then a name."""
    while tokens[index].kind == "name" or tokens[index].text == "::":
        name, index = tokens[index], index + 1
        if name.kind == "name" and tokens[index].text == "<" and not tokens[index].spaced:
            index = template_head_end(tokens, index)
        if name.kind == "name" and tokens[index].text != "::":
            break
    while tokens[index].text in ("&", "*", "&&") and not tokens[index].spaced:
        index += 1
    return tokens[index].kind == "name" and index > 0


def droppable(tokens):
    """Spans (first and last index) of statements that a block can be without."""
    for start in statement_starts(tokens):
        token = tokens[start]
        if token.text in NOT_DROPPED or token.kind not in ("name", "operator"):
            continue
        if token.kind == "operator" and token.text not in ("*", "++", "--", "(", "::"):
            continue
        if token.kind == "name" and token.text not in ("throw", "delete", "co_return") and (
                declares(tokens, start)):
            continue
        end = statement_end(tokens, start)
        enclosing = start
        while enclosing < end and tokens[enclosing].text not in ("}", ")", "]"):
            enclosing = (closing_of(tokens, enclosing) if tokens[enclosing].text in ("(", "[", "{")
                         else enclosing) + 1
        if end < len(tokens) and enclosing == end:
            yield start, end


# ---- all of them

def token_mutants(file, tokens, alone):
    for index, token in enumerate(tokens):
        if index not in alone:
            for kind, new in [*literal_changes(token), *word_changes(token)]:
                yield Mutant(file, kind, token.start, token.end, new)


def span_mutants(file, source, tokens, alone):
    for first, last in negations(tokens):
        start, end = tokens[first].start, tokens[last].end
        if first not in alone:
            yield Mutant(file, "condition", start, end, f"!({source[start:end]})")
    for mark, colon, last in choice_spans(tokens):
        start, end = tokens[mark + 1].start, tokens[last].end
        one, other = (source[start:tokens[colon - 1].end],
                      source[tokens[colon + 1].start:end])
        if mark not in alone:
            yield Mutant(file, "condition", start, end, f"{other} : {one}")
    for first, last in droppable(tokens):
        if first not in alone:
            yield Mutant(file, "statement", tokens[first].start, tokens[last].end, "{}")


def mutants_of(file, source):
    """All changes to a source, in the order of their places."""
    tokens = tokens_of(source)
    alone = left_alone(tokens)
    found = [*token_mutants(file, tokens, alone), *span_mutants(file, source, tokens, alone)]
    return sorted(found, key=lambda mutant: (mutant.start, mutant.end, mutant.new))
