// SPDX-License-Identifier: Apache-2.0
#include "vel/osspecific.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "asciitext.h"
#include "machinetype.h"
#include "smbiosstring.h"

namespace NKRXVEL20 {
namespace {

constexpr std::size_t kBidStringSize = 100;  // with the final zero byte

std::size_t leadingDigits(std::string_view text) {
  const auto end = std::find_if_not(text.begin(), text.end(), isDigit);
  return static_cast<std::size_t>(end - text.begin());
}

std::size_t trailingDigits(std::string_view text) {
  const auto end = std::find_if_not(text.rbegin(), text.rend(), isDigit);
  return static_cast<std::size_t>(end - text.rbegin());
}

// The letter of 12a belongs to the version; the word behind 1162debian1 does not.
std::size_t leadingVersionSize(std::string_view text) {
  const std::size_t digits = leadingDigits(text);
  const std::string_view rest = text.substr(digits);
  const bool hasLetter =
      !rest.empty() && isLowerCase(rest[0]) && (rest.size() == 1 || !isLowerCase(rest[1]));
  return digits + (hasLetter ? 1 : 0);
}

std::size_t trailingVersionSize(std::string_view text) {
  const std::size_t letter = !text.empty() && isLowerCase(text.back()) ? 1 : 0;
  const std::size_t digits = trailingDigits(text.substr(0, text.size() - letter));
  return digits == 0 ? 0 : digits + letter;
}

}  // namespace

std::string TOSSpecific::GetMachineTypeFromID() {
  const std::optional<std::string>& set = machineTypeOverride();
  return set ? *set : machineTypeFromSmbios();
}

void TOSSpecific::getBIDString(char* source, char* destination, int length, int number) {
  const std::string_view window(source, static_cast<std::size_t>(std::max(length, 0)));
  const std::string_view text = smbiosString(window, number).substr(0, kBidStringSize - 1);
  *std::copy(text.begin(), text.end(), destination) = '\0';
}

void TOSSpecific::removeNonAlpaNumeric(std::string& text) {
  std::erase_if(text, [](char c) { return !isAlphaNumeric(c); });
}

void TOSSpecific::breakApartVersion(std::string& version, std::string& build) {
  const std::string text = version;
  if (leadingDigits(text) > 0) {
    const std::size_t size = leadingVersionSize(text);
    version = text.substr(0, size);
    build = text.substr(size);
  } else {
    const std::size_t buildSize = text.size() - trailingVersionSize(text);
    version = text.substr(buildSize);
    build = text.substr(0, buildSize);
  }
}

}  // namespace NKRXVEL20
