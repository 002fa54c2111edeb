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

class Parser {
 public:
  Parser(Scanner scanner, Document& document) : scanner_(scanner), document_(document) {}

  void run() {
    while (!scanner_.isAtEnd()) declaration();
  }

 private:
  bool take(char symbol) { return scanner_.take(symbol); }
  bool takeWord(std::string_view word);
  void expect(char symbol) {
    if (!take(symbol)) failExpected(std::string("'") + symbol + "'");
  }
  void expectWord(const char* word) {
    if (!takeWord(word)) failExpected(std::string("\"") + word + '"');
  }
  Name name(const char* what);

  void refuse(std::span<const Refused> table) const;
  [[noreturn]] void failExpected(const std::string& what);

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
};

bool Parser::takeWord(std::string_view word) {
  if (!scanner_.isAt(word)) return false;
  scanner_.name();
  scanner_.skipBlanks();
  return true;
}

Name Parser::name(const char* what) {
  if (!scanner_.isAtName()) failExpected(what);
  const Token found = scanner_.name();
  scanner_.skipBlanks();
  return {found.at, static_cast<std::uint32_t>(found.text.size())};
}

void Parser::refuse(std::span<const Refused> table) const {
  const auto found =
      std::ranges::find_if(table, [&](const Refused& row) { return scanner_.isAt(row.word); });
  if (found != table.end()) throw Fault(scanner_.at(), found->what);
}

void Parser::failExpected(const std::string& what) {
  const Token found = scanner_.token();
  throw Fault(found.at, what + " is expected, not " + described(found));
}

void Parser::declaration() {
  if (takeWord("Qualifier")) return qualifierDeclaration();
  const Range qualifiers = scanner_.isAtSymbol('[') ? qualifierList() : Range{};
  if (takeWord("class")) return classDeclaration(qualifiers);
  refuse(kRefusedDeclarations);
  failExpected("a class or a qualifier declaration");
}

void Parser::qualifierDeclaration() {
  QualifierDecl decl;
  decl.name = name("the qualifier's name");
  expect(':');
  decl.type = name("a type");
  if (take('[')) {
    decl.isArray = true;
    expect(']');
  }
  if (take('=')) decl.defaults = scanner_.isAtSymbol('{') ? arrayValues() : values();
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
    if (!scanner_.isAtName()) failExpected(what);
    const Token word = scanner_.name();
    const auto row = std::ranges::find_if(
        words, [&](std::string_view known) { return isSameIgnoringCase(known, word.text); });
    if (row == words.end()) throw Fault(word.at, described(word) + " is not " + what);
    scanner_.skipBlanks();
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
    if (scanner_.isAt("NULL"))
      throw Fault(scanner_.at(), "a qualifier that is carried has a value");
    use.values = values();
    expect(')');
  } else if (scanner_.isAtSymbol('{')) {
    use.values = arrayValues();
  }
  if (scanner_.isAtSymbol(':'))
    throw Fault(scanner_.at(), "flavors are not taken here; the declaration has them");
  return use;
}

// One value, or NULL for none.
Values Parser::values() {
  const auto begin = static_cast<std::uint32_t>(document_.values.size());
  if (takeWord("NULL")) return {};
  value();
  return {ValueForm::kSingle, {begin, begin + 1}};
}

Values Parser::arrayValues() {
  expect('{');
  const auto begin = static_cast<std::uint32_t>(document_.values.size());
  if (!scanner_.isAtSymbol('}')) {
    do {
      value();
    } while (take(','));
  }
  expect('}');
  return {ValueForm::kArray, {begin, static_cast<std::uint32_t>(document_.values.size())}};
}

void Parser::value() {
  const Token token = scanner_.token();
  std::string_view text = token.text;
  ValueKind kind = ValueKind::kBoolean;
  if (token.kind == TokenKind::kString) {
    kind = ValueKind::kString;
  } else if (token.kind == TokenKind::kInteger) {
    kind = ValueKind::kInteger;
    if (text.front() == '+') text.remove_prefix(1);
  } else if (isSameIgnoringCase(text, kTrue)) {
    text = kTrue;
  } else if (isSameIgnoringCase(text, kFalse)) {
    text = kFalse;
  } else {
    throw Fault(token.at, "a value is expected, not " + described(token));
  }
  document_.values.push_back(text);
  document_.notes.push_back({kind, token.at});
  scanner_.skipBlanks();
}

void Parser::classDeclaration(Range qualifiers) {
  ClassDecl decl;
  decl.qualifiers = qualifiers;
  decl.name = name("the class's name");
  if (scanner_.isAt("as")) throw Fault(scanner_.at(), "aliases are not taken");
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
  if (scanner_.isAtSymbol('[')) decl.qualifiers = qualifierList();
  decl.type = name("a property or '}'");
  if (scanner_.isAt("ref")) throw Fault(scanner_.at(), "references are not taken");
  decl.name = name("the property's name");
  if (!scanner_.isAtSymbol(';')) refuse(kRefusedBehindName);
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
