// SPDX-License-Identifier: Apache-2.0
#include "tests/properties/randompieces.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <iterator>

namespace velhost::properties {
namespace {

namespace gen = rc::gen;

constexpr char kUpperDigits[] = "0123456789ABCDEF";
constexpr char kLowerDigits[] = "0123456789abcdef";
constexpr std::size_t kUuidSize = 16;
constexpr std::size_t kNumberSize = 4;

// Without the first of each class of characters: 0, A, G, a, g.
constexpr char kTelling[] = "123456789BCDEFHIJKLMNOPQRSTUVWXYZ";
constexpr char kTellingSmall[] = "123456789bcdefhijklmnopqrstuvwxyz-";
constexpr char kTellingDigits[] = "123456789";

std::string charactersOf(const std::string& alphabet, int least, int most) {
  const int length = least + numberUpTo(most - least);
  return *gen::container<std::string>(static_cast<std::size_t>(length), gen::elementOf(alphabet));
}

std::string someSerial() {
  switch (numberUpTo(9)) {
    case 9:
      return charactersOf(kTelling, 1, 3);  // too short to be looked for
    case 8:
      return charactersOf(kTellingSmall, 5, 9);
    case 7:
      return charactersOf(kTellingDigits, 4, 10);
    case 6:
      return charactersOf(kTelling, 4, 6) + " " + charactersOf(kTelling, 2, 4);
    default:
      return charactersOf(kTelling, 4, 11);
  }
}

// No byte is 00 or FF, and the first is no character.
Bytes someNumber(std::size_t size) {
  Bytes number =
      *gen::container<Bytes>(size, gen::map(gen::inRange(0, 9 * 9), [](int n) {
                               return static_cast<unsigned char>((n / 9 + 1) * 16 + n % 9 + 1);
                             }));
  number.front() |= 0x80U;
  return number;
}

std::string hexWith(const Bytes& bytes, const char* digits, const char* between) {
  std::string text;
  for (const unsigned char byte : bytes) {
    if (!text.empty()) text += between;
    text += {digits[byte >> 4U], digits[byte & 0x0FU]};
  }
  return text;
}

std::string withDashes(std::string digits) {
  for (const std::size_t at : {8U, 13U, 18U, 23U}) digits.insert(at, 1, '-');
  return digits;
}

std::string lowerCase(std::string text) {
  std::ranges::transform(text, text.begin(),
                         [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return text;
}

std::string identityText(const Identities& identities) {
  switch (numberUpTo(5)) {
    case 5:
      return hexWith(identities.uuid, kLowerDigits, "");
    case 4:
      return withDashes(hexWith(identities.uuid, kUpperDigits, ""));
    case 3:
      return hexWith(identities.number, kUpperDigits, "");
    case 2:
      return lowerCase(oneSerial(identities));
    default:
      return oneSerial(identities);
  }
}

// In SMBIOS's order of a UUID's bytes.
Bytes mixedOrder(Bytes uuid) {
  std::reverse(uuid.begin(), uuid.begin() + 4);
  std::reverse(uuid.begin() + 4, uuid.begin() + 6);
  std::reverse(uuid.begin() + 6, uuid.begin() + 8);
  return uuid;
}

Bytes wide(const std::string& text) {
  Bytes bytes;
  for (const char c : text) bytes.insert(bytes.end(), {static_cast<unsigned char>(c), 0});
  return bytes;
}

Bytes identityBytes(const Identities& identities) {
  switch (numberUpTo(4)) {
    case 4:
      return mixedOrder(identities.uuid);
    case 3:
      return identities.uuid;
    case 2:
      return identities.number;
    case 1:
      return wide(identityText(identities));
    default:
      return bytesOf(identityText(identities));
  }
}

std::string someDate() {
  return oneOf<std::string>({"03/15/07", "11/30/51", "03/15/2007", "03-15-2007", "2007-03-15",
                             "13/45/07", "02/30/2011", "2007/03/15", "3/15/07", "99/99/9999",
                             "00/00/0000", "12/31/50", "AB/CD/EF", "          "});
}

std::string someVersion() {
  return oneOf<std::string>({"1.08", "1.08 [ABC123]", "QX42A17a", "17b", "KRX", "BUILD42aa",
                             "2.10.0", "(X) 007", "-", "5010-AC1", "Server 6120AC1", "[4210K9X]"});
}

// What collectors look for in OEM strings.
std::string someOemName() {
  return oneOf<std::string>(
      {"KRX Diagnostics", "KRX Diagnostics 1.08 [BLET42A]", "KRX Preboot Diagnostics 2", "$DS 17 X",
       "KRX Ambrel Management Processor -[BRBT10A]-", "KRX Ambrels Management Processor",
       "KRX Quellon Link Adapter II -[QLET42b]-", "KRX Quellon Link Adapter",
       "KRX Torvik Management Processor 1.2", "KRX Torviks Management Processor -[TVET01A]-",
       "KRX cKVM", "ZPXN42BQD"});
}

std::string oddText() {
  return oneOf<std::string>({" ", "   ", "  x ", "\x01\x7F", "R\u00FCckwand", "\u4F60\u597D",
                             "\U0001F600", "\u202Eabc", "Not Specified", "80CE000080CE", "0xCE80",
                             "7F7F9E", "To Be Filled By O.E.M.", "\"quoted\\\"", "a\tb"});
}

std::string plainText() {
  return *gen::container<std::string>(1 + static_cast<std::size_t>(numberUpTo(11)),
                                      gen::inRange(' ', '\x7F'));
}

}  // namespace

int numberUpTo(int most) { return *gen::inRange(0, most + 1); }

bool oneIn(int count) { return numberUpTo(count - 1) == count - 1; }

bool mostly(int count) { return numberUpTo(count - 1) > 0; }

Identities someIdentities() {
  const auto serial = gen::exec(someSerial);
  return {*gen::container<std::vector<std::string>>(4, serial), someNumber(kUuidSize),
          someNumber(kNumberSize)};
}

const std::string& oneSerial(const Identities& identities) {
  return identities.serials.at(
      static_cast<std::size_t>(numberUpTo(static_cast<int>(identities.serials.size()) - 1)));
}

Bytes serialField(const Identities& identities, std::size_t size) {
  Bytes field = bytesOf(oneSerial(identities));
  field.resize(size);
  return field;
}

Bytes someBytes(std::size_t size) {
  constexpr int kAll = 256;
  return *gen::container<Bytes>(size, gen::map(gen::inRange(0, 3 * kAll), [](int n) {
                                  return static_cast<unsigned char>(n < kAll ? n : ' ' + n % 95);
                                }));
}

std::string someText(const Identities& identities) {
  switch (numberUpTo(9)) {
    case 9:
      return std::string(static_cast<std::size_t>(60 + numberUpTo(80)), 'w') + plainText();
    case 8:
      return oddText();
    case 7:
      return plainText() + identityText(identities) + oneOf<std::string>({"", " ", "-1", "X"});
    case 6:
      return someOemName();
    case 5:
      return someDate();
    case 4:
      return someVersion();
    default:
      return plainText();
  }
}

Bytes bytesAround(const Identities& identities) {
  Bytes bytes = someBytes(static_cast<std::size_t>(numberUpTo(9)));
  std::ranges::copy(identityBytes(identities), std::back_inserter(bytes));
  std::ranges::copy(someBytes(static_cast<std::size_t>(numberUpTo(9))), std::back_inserter(bytes));
  return bytes;
}

Bytes bytesOf(const std::string& text) { return {text.begin(), text.end()}; }

std::string hexOf(const Bytes& bytes) { return hexWith(bytes, kUpperDigits, " "); }

Json bytesField(const Bytes& bytes) {
  switch (numberUpTo(9)) {
    case 9:
      return hexWith(bytes, kLowerDigits, "");
    case 8: {
      const auto middle = static_cast<std::ptrdiff_t>(bytes.size() / 2);
      return Json::array({hexOf({bytes.begin(), bytes.begin() + middle}),
                          hexOf({bytes.begin() + middle, bytes.end()})});
    }
    case 7: {
      const auto end = std::find_if(bytes.rbegin(), bytes.rend(), [](auto b) { return b != 0; });
      return Json::array({hexOf({bytes.begin(), end.base()}),
                          Json{{"zeros", std::distance(end.base(), bytes.end())}}});
    }
    default:
      return hexOf(bytes);
  }
}

}  // namespace velhost::properties
