// SPDX-License-Identifier: Apache-2.0
#include "host/explanation/originwords.h"

#include <algorithm>
#include <utility>

#include "host/explanation/fit.h"
#include "host/explanation/rules.h"
#include "host/reasons/words.h"

namespace velhost {
namespace {

std::string name(std::string_view text) { return std::string(text); }

std::string bytesInWords(const Origin& origin) {
  const std::string first = std::to_string(origin.firstByte);
  if (!origin.lastByte) return "the bytes from " + first + " on";
  if (*origin.lastByte == origin.firstByte) return "byte " + first;
  return "bytes " + first + " to " + std::to_string(*origin.lastByte);
}

std::string commandInWords(const Origin& origin) {
  return hexPairs(origin.command) + (origin.isNumbered ? " n" : "");
}

std::string dataInWords(const Origin& origin) {
  return origin.data ? " with data " + hexPairs(*origin.data) : "";
}

std::string numberInWords(const Origin& origin) {
  return origin.isNumbered ? " (n is the component's number)" : "";
}

std::string replyInWords(const Origin& origin) {
  return bytesInWords(origin) + " of the reply to " + sourceInWords(origin) + dataInWords(origin) +
         numberInWords(origin);
}

std::string recordInWords(const Origin& origin) {
  return bytesInWords(origin) + " of the " + sourceInWords(origin);
}

std::string fruInWords(const Origin& origin) {
  if (origin.text == kWhatWasWrong) return "what was wrong with the FRU device or its areas";
  const std::string what =
      origin.field.starts_with("field ") ? name(origin.field) : bytesInWords(origin);
  return what + " of the " + name(origin.text) + " of the FRU device";
}

std::string structureInWords(const Origin& origin) {
  const std::string type = sourceInWords(origin);
  if (!origin.contained.empty())
    return "the string of " + type + " with " + quoted(origin.contained);
  const std::string place = "offset " + std::to_string(origin.offset);
  if (!origin.field.ends_with("string"))
    return "the " + name(origin.field) + " at " + place + " of " + type;
  return "the string of " + type + " whose number is at " + place;
}

std::string instanceInWords(const Origin& origin) {
  return name(origin.propertyName) + " of a " + name(origin.className);
}

std::string constantInWords(const Origin& origin) {
  const bool isBlank = origin.text.find_first_not_of(' ') == std::string_view::npos;
  if (origin.text.empty()) return "fixed: the empty text";
  return isBlank ? "fixed: a blank" : "fixed: " + quoted(origin.text);
}

std::string derivedInWords(const Origin& origin) { return "made up: " + quoted(origin.text); }

std::string deviceInWords(const Origin& origin) {
  return "attributes of a " + name(origin.text) + " in sysfs";
}

std::string lineItself(const Origin& origin) { return name(origin.line); }

// A source in few words, and what a line of it says.
std::string dotShort(const Origin& origin) { return "dot command " + commandInWords(origin); }
std::string tamberShort(const Origin& origin) { return "Tamber command " + commandInWords(origin); }
std::string ipmiShort(const Origin& origin) { return "IPMI command " + commandInWords(origin); }
std::string recordShort(const Origin& origin) {
  return "BMC's record of type " + std::to_string(origin.structureType) +
         " that locates the FRU device";
}
std::string fruShort(const Origin& /*origin*/) { return "FRU device"; }
std::string structureShort(const Origin& origin) {
  return "SMBIOS type " + std::to_string(origin.structureType);
}
std::string instanceShort(const Origin& origin) { return name(origin.className); }
std::string deviceShort(const Origin& /*origin*/) { return "sysfs"; }
std::string constantShort(const Origin& /*origin*/) { return "fixed"; }
std::string derivedShort(const Origin& /*origin*/) { return "made up of others"; }

struct SourceWords {
  Source source;
  std::string (*inShort)(const Origin&);
  std::string (*whole)(const Origin&);
};

constexpr SourceWords kSources[] = {
    {Source::kDotCommand, dotShort, replyInWords},
    {Source::kTamberCommand, tamberShort, replyInWords},
    {Source::kIpmi, ipmiShort, replyInWords},
    {Source::kIpmiRepository, recordShort, recordInWords},
    {Source::kIpmiFru, fruShort, fruInWords},
    {Source::kSmbios, structureShort, structureInWords},
    {Source::kInstance, instanceShort, instanceInWords},
    {Source::kSysfs, deviceShort, deviceInWords},
    {Source::kConstant, constantShort, constantInWords},
    {Source::kDerived, derivedShort, derivedInWords},
    {Source::kOther, lineItself, lineItself},
};

const SourceWords& wordsOf(const Origin& origin) {
  return *std::ranges::find(kSources, origin.source, &SourceWords::source);
}

constexpr std::pair<Condition::Kind, std::string_view> kComparisons[] = {
    {Condition::Kind::kIsSet, " is set"}, {Condition::Kind::kIsUnset, " is not set"},
    {Condition::Kind::kIs, " is "},       {Condition::Kind::kIsNot, " is not "},
    {Condition::Kind::kHas, " has "},     {Condition::Kind::kLacks, " lacks "},
};

std::string conditionInWords(const Condition& condition) {
  const auto* const words = std::ranges::find(kComparisons, condition.kind,
                                              &std::pair<Condition::Kind, std::string_view>::first);
  const std::string text = condition.text.empty() ? "" : quoted(condition.text);
  return name(condition.property) + name(words->second) + text;
}

std::string conditionsInWords(const Origin& origin) {
  std::string text;
  for (const Condition& condition : origin.conditions) {
    text += (text.empty() ? "; where " : " and ") + conditionInWords(condition);
  }
  return text;
}

constexpr std::pair<std::string_view, std::string_view> kPlaceholders[] = {
    {"", "the value"},
    {"sp", "the number of the SP that was asked"},
    {"node", "the number of the node"},
    {"label", "\"Node N: \" where there are several SPs"},
    {"n", "the component's number"},
    {"structure", "the number of the structure among those of its type"},
};

// What the placeholders of a template are that do not say so themselves.
std::string legendOf(std::string_view shape) {
  std::string text;
  for (const std::string_view placeholder : placeholdersOf(shape)) {
    for (const auto& [known, meaning] : kPlaceholders) {
      if (placeholder != known || text.find(meaning) != std::string::npos) continue;
      text += (text.empty() ? " ({" : ", {") + name(known) + "} " + name(meaning);
    }
  }
  return text.empty() ? "" : text + ')';
}

std::string shapeInWords(const Origin& origin) {
  if (origin.source == Source::kDerived) return legendOf(origin.text);
  if (origin.shape.empty()) return "";
  return "; it stands in " + quoted(origin.shape) + legendOf(origin.shape);
}

std::string spaced(const Bytes& data) { return data.empty() ? "" : ", data " + hexPairs(data); }

std::string replyEvidence(const Origin& origin, const View& view) {
  const Reply& reply = *replyFor(origin, view);
  const std::string command = hexPairs(reply.command) + spaced(reply.data);
  const std::size_t count = reply.bytes.size();
  const std::string size =
      ": " + std::to_string(count) + (count == 1 ? " byte in reply" : " bytes in reply");
  if (origin.source == Source::kDotCommand) {
    return "SP " + std::to_string(reply.sp + 1) + ", dot command " + command + size;
  }
  const bool isTamber = origin.source == Source::kTamberCommand;
  return (isTamber ? "Tamber command " : "IPMI network function and command ") + command + size;
}

std::string structureEvidence(const Origin& origin, const View& view) {
  const Structure& structure = view.string && !origin.contained.empty()
                                   ? *view.string->structure
                                   : *view.structures.at(origin.structureType);
  std::string text = structureShort(origin);
  if (structure.bytes.size() < 4) return text + ": the read gave nothing";
  const Bytes handle{structure.bytes[3], structure.bytes[2]};
  text += ", handle " + hexOfBytes(handle) + "h";
  const auto offset = static_cast<std::size_t>(origin.offset);
  if (!origin.field.ends_with("string") || offset >= structure.bytes.size()) return text;
  return text + ", string " + std::to_string(structure.bytes[offset]);
}

std::string instanceEvidence(const Origin& origin, const View& view) {
  return instanceShort(origin) + " " + std::to_string(view.instanceNumber) + ", " +
         name(origin.propertyName);
}

std::string fruEvidence(const Origin& origin, const View& view) {
  std::string device = "FRU device " + std::to_string(view.fru->number);
  if (origin.source == Source::kIpmiRepository) {
    return device + ", the record of type " + std::to_string(origin.structureType) +
           " that locates it";
  }
  if (origin.text == kWhatWasWrong) return device;
  const std::string field = origin.field.starts_with("field ") ? ", " + name(origin.field) : "";
  return device + ", " + name(origin.text) + field;
}

}  // namespace

std::string originInWords(const Origin& origin) {
  std::string text = wordsOf(origin).whole(origin);
  if (!origin.rule.empty() && origin.text != kWhatWasWrong) text += ": " + ruleInWords(origin.rule);
  return text + shapeInWords(origin) + conditionsInWords(origin);
}

std::string sourceInWords(const Origin& origin) { return wordsOf(origin).inShort(origin); }

std::string evidenceInWords(const Origin& origin, const View& view) {
  if (!placeOf(origin, view)) return sourceInWords(origin);
  if (origin.source == Source::kSmbios) return structureEvidence(origin, view);
  if (origin.source == Source::kInstance) return instanceEvidence(origin, view);
  const bool isFru = origin.source == Source::kIpmiRepository || origin.source == Source::kIpmiFru;
  return isFru ? fruEvidence(origin, view) : replyEvidence(origin, view);
}

}  // namespace velhost
