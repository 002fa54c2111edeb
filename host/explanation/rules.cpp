// SPDX-License-Identifier: Apache-2.0
#include "host/explanation/rules.h"

#include <algorithm>
#include <cstdint>
#include <set>

#include "host/explanation/datesof.h"
#include "host/explanation/typedtext.h"
#include "host/text/hextext.h"
#include "vel/osspecific.h"

namespace velhost {
namespace {

using NKRXVEL20::TOSSpecific;
using Value = std::optional<std::string>;

constexpr std::string_view kOrBlank = " or blank";
constexpr std::string_view kBefore = "before ";
constexpr std::string_view kBetween = "between ";
constexpr std::string_view kAnd = " and ";

std::string rawText(ByteView bytes) { return {bytes.begin(), bytes.end()}; }

std::uint64_t numberOf(ByteView bytes) {
  std::uint64_t number = 0;
  for (std::size_t i = bytes.size(); i-- > 0;) number = number << 8U | bytes[i];
  return number;
}

bool areAll(ByteView bytes, unsigned char wanted) {
  return std::ranges::all_of(bytes, [&](unsigned char byte) { return byte == wanted; });
}

bool isUnknown(ByteView bytes) { return areAll(bytes, 0) || areAll(bytes, 0xFF); }

std::string lowerCase(std::string text) {
  for (char& c : text) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return text;
}

std::string lettersAndDigits(ByteView bytes) {
  std::string text = textOf(bytes);
  TOSSpecific::removeNonAlpaNumeric(text);
  return text;
}

struct Parts {
  std::string version;
  std::string build;
};

Parts partsOf(ByteView bytes) {
  Parts parts{lettersAndDigits(bytes), ""};
  TOSSpecific::breakApartVersion(parts.version, parts.build);
  return parts;
}

Value text(ByteView bytes) { return textOf(bytes); }
Value decimal(ByteView bytes) { return std::to_string(bytes.empty() ? 0 : bytes.front()); }
Value hexBytes(ByteView bytes) { return hexOfBytes(bytes); }
Value hexDigits(ByteView bytes) { return areAll(bytes, 0) ? "" : hexOfBytes(bytes); }

Value level(ByteView bytes) {
  constexpr std::string_view kMarks = ".()[]";
  std::string kept;
  for (const char c : rawText(bytes)) {
    std::string one(1, c);
    TOSSpecific::removeNonAlpaNumeric(one);
    if (!one.empty() || kMarks.find(c) != std::string_view::npos) kept += c;
  }
  return kept;
}

Value allLettersAndDigits(ByteView bytes) { return lettersAndDigits(bytes); }
Value versionPart(ByteView bytes) { return partsOf(bytes).version; }
Value buildPart(ByteView bytes) { return partsOf(bytes).build; }

Value numericVersionPart(ByteView bytes) {
  std::string version = partsOf(bytes).version;
  const bool isNumeric = version.find_first_not_of("0123456789.") == std::string::npos;
  return isNumeric ? version : " ";
}

Value shifted(ByteView bytes) { return std::to_string(numberOf(bytes) << 16U); }
Value lowNibble(ByteView bytes) { return std::to_string(bytes[0] & 0x0FU); }
Value number(ByteView bytes) { return std::to_string(numberOf(bytes) & 0x7FFFFFFFU); }
Value isNotZero(ByteView bytes) { return areAll(bytes, 0) ? "FALSE" : "TRUE"; }
Value isBit3Set(ByteView bytes) { return (bytes[0] & 8U) != 0 ? "TRUE" : "FALSE"; }

// Nothing where all of these bits are zero, or all one.
template <unsigned kBits>
Value bitsOf(ByteView bytes) {
  constexpr std::uint64_t kMask = (std::uint64_t{1} << kBits) - 1;
  const std::uint64_t value = numberOf(bytes) & kMask;
  return value == 0 || value == kMask ? "" : std::to_string(value);
}

Value bcdVersion(ByteView bytes) {
  return std::to_string(bytes[0] & 0x7FU) + '.' + hexOfBytes(bytes.subspan(1));
}

Value ipmiVersion(ByteView bytes) {
  return std::to_string(bytes[0] & 0x0FU) + '.' + std::to_string(bytes[0] >> 4U);
}

Value majorMinor(ByteView bytes) {
  if (bytes[0] == 0xFF || bytes[1] == 0xFF) return "";
  return std::to_string(bytes[0]) + '.' + std::to_string(bytes[1]);
}

// RFC 4122, 3
std::string groups(std::string digits) {
  for (const std::size_t at : {8U, 13U, 18U, 23U}) digits.insert(at, 1, '-');
  return digits;
}

std::string reversedHex(ByteView bytes) {
  const Bytes reversed(bytes.rbegin(), bytes.rend());
  return lowerCase(hexOfBytes(reversed));
}

Value guid(ByteView bytes) { return isUnknown(bytes) ? "" : groups(reversedHex(bytes)); }

Value uuid(ByteView bytes) {
  if (isUnknown(bytes)) return "";
  return groups(reversedHex(bytes.first(4)) + reversedHex(bytes.subspan(4, 2)) +
                reversedHex(bytes.subspan(6, 2)) + lowerCase(hexOfBytes(bytes.subspan(8))));
}

constexpr std::uint64_t kKilobyte = 1024;
constexpr std::uint64_t kMegabyte = kKilobyte * kKilobyte;

Value romSize(ByteView bytes) { return std::to_string(64 * kKilobyte * (bytes[0] + 1U)); }

Value extendedRomSize(ByteView bytes) {
  const std::uint64_t field = numberOf(bytes);
  const std::uint64_t unit = field >> 14U;
  const std::uint64_t count = field & 0x3FFFU;
  if (unit > 1 || count == 0) return "";
  return std::to_string(count * (unit == 0 ? kMegabyte : kMegabyte * kKilobyte));
}

Value memorySize(ByteView bytes) {
  const std::uint64_t field = numberOf(bytes);
  if (field == 0xFFFF) return "";
  return std::to_string((field & 0x7FFFU) * ((field & 0x8000U) != 0 ? kKilobyte : kMegabyte));
}

Value extendedMemorySize(ByteView bytes) {
  return std::to_string((numberOf(bytes) & 0x7FFFFFFFU) * kMegabyte);
}

Value trimmed(ByteView bytes) {
  std::string whole = textOf(bytes);
  whole.erase(whole.find_last_not_of(' ') + 1);
  return whole;
}

// A text that is no hexadecimal number stands for itself; the names of codes are the collector's.
Value makerText(ByteView bytes) {
  Value whole = trimmed(bytes);
  const bool isCode = whole->find_first_not_of("0123456789ABCDEFabcdefxXhH ") == std::string::npos;
  return isCode && !whole->empty() ? std::nullopt : whole;
}

// What needs the names that the collectors have.
Value notWorkedOut(ByteView /*bytes*/) { return std::nullopt; }

struct Rule {
  std::string_view name;
  Value (*apply)(ByteView);
  std::size_t size;  // of what it takes; 0: any. Other sizes give nothing.
  std::string_view words;
};

constexpr std::string_view kVersionWords =
    "letters and digits only; of these the digits in front, otherwise those at the end";

constexpr Rule kRules[] = {
    {"text", text, 0, "the text up to the first zero byte"},
    {"decimal", decimal, 0, "the byte as a decimal number"},
    {"hex bytes", hexBytes, 0, "two hexadecimal digits a byte"},
    {"hex digits", hexDigits, 0, "two hexadecimal digits a byte; nothing where all are zero"},
    {"date", dateOf, 0, "a date: MM/DD/YY, MM/DD/YYYY, MM-DD-YYYY or YYYY-MM-DD"},
    {"level", level, 0, "letters, digits and .()[] only"},
    {"letters and digits", allLettersAndDigits, 0, "letters and digits only"},
    {"version part", versionPart, 0, kVersionWords},
    {"build part", buildPart, 0,
     "letters and digits only; of these what is left without the digits in front, otherwise "
     "without those at the end"},
    {"numeric version part", numericVersionPart, 0,
     "letters and digits only, digits first: of these the digits in front, otherwise those at the "
     "end; a blank where a letter is among them"},
    {"shift 16", shifted, 0, "the number, 16 bits higher"},
    {"low nibble", lowNibble, 1, "the number of the lower four bits"},
    {"16-bit number", bitsOf<16>, 2, "a number of 16 bits, the lowest byte first"},
    {"20-bit number", bitsOf<20>, 3, "a number of 20 bits, the lowest byte first"},
    {"BCD version", bcdVersion, 2,
     "seven bits of the first byte in decimal, a point, the two digits of the second"},
    {"IPMI version", ipmiVersion, 1, "the lower digit, a point, the higher digit"},
    {"GUID", guid, 16, "hexadecimal digits from the last byte to the first, in groups"},
    {"minutes since 1996", minutesSince1996, 3, "minutes since 1996, the lowest byte first"},
    {"typed text", typedText, 0,
     "a text behind a byte that gives its encoding and length, without blanks around it"},
    {"JEP106 maker", notWorkedOut, 0, "the maker with that JEDEC JEP106 code"},
    {"trimmed", trimmed, 0, "the text without the blanks at its end"},
    {"month/day/year", monthDayYear, 0, "a date: MM/DD/YY or MM/DD/YYYY"},
    {"major.minor", majorMinor, 2, "the two bytes in decimal with a point between them"},
    {"number", number, 0, "the number without bit 31, the lowest byte first"},
    {"not zero", isNotZero, 2, "whether the number is not 0"},
    {"bit 3", isBit3Set, 1, "whether bit 3 is set"},
    {"UUID", uuid, 16,
     "hexadecimal digits in groups, the first three with their lowest byte first"},
    {"ROM size", romSize, 1, "so many blocks of 64 KB and one more, in bytes"},
    {"extended ROM size", extendedRomSize, 2, "so many MB or GB, as bits 14 and 15 say, in bytes"},
    {"memory size", memorySize, 2, "so many MB, or KB where bit 15 is set, in bytes"},
    {"extended memory size", extendedMemorySize, 4, "so many MB, in bytes"},
    {"chassis type", notWorkedOut, 1, "the standard's name of that chassis type (DSP0134, 7.4.1)"},
    {"form factor", notWorkedOut, 1, "the standard's name of that form factor (DSP0134, 7.18.1)"},
    {"memory type", notWorkedOut, 1, "the standard's name of that memory type (DSP0134, 7.18.2)"},
    {"JEP106 text", makerText, 0,
     "the maker with the JEDEC JEP106 code that the text is, otherwise the text"},
    {"JEP106 module maker", notWorkedOut, 2,
     "the maker by the two bytes of the module's JEDEC JEP106 code"},
};

const Rule* ruleNamed(std::string_view name) {
  const auto* const found = std::ranges::find(kRules, name, &Rule::name);
  return found == std::end(kRules) ? nullptr : found;
}

std::string_view afterFirst(std::string_view text, std::string_view mark) {
  const std::size_t at = text.find(mark);
  return at == std::string_view::npos ? std::string_view() : text.substr(at + mark.size());
}

Value beforeFirst(std::string_view text, std::string_view mark) {
  const std::size_t at = text.find(mark);
  return at == std::string_view::npos ? "" : std::string(text.substr(0, at));
}

// The two marks of a rule "between X and Y".
std::pair<std::string_view, std::string_view> marksOf(std::string_view rule) {
  rule.remove_prefix(kBetween.size());
  return {rule.substr(0, rule.find(kAnd)), afterFirst(rule, kAnd)};
}

Value betweenMarks(std::string_view rule, ByteView bytes) {
  const auto [start, end] = marksOf(rule);
  const std::string whole = textOf(bytes);
  return beforeFirst(afterFirst(whole, start), end);
}

Value applied(const Rule& rule, ByteView bytes) {
  if (rule.size != 0 && rule.size != bytes.size()) return "";
  return rule.apply(bytes);
}

std::string quotedMark(std::string_view mark) { return '"' + std::string(mark) + '"'; }

std::string_view withoutOrBlank(std::string_view rule) {
  if (rule.ends_with(kOrBlank)) rule.remove_suffix(kOrBlank.size());
  return rule;
}

Value appliedPlainRule(std::string_view rule, ByteView bytes) {
  if (rule.starts_with(kBefore)) return beforeFirst(textOf(bytes), rule.substr(kBefore.size()));
  if (rule.starts_with(kBetween)) return betweenMarks(rule, bytes);
  const Rule* const known = ruleNamed(rule);
  return known == nullptr ? std::nullopt : applied(*known, bytes);
}

std::string plainRuleInWords(std::string_view rule) {
  if (rule.starts_with(kBefore)) {
    return "what stands before the first " + quotedMark(rule.substr(kBefore.size()));
  }
  if (rule.starts_with(kBetween)) {
    const auto [start, end] = marksOf(rule);
    return "what stands between the first " + quotedMark(start) + " and the first " +
           quotedMark(end) + " behind it";
  }
  const Rule* const known = ruleNamed(rule);
  return std::string(known == nullptr ? rule : known->words);
}

}  // namespace

std::string textOf(ByteView bytes) { return rawText({bytes.begin(), std::ranges::find(bytes, 0)}); }

std::optional<std::string> appliedRule(std::string_view rule, ByteView bytes) {
  Value value = appliedPlainRule(withoutOrBlank(rule), bytes);
  return rule.ends_with(kOrBlank) && value && value->empty() ? " " : value;
}

std::string ruleInWords(std::string_view rule) {
  const std::string words = plainRuleInWords(withoutOrBlank(rule));
  return rule.ends_with(kOrBlank) ? words + "; a blank for nothing" : words;
}

}  // namespace velhost
