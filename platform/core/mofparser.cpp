// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <iterator>
#include <span>

#include "mofdocument.h"

namespace NKRXVEL20::mof {
namespace {

// Words that begin what the reader does not take of MOF: beside classes and qualifiers, where a
// class body has a property, and behind a property's name.
struct Refused {
  std::string_view word;
  const char* what;
};

constexpr Refused kRefusedDeclarations[] = {
    {"instance", "instances are not taken"},       {"association", "associations are not taken"},
    {"indication", "indications are not taken"},   {"structure", "structures are not taken"},
    {"enumeration", "enumerations are not taken"},
};

constexpr Refused kRefusedBehindName[] = {
    {"(", "methods are not taken"},
    {"[", "properties that are arrays are not taken"},
    {"=", "default values are not taken"},
};

void refuse(std::span<const Refused> table, const Token& token) {
  const auto found = std::ranges::find_if(
      table, [&](const Refused& row) { return isSameIgnoringCase(row.word, token.text); });
  if (found != table.end()) throw Fault(token.at, found->what);
}

class Parser {
 public:
  Parser(Scanner scanner, Document& document) : scanner_(scanner), document_(document) {
    advance();
  }

  void run() {
    while (token_.kind != TokenKind::kEnd) declaration();
  }

 private:
  void advance() { token_ = scanner_.next(); }

  bool isSymbol(char symbol) const {
    return token_.kind == TokenKind::kSymbol && token_.text.front() == symbol;
  }
  bool isWord(std::string_view word) const {
    return token_.kind == TokenKind::kName && isSameIgnoringCase(token_.text, word);
  }

  [[noreturn]] void failExpected(const std::string& what) const {
    throw Fault(token_.at, what + " is expected, not " + described(token_));
  }

  bool take(char symbol);
  void expect(char symbol);
  void expectWord(const char* word);
  Name name(const char* what);

  void declaration();
  void qualifierDeclaration();
  std::uint32_t wordBits(std::span<const std::string_view> words, const char* what);

  Range qualifierList();
  QualifierUse qualifierUse();
  Values values();
  Values arrayValues();
  void value();

  void classDeclaration(Range qualifiers);
  void property();

  Scanner scanner_;
  Document& document_;
  Token token_;
};

bool Parser::take(char symbol) {
  if (!isSymbol(symbol)) return false;
  advance();
  return true;
}

void Parser::expect(char symbol) {
  if (!take(symbol)) failExpected(std::string("'") + symbol + "'");
}

void Parser::expectWord(const char* word) {
  if (!isWord(word)) failExpected(std::string("\"") + word + '"');
  advance();
}

Name Parser::name(const char* what) {
  if (token_.kind != TokenKind::kName) failExpected(what);
  const Name found{token_.text, token_.at};
  advance();
  return found;
}

void Parser::declaration() {
  refuse(kRefusedDeclarations, token_);
  if (isWord("Qualifier")) return qualifierDeclaration();
  const Range qualifiers = isSymbol('[') ? qualifierList() : Range{};
  refuse(kRefusedDeclarations, token_);
  if (!isWord("class")) failExpected("a class or a qualifier declaration");
  classDeclaration(qualifiers);
}

void Parser::qualifierDeclaration() {
  advance();
  QualifierDecl decl;
  decl.name = name("the qualifier's name");
  expect(':');
  decl.type = name("a type");
  if (take('[')) {
    decl.isArray = true;
    expect(']');
  }
  if (take('=')) decl.defaults = isSymbol('{') ? arrayValues() : values();
  expect(',');
  expectWord("Scope");
  decl.scopes = wordBits(kScopes, "a scope");
  if (take(',')) {
    expectWord("Flavor");
    decl.flavors = wordBits(kFlavors, "a flavor");
  }
  expect(';');
  document_.qualifierDecls.push_back(decl);
}

std::uint32_t Parser::wordBits(std::span<const std::string_view> words, const char* what) {
  std::uint32_t bits = 0;
  expect('(');
  do {
    const Token word = token_;
    const Name found = name(what);
    const auto row = std::ranges::find_if(
        words, [&](std::string_view known) { return isSameIgnoringCase(known, found.text); });
    if (row == words.end()) throw Fault(word.at, described(word) + " is not " + what);
    bits |= 1U << static_cast<unsigned>(row - words.begin());
  } while (take(','));
  expect(')');
  return bits;
}

Range Parser::qualifierList() {
  expect('[');
  const auto begin = static_cast<std::uint32_t>(document_.uses.size());
  do {
    const QualifierUse use = qualifierUse();
    document_.uses.push_back(use);
  } while (take(','));
  expect(']');
  return {begin, static_cast<std::uint32_t>(document_.uses.size())};
}

QualifierUse Parser::qualifierUse() {
  QualifierUse use;
  use.name = name("a qualifier");
  if (take('(')) {
    if (isWord("NULL")) throw Fault(token_.at, "a qualifier that is carried has a value");
    use.values = values();
    expect(')');
  } else if (isSymbol('{')) {
    use.values = arrayValues();
  }
  if (isSymbol(':')) throw Fault(token_.at, "flavors are not taken here; the declaration has them");
  return use;
}

// One value, or NULL for none.
Values Parser::values() {
  const auto begin = static_cast<std::uint32_t>(document_.values.size());
  if (isWord("NULL")) {
    advance();
    return {};
  }
  value();
  return {ValueForm::kSingle, {begin, begin + 1}};
}

Values Parser::arrayValues() {
  expect('{');
  const auto begin = static_cast<std::uint32_t>(document_.values.size());
  if (!isSymbol('}')) {
    do {
      value();
    } while (take(','));
  }
  expect('}');
  return {ValueForm::kArray, {begin, static_cast<std::uint32_t>(document_.values.size())}};
}

void Parser::value() {
  std::string_view text = token_.text;
  ValueKind kind = ValueKind::kBoolean;
  if (token_.kind == TokenKind::kString) {
    kind = ValueKind::kString;
  } else if (token_.kind == TokenKind::kInteger) {
    kind = ValueKind::kInteger;
    if (text.front() == '+') text.remove_prefix(1);
  } else if (isWord(kTrue)) {
    text = kTrue;
  } else if (isWord(kFalse)) {
    text = kFalse;
  } else {
    failExpected("a value");
  }
  document_.values.push_back(text);
  document_.notes.push_back({kind, token_.at});
  advance();
}

void Parser::classDeclaration(Range qualifiers) {
  advance();
  ClassDecl decl;
  decl.qualifiers = qualifiers;
  decl.name = name("the class's name");
  if (isWord("as")) throw Fault(token_.at, "aliases are not taken");
  if (take(':')) decl.superclass = name("the superclass's name");
  expect('{');
  decl.properties.begin = static_cast<std::uint32_t>(document_.properties.size());
  while (!take('}')) property();
  decl.properties.end = static_cast<std::uint32_t>(document_.properties.size());
  expect(';');
  document_.classes.push_back(decl);
}

void Parser::property() {
  PropertyDecl decl;
  if (isSymbol('[')) decl.qualifiers = qualifierList();
  decl.type = name("a property or '}'");
  if (isWord("ref")) throw Fault(token_.at, "references are not taken");
  decl.name = name("the property's name");
  if (token_.kind == TokenKind::kSymbol) refuse(kRefusedBehindName, token_);
  expect(';');
  document_.properties.push_back(decl);
}

// So that the pools seldom move: a typical schema has a token for each so many bytes.
void reserve(Document& document, std::size_t size) {
  constexpr std::size_t kBytesPerValue = 64;
  constexpr std::size_t kBytesPerProperty = 256;
  document.values.reserve(size / kBytesPerValue);
  document.notes.reserve(size / kBytesPerValue);
  document.uses.reserve(size / kBytesPerValue);
  document.properties.reserve(size / kBytesPerProperty);
}

}  // namespace

Document parseDocument(const Source& source, std::string& decoded) {
  Document document;
  reserve(document, source.text().size());
  for (std::size_t file = 0; file < source.fileCount(); ++file) {
    Parser(Scanner(source.text(), source.begin(file), source.end(file), decoded), document).run();
  }
  return document;
}

}  // namespace NKRXVEL20::mof
