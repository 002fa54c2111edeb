// SPDX-License-Identifier: Apache-2.0
//
// A structure of any bytes, in which each 'Z' becomes the mark of a credential. It has parts when its bytes
// are those of a structure (DSP0134, 6.1.2 and 6.1.3), which are read here by hand, and they are what stands
// there. No credential is left, and what holds none stays as it is.
#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "host/machine/smbiosparts.h"
#include "host/recording/credentials.h"
#include "tests/fuzz/require.h"

namespace {

using fuzz::require;
using velhost::Bytes;

constexpr std::string_view kMark = "io.systemd.credential";

Bytes structureOf(std::string_view input) {
  Bytes bytes;
  for (const char byte : input) {
    if (byte == 'Z') {
      bytes.insert(bytes.end(), kMark.begin(), kMark.end());
    } else {
      bytes.push_back(static_cast<unsigned char>(byte));
    }
  }
  return bytes;
}

bool hasMark(const Bytes& bytes) {
  return std::search(bytes.begin(), bytes.end(), kMark.begin(), kMark.end()) != bytes.end();
}

using Strings = std::vector<std::string>;

// The set behind the formatted area: strings of at least a character, each ended by a zero, and a zero
// behind the last; without strings two zeros. False where it is not so.
bool readSet(std::string_view rest, Strings& strings) {
  if (rest == std::string_view("\0\0", 2)) return true;
  while (rest.size() > 1 && rest.front() != 0) {
    const std::size_t end = rest.find('\0');
    if (end == std::string_view::npos) return false;
    strings.emplace_back(rest.substr(0, end));
    rest.remove_prefix(end + 1);
  }
  return !strings.empty() && rest == std::string_view("\0", 1);
}

// What the parts are by hand. False: it has none.
bool readParts(const Bytes& bytes, velhost::SmbiosParts& parts) {
  if (bytes.size() < 4 || bytes[1] < 4 || bytes[1] > bytes.size()) return false;
  parts.type = bytes[0];
  parts.handle = static_cast<std::uint16_t>(bytes[2] + 256 * bytes[3]);
  parts.data.assign(bytes.begin() + 4, bytes.begin() + bytes[1]);
  const std::string rest(bytes.begin() + bytes[1], bytes.end());
  return readSet(rest, parts.strings);
}

void checkParts(const Bytes& bytes) {
  velhost::SmbiosParts expected{};
  const bool isWhole = readParts(bytes, expected);
  const auto parts = velhost::takeApart(bytes);
  require(parts.has_value() == isWhole, "a structure that is one has parts, and no other");
  if (!parts) return;
  require(parts->type == expected.type && parts->handle == expected.handle, "its header is read");
  require(parts->data == expected.data, "its formatted area is read");
  require(parts->strings == expected.strings, "its strings are read");
  require(velhost::wholeStructure(*parts) == bytes, "its parts give it again");
}

// Each string that holds a mark is a blank then; everything else is as it was. A mark that stands, or begins,
// in the formatted area takes more with it.
void checkStrings(const Bytes& before, const Bytes& after) {
  velhost::SmbiosParts expected{};
  if (!readParts(before, expected)) return;
  const std::size_t reach = std::min(before.size(), before[1] + kMark.size() - 1);
  if (hasMark({before.begin(), before.begin() + static_cast<std::ptrdiff_t>(reach)})) return;
  for (std::string& text : expected.strings) {
    if (text.find(kMark) != std::string::npos) text = " ";
  }
  require(after == velhost::wholeStructure(expected), "what holds no credential stays");
}

void checkCredentials(const Bytes& before) {
  NKRXVEL20::host::SmbiosTable table;
  table.structures = {{before, 0}};
  const Bytes& bytes = table.structures.front().bytes;
  const std::size_t count = velhost::blankCredentials(table);
  require(hasMark(before) == (count != 0), "what is counted is there");
  require(!hasMark(bytes), "no credential is left");
  require(count != 0 || bytes == before, "without credentials nothing changes");
  checkStrings(before, bytes);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Bytes bytes = structureOf(fuzz::textOf(data, size));
  checkParts(bytes);
  checkCredentials(bytes);
  return 0;
}
