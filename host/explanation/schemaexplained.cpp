// SPDX-License-Identifier: Apache-2.0
#include "host/explanation/schemaexplained.h"

#include <algorithm>
#include <vector>

#include "host/explanation/originwords.h"
#include "host/reasons/origin.h"
#include "host/text/utf8.h"
#include "host/text/wrappedtext.h"

namespace velhost {
namespace {

using NKRXVEL20::host::ClassSchema;
using NKRXVEL20::host::PropertySchema;
using NKRXVEL20::host::TextList;
using Words = std::vector<std::string>;

constexpr std::size_t kIndent = 2;
constexpr std::size_t kDeeper = 4;
constexpr std::size_t kFactWidth = 11;  // of what stands before a fact

std::string joined(const Words& words) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : ", ") + word;
  return text;
}

std::string joined(TextList words) { return joined(Words(words.begin(), words.end())); }

// In the text of the schema, which anybody may have written, are line feeds.
std::string line(std::string_view text, std::size_t width, std::size_t indent, std::size_t hang) {
  return wrappedText(visible(text), width, indent, hang);
}

std::string fact(std::string name, const std::string& text, std::size_t width) {
  if (text.empty()) return "";
  name.resize(kFactWidth, ' ');
  return line(name + text, width, kIndent, kIndent + kFactWidth);
}

TextList qualifierValues(const ClassSchema& cimClass, std::string_view name) {
  for (const auto& qualifier : cimClass.qualifiers) {
    if (qualifier.declaration->name == name) return qualifier.values;
  }
  return {};
}

std::string keys(const ClassSchema& cimClass) {
  Words names;
  for (const PropertySchema& property : cimClass.properties) {
    if (property.isKey) names.emplace_back(property.name);
  }
  return joined(names);
}

std::string collector(const ClassSchema& cimClass) {
  if (cimClass.isAbstract) return "none: other classes derive from it";
  return cimClass.provider.empty() ? "whoever adds instances" : std::string(cimClass.provider);
}

std::string leftTo(const ClassSchema& cimClass) {
  const TextList left = qualifierValues(cimClass, "LeftTo");
  if (left.empty()) return "";
  const bool isByIpmi = std::ranges::find(left, "IPMI.VEL") != left.end();
  return std::string(left.front()) +
         (isByIpmi ? ", where that has instances or a BMC answers" : ", where that has instances");
}

// "has TEXT" is a rule of classes alone.
std::string presence(const ClassSchema& cimClass) {
  Words words;
  for (const std::string_view text : qualifierValues(cimClass, "MappingStrings")) {
    const Origin origin = originOf(text);
    words.push_back(origin.source == Source::kInstance
                        ? std::string(origin.propertyName) + " of a " +
                              std::string(origin.className) + ' ' + std::string(origin.rule)
                        : std::string(text));
  }
  return joined(words);
}

std::string machineTypes(const ClassSchema& cimClass) {
  const TextList types = qualifierValues(cimClass, "MachineTypes");
  return types.empty() ? "" : "machine types " + joined(types);
}

std::string typeAndBound(const PropertySchema& property) {
  std::string text(NKRXVEL20::host::typeName(property.type));
  if (property.isKey) text += ", key";
  if (property.maxLen > 0) text += ", at most " + std::to_string(property.maxLen) + " characters";
  return text;
}

// Each source once.
std::string sources(const PropertySchema& property) {
  Words words;
  for (const Origin& origin : originsOf(property)) {
    const std::string source = sourceInWords(origin);
    if (std::ranges::find(words, source) == words.end()) words.push_back(source);
  }
  return words.empty() ? "no collector ever fills it" : "from: " + joined(words);
}

std::string propertySummary(const PropertySchema& property, std::size_t width) {
  return line(std::string(property.name) + "  " + typeAndBound(property), width, kIndent,
              kIndent + kDeeper) +
         line(property.description, width, kIndent + kDeeper, kIndent + kDeeper) +
         line(sources(property), width, kIndent + kDeeper, kIndent + kDeeper + kIndent);
}

std::string namedValues(const PropertySchema& property) {
  Words words;
  for (std::size_t i = 0; i < property.valueMap.size(); ++i) {
    words.push_back(std::string(property.valueMap[i]) + " " + std::string(property.values[i]));
  }
  return joined(words);
}

std::string sentence(std::string text) {
  if (text.front() >= 'a' && text.front() <= 'z') {
    text.front() = static_cast<char>(text.front() - 'a' + 'A');
  }
  return text + '.';
}

}  // namespace

std::string classHead(const ClassSchema& cimClass, std::size_t width) {
  const std::string superclass(cimClass.superclass == nullptr ? "" : cimClass.superclass->name);
  return line(std::string(cimClass.name) + ": " + std::string(cimClass.description), width, 0,
              kIndent) +
         fact("collector", collector(cimClass), width) + fact("derives", superclass, width) +
         fact("keys", keys(cimClass), width) + fact("left to", leftTo(cimClass), width) +
         fact("only on", machineTypes(cimClass), width) +
         fact("only where", presence(cimClass), width);
}

std::string classExplained(const ClassSchema& cimClass, std::size_t width) {
  std::string text = classHead(cimClass, width);
  for (const PropertySchema& property : cimClass.properties) {
    text += '\n' + propertySummary(property, width);
  }
  return text;
}

std::string propertyHead(const ClassSchema& cimClass, const PropertySchema& property,
                         std::size_t width) {
  const std::string name = std::string(cimClass.name) + '.' + std::string(property.name);
  return line(name + ": " + std::string(property.description), width, 0, kIndent) +
         fact("type", typeAndBound(property), width) + fact("values", namedValues(property), width);
}

std::string propertyExplained(const ClassSchema& cimClass, const PropertySchema& property,
                              std::size_t width) {
  std::string text = propertyHead(cimClass, property, width);
  if (property.mappingStrings.empty()) text += "  no collector ever fills it\n";
  for (const std::string_view origin : property.mappingStrings) {
    text += '\n' + lineExplained(origin, width);
  }
  return text;
}

std::string lineExplained(std::string_view text, std::size_t width) {
  const Origin origin = originOf(text);
  const std::string itself = line(text, width, 0, kDeeper);
  if (origin.source == Source::kOther) {
    return itself + line("In the notation of its collector.", width, kIndent, kIndent);
  }
  return itself + line(sentence(originInWords(origin)), width, kIndent, kIndent);
}

}  // namespace velhost
