// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <array>
#include <set>

#include "mofdocument.h"
#include "velhost/schema.h"

namespace NKRXVEL20::host {
namespace {

using ClassSet = std::set<const ClassSchema*>;
using DeclarationSet = std::set<const QualifierDeclaration*>;

std::string hexEscape(char c) {
  constexpr std::string_view kHexDigits = "0123456789ABCDEF";
  const auto byte = static_cast<unsigned char>(c);
  return {'\\', 'x', '0', '0', kHexDigits[byte >> 4U], kHexDigits[byte & 0xFU]};
}

std::string stringLiteral(std::string_view text) {
  std::string literal = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') literal += '\\';
    const bool isControl = static_cast<unsigned char>(c) < ' ' || c == '\x7F';
    literal += isControl ? hexEscape(c) : std::string(1, c);
  }
  return literal + '"';
}

std::string literalOf(const QualifierDeclaration& declaration, std::string_view value) {
  return declaration.type == "string" ? stringLiteral(value) : std::string(value);
}

// Values of a list stand below each other, behind the column in which the list begins.
std::string listText(const QualifierDeclaration& declaration, TextList values,
                     const std::string& indent) {
  std::string text = "{";
  for (const std::string_view value : values) {
    if (text.size() > 1) text += ',';
    text += (values.size() > 1 ? '\n' + indent : " ") + literalOf(declaration, value);
  }
  return text + " }";
}

std::string qualifierText(const Qualifier& qualifier, const std::string& indent) {
  const QualifierDeclaration& declaration = *qualifier.declaration;
  std::string name(declaration.name);
  if (declaration.isArray) {
    return name + ' ' + listText(declaration, qualifier.values, indent + "  ");
  }
  if (qualifier.values.front() == mof::kTrue && declaration.type == "boolean") return name;
  return name + '(' + literalOf(declaration, qualifier.values.front()) + ')';
}

std::string qualifierListText(std::span<const Qualifier> qualifiers, const std::string& indent) {
  std::string text;
  for (const Qualifier& qualifier : qualifiers) {
    text += text.empty() ? indent + '[' : ",\n" + indent + ' ';
    text += qualifierText(qualifier, indent + ' ');
  }
  return text.empty() ? text : text + "]\n";
}

std::string wordList(std::span<const std::string_view> words, std::uint32_t bits) {
  std::string text;
  for (std::size_t i = 0; i < words.size(); ++i) {
    if ((bits >> i & 1U) != 0) text += (text.empty() ? "" : ", ") + std::string(words[i]);
  }
  return '(' + text + ')';
}

std::string declarationText(const QualifierDeclaration& declaration) {
  std::string text = "Qualifier " + std::string(declaration.name) + " : ";
  text += std::string(declaration.type) + (declaration.isArray ? "[]" : "");
  if (declaration.hasDefault) {
    text += " = " + (declaration.isArray ? listText(declaration, declaration.defaults, "  ")
                                         : literalOf(declaration, declaration.defaults.front()));
  }
  text += ", Scope" + wordList(mof::kScopes, declaration.scopes);
  if (declaration.flavors != 0) text += ", Flavor" + wordList(mof::kFlavors, declaration.flavors);
  return text + ";\n";
}

std::string classText(const ClassSchema& cimClass) {
  std::string text = qualifierListText(cimClass.qualifiers, "");
  text += "class " + std::string(cimClass.name);
  if (cimClass.superclass != nullptr) text += " : " + std::string(cimClass.superclass->name);
  text += " {\n";
  for (const PropertySchema& property : cimClass.properties.subspan(cimClass.inherited)) {
    text += qualifierListText(property.qualifiers, "  ");
    text += "  " + std::string(typeName(property.type)) + ' ' + std::string(property.name) + ";\n";
  }
  return text + "};\n";
}

void addUsed(DeclarationSet& used, std::span<const Qualifier> qualifiers) {
  for (const Qualifier& qualifier : qualifiers) used.insert(qualifier.declaration);
}

DeclarationSet usedBy(const ClassSet& classes) {
  DeclarationSet used;
  for (const ClassSchema* cimClass : classes) {
    addUsed(used, cimClass->qualifiers);
    for (const PropertySchema& property : cimClass->properties) addUsed(used, property.qualifiers);
  }
  return used;
}

ClassSet withSuperclasses(std::span<const ClassSchema* const> classes) {
  ClassSet all;
  for (const ClassSchema* cimClass : classes) {
    for (; cimClass != nullptr; cimClass = cimClass->superclass) all.insert(cimClass);
  }
  return all;
}

// Blocks with an empty line between them.
void append(std::string& text, const std::string& block) {
  if (!text.empty()) text += '\n';
  text += block;
}

}  // namespace

std::string mofText(const Schema& schema) {
  std::string text;
  for (const QualifierDeclaration& row : schema.qualifiers) text += declarationText(row);
  for (const ClassSchema& cimClass : schema.classes) append(text, classText(cimClass));
  return text;
}

std::string mofText(const Schema& schema, std::span<const ClassSchema* const> classes) {
  const ClassSet chosen = withSuperclasses(classes);
  const DeclarationSet used = usedBy(chosen);
  std::string text;
  for (const QualifierDeclaration& row : schema.qualifiers) {
    if (used.contains(&row)) text += declarationText(row);
  }
  for (const ClassSchema& cimClass : schema.classes) {
    if (chosen.contains(&cimClass)) append(text, classText(cimClass));
  }
  return text;
}

}  // namespace NKRXVEL20::host
