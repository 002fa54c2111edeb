# SPDX-License-Identifier: Apache-2.0
"""The classes that `velhost classes --format mof` prints, with what their qualifiers say."""

import dataclasses
import re

TOKEN = re.compile(r'"(?:\\.|[^"\\])*"|[A-Za-z_][A-Za-z_0-9]*|[0-9]+|[^\s]')
ESCAPE = re.compile(r"\\(?:[xX]([0-9A-Fa-f]{1,4})|(.))", re.S)
CONTROL = {"b": "\b", "t": "\t", "n": "\n", "f": "\f", "r": "\r"}


@dataclasses.dataclass(frozen=True)
class Property:
    name: str
    type: str
    mapping_strings: tuple
    max_len: int  # 0: no bound
    words: dict   # value to its name


@dataclasses.dataclass(frozen=True)
class Class:
    name: str
    provider: str
    abstract: bool
    properties: dict  # by name


def text_of_literal(literal):
    def character(match):
        return chr(int(match[1], 16)) if match[1] else CONTROL.get(match[2], match[2])
    return ESCAPE.sub(character, literal[1:-1])


class Reader:
    """Takes tokens from the front of a text."""

    def __init__(self, text):
        self.tokens, self.at = TOKEN.findall(text), 0

    def done(self):
        return self.at == len(self.tokens)

    def peek(self):
        return self.tokens[self.at]

    def take(self, expected=None):
        token = self.tokens[self.at]
        if expected is not None and token != expected:
            raise ValueError(f"{token!r} where {expected!r} was expected")
        self.at += 1
        return token

    def take_if(self, token):
        if self.done() or self.peek() != token:
            return False
        self.at += 1
        return True

    def skip_past(self, token):
        while self.take() != token:
            pass

    def literal(self):
        token = self.take()
        if not token.startswith('"'):
            return token
        text = text_of_literal(token)
        while self.peek().startswith('"'):
            text += text_of_literal(self.take())
        return text

    def listed(self, end):
        values = [self.literal()]
        while not self.take_if(end):
            self.take(",")
            values.append(self.literal())
        return values

    def qualifier(self):
        name = self.take()
        if self.take_if("{"):
            return name, self.listed("}")
        return name, self.listed(")")[0] if self.take_if("(") else True

    def qualifiers(self):
        found = {}
        if self.take_if("["):
            found.update([self.qualifier()])
            while not self.take_if("]"):
                self.take(",")
                found.update([self.qualifier()])
        return found


def read_property(reader, inherited):
    qualifiers = reader.qualifiers()
    value_type, name = reader.take(), reader.take()
    reader.take(";")
    before = inherited.get(name, Property(name, value_type, (), 0, {}))
    words = dict(zip(qualifiers.get("ValueMap", ()), qualifiers.get("Values", ())))
    return Property(name, value_type,
                    tuple(qualifiers.get("MappingStrings", before.mapping_strings)),
                    int(qualifiers.get("MaxLen", before.max_len)), words or before.words)


def read_class(reader, classes):
    qualifiers = reader.qualifiers()
    reader.take("class")
    name = reader.take()
    properties = dict(classes[reader.take()].properties) if reader.take_if(":") else {}
    reader.take("{")
    while not reader.take_if("}"):
        declared = read_property(reader, properties)
        properties[declared.name] = declared
    reader.take(";")
    return Class(name, qualifiers.get("Provider", ""), bool(qualifiers.get("Abstract")), properties)


def read_classes(text):
    """Classes by name."""
    reader, classes = Reader(text), {}
    while not reader.done():
        if reader.take_if("Qualifier"):
            reader.skip_past(";")
        else:
            found = read_class(reader, classes)
            classes[found.name] = found
    return classes
