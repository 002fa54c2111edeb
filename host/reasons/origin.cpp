// SPDX-License-Identifier: Apache-2.0
#include "host/reasons/origin.h"

#include <algorithm>
#include <boost/container/small_vector.hpp>
#include <charconv>
#include <string>
#include <utility>

namespace velhost {
namespace {

using Elements = boost::container::small_vector<std::string_view, 8>;  // more than any line has

Elements split(std::string_view text, std::string_view separator) {
  Elements parts;
  for (std::size_t end = text.find(separator); end != std::string_view::npos;
       end = text.find(separator)) {
    parts.push_back(text.substr(0, end));
    text.remove_prefix(end + separator.size());
  }
  parts.push_back(text);
  return parts;
}

// Takes the word from the front of the text; false when it does not begin with it.
bool takeWord(std::string_view& text, std::string_view word) {
  if (!text.starts_with(word)) return false;
  text.remove_prefix(word.size());
  return true;
}

template <class Number>
bool readNumber(std::string_view text, Number& number) {
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  return error == std::errc() && stop == end;
}

// The longer words first, as "is" begins others.
constexpr std::pair<std::string_view, Condition::Kind> kComparisons[] = {
    {"is not ", Condition::Kind::kIsNot},
    {"is ", Condition::Kind::kIs},
    {"has ", Condition::Kind::kHas},
    {"lacks ", Condition::Kind::kLacks},
};

bool readCondition(std::string_view text, Condition& condition) {
  const std::size_t blank = text.find(' ');
  if (blank == std::string_view::npos) return false;
  condition.property = text.substr(0, blank);
  text.remove_prefix(blank + 1);
  if (text == "is set" || text == "is unset") {
    condition.kind = text == "is set" ? Condition::Kind::kIsSet : Condition::Kind::kIsUnset;
    return true;
  }
  for (const auto& [word, kind] : kComparisons) {
    if (!takeWord(text, word)) continue;
    condition.kind = kind;
    condition.text = text;
    return true;
  }
  return false;
}

bool readConditions(std::string_view text, std::vector<Condition>& conditions) {
  return std::ranges::all_of(split(text, " and "), [&](std::string_view part) {
    return readCondition(part, conditions.emplace_back());
  });
}

// "byte A", "bytes A-B" or "bytes A-".
bool readBytes(std::string_view text, Origin& origin) {
  if (takeWord(text, "byte ")) {
    origin.lastByte = 0;
    if (!readNumber(text, origin.firstByte)) return false;
    origin.lastByte = origin.firstByte;
    return true;
  }
  const std::size_t dash = text.find('-');
  if (!takeWord(text, "bytes ") || dash == std::string_view::npos) return false;
  const auto ends = split(text, "-");
  if (!readNumber(ends[0], origin.firstByte)) return false;
  return ends[1].empty() || readNumber(ends[1], origin.lastByte.emplace(0));
}

bool readHex(std::string_view text, Bytes& bytes) try {
  bytes = bytesOfHex(text);
  return true;
} catch (const HexTextError&) {
  return false;
}

// COMMAND[|data DATA]|BYTES|RULE
bool readCommand(const Elements& elements, Origin& origin) {
  if (elements.size() != 3 && elements.size() != 4) return false;
  std::string_view command = elements.front();
  origin.isNumbered = command.ends_with(" n");
  if (origin.isNumbered) command.remove_suffix(2);
  origin.rule = elements.back();
  if (elements.size() == 4) {
    std::string_view data = elements[1];
    if (!takeWord(data, "data ") || !readHex(data, origin.data.emplace())) return false;
  }
  return readHex(command, origin.command) && readBytes(elements[elements.size() - 2], origin);
}

// IPMI 2.0, 33.12 Get SDR: type N|BYTES|RULE
bool readRecord(const Elements& elements, Origin& origin) {
  if (elements.size() != 3) return false;
  std::string_view type = elements[0];
  origin.command = {0x0A, 0x23};
  origin.rule = elements[2];
  return takeWord(type, "type ") && readNumber(type, origin.structureType) &&
         readBytes(elements[1], origin);
}

// IPMI 2.0, 34.2 Read FRU Data: AREA|field N|RULE, AREA|BYTES|RULE or what was wrong|RULE
bool readFru(const Elements& elements, Origin& origin) {
  if (elements.size() != 2 && elements.size() != 3) return false;
  origin.command = {0x0A, 0x11};
  origin.text = elements.front();
  origin.rule = elements.back();
  if (elements.size() == 2) return true;
  origin.field = elements[1];
  return origin.field.starts_with("field ") || readBytes(elements[1], origin);
}

// type N|offset O|FIELD|RULE or type N|string with TEXT|RULE
bool readSmbios(const Elements& elements, Origin& origin) {
  if (elements.size() != 3 && elements.size() != 4) return false;
  std::string_view type = elements[0];
  std::string_view place = elements[1];
  origin.rule = elements.back();
  if (!takeWord(type, "type ") || !readNumber(type, origin.structureType)) return false;
  if (elements.size() == 3) {
    origin.contained = place;
    return takeWord(origin.contained, "string with ");
  }
  origin.field = elements[2];
  return takeWord(place, "offset ") && readNumber(place, origin.offset);
}

// CLASS.PROPERTY|RULE
bool readInstance(const Elements& elements, Origin& origin) {
  if (elements.size() != 2) return false;
  const auto names = split(elements[0], ".");
  if (names.size() != 2) return false;
  origin.className = names[0];
  origin.propertyName = names[1];
  origin.rule = elements[1];
  return true;
}

bool readText(const Elements& elements, Origin& origin) {
  if (elements.size() != 1) return false;
  origin.text = elements[0];
  return true;
}

struct Notation {
  std::string_view name;
  Source source;
  bool (*read)(const Elements&, Origin&);
};

constexpr Notation kNotations[] = {
    {"DotCommand.VEL", Source::kDotCommand, readCommand},
    {"TamberCommand.VEL", Source::kTamberCommand, readCommand},
    {"IPMI.VEL", Source::kIpmi, readCommand},
    {"IPMI.SDR", Source::kIpmiRepository, readRecord},
    {"IPMI.FRU", Source::kIpmiFru, readFru},
    {"SMBIOS.DMTF", Source::kSmbios, readSmbios},
    {"Instance.VEL", Source::kInstance, readInstance},
    {"Sysfs.Linux", Source::kSysfs, readText},
    {"Constant.VEL", Source::kConstant, readText},
    {"Derived.VEL", Source::kDerived, readText},
};

// What may stand behind every notation's own elements: a template, then conditions.
bool takeTail(Elements& elements, Origin& origin) {
  std::string_view last = elements.back();
  if (elements.size() > 1 && takeWord(last, "when ")) {
    elements.pop_back();
    if (!readConditions(last, origin.conditions)) return false;
    last = elements.back();
  }
  if (elements.size() > 1 && takeWord(last, "as ")) {
    elements.pop_back();
    origin.shape = last;
  }
  return true;
}

bool readLine(std::string_view line, Origin& origin) {
  Elements elements = split(line, "|");
  const auto notation = std::ranges::find(kNotations, elements.front(), &Notation::name);
  if (notation == std::end(kNotations) || !takeTail(elements, origin)) return false;
  elements.erase(elements.begin());
  origin.source = notation->source;
  return notation->read(elements, origin);
}

bool holds(const Condition& condition, const std::string& value) {
  switch (condition.kind) {
    case Condition::Kind::kIsSet:
      return !value.empty();
    case Condition::Kind::kIsUnset:
      return value.empty();
    case Condition::Kind::kIs:
      return value == condition.text;
    case Condition::Kind::kIsNot:
      return value != condition.text;
    case Condition::Kind::kHas:
      return value.find(condition.text) != std::string::npos;
    case Condition::Kind::kLacks:
      return value.find(condition.text) == std::string::npos;
  }
  return false;
}

}  // namespace

Origin originOf(std::string_view line) {
  Origin origin;
  origin.line = line;
  if (readLine(line, origin)) return origin;
  Origin other;
  other.line = line;
  return other;
}

std::vector<Origin> originsOf(const NKRXVEL20::host::PropertySchema& property) {
  std::vector<Origin> origins;
  origins.reserve(property.mappingStrings.size());
  for (const std::string_view line : property.mappingStrings) origins.push_back(originOf(line));
  return origins;
}

bool holdsFor(const Origin& origin, const NKRXVEL20::host::PropertyList& instance) {
  return std::ranges::all_of(origin.conditions, [&](const Condition& condition) {
    return holds(condition, valueText(instance, condition.property));
  });
}

std::string valueText(const NKRXVEL20::host::PropertyList& instance, std::string_view property) {
  const auto held =
      std::ranges::find(instance, property, &NKRXVEL20::host::PropertyList::value_type::first);
  return held == instance.end() ? "" : held->second.ToString();
}

}  // namespace velhost
