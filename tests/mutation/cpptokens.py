# SPDX-License-Identifier: Apache-2.0
"""The tokens of a C++ source, as far as one must know them to change one place of it."""

import dataclasses
import re

PATTERN = re.compile(r"""
    (?P<comment>//[^\n]*|/\*.*?\*/)
  | (?P<directive>^[ \t]*\#(?:\\\n|[^\n])*)
  | (?P<raw>(?:u8|[uUL])?R"(?P<fence>[^()\s\\]{0,16})\(.*?\)(?P=fence)")
  | (?P<text>(?:u8|[uUL])?"(?:\\.|[^"\\\n])*")
  | (?P<character>(?:u8|[uUL])?'(?:\\.|[^'\\\n])+')
  | (?P<number>\.?\d(?:[eEpP][+-]|'?[\w.])*)
  | (?P<name>[A-Za-z_]\w*)
  | (?P<operator><=>|<<=|>>=|\.\.\.|->\*|::|->|\+\+|--|&&|\|\||[-+*/%&|^<>=!]=|<<|>>|[^\s\w])
""", re.VERBOSE | re.DOTALL | re.MULTILINE)

CLOSING = {"(": ")", "[": "]", "{": "}"}


@dataclasses.dataclass(frozen=True)
class Token:
    kind: str
    text: str
    start: int
    spaced: bool  # white space on both sides: the binary form of an operator that has others too

    @property
    def end(self):
        return self.start + len(self.text)


def tokens_of(source):
    """All tokens that the compiler works on: no comments, no directives."""
    tokens = []
    for match in PATTERN.finditer(source):
        if match.lastgroup in ("comment", "directive"):
            continue
        around = source[match.start() - 1:match.start()] + source[match.end():match.end() + 1]
        kind = next(k for k in match.re.groupindex if k != "fence" and match[k] is not None)
        if kind not in ("comment", "directive"):
            tokens.append(Token(kind, match[0], match.start(), len(around) == 2 and around.isspace()))
    return tokens


def closing_of(tokens, opening):
    """The index of the bracket that closes the one at this index; the last token's without one."""
    depth = 0
    for index in range(opening, len(tokens)):
        if tokens[index].text in CLOSING:
            depth += 1
        elif tokens[index].text in CLOSING.values():
            depth -= 1
            if depth == 0:
                return index
    return len(tokens) - 1
