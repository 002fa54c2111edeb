// SPDX-License-Identifier: Apache-2.0
//
// A structure of any bytes, in which each 'Z' becomes the mark of a credential. Its parts give the
// same bytes again, and no credential is left.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "host/machine/smbiosparts.h"
#include "host/recording/credentials.h"

namespace {

constexpr std::string_view kMark = "io.systemd.credential";

velhost::Bytes structureOf(const std::uint8_t* data, std::size_t size) {
  velhost::Bytes bytes;
  for (const std::uint8_t byte : std::basic_string_view(data, size)) {
    if (byte == 'Z') {
      bytes.insert(bytes.end(), kMark.begin(), kMark.end());
    } else {
      bytes.push_back(byte);
    }
  }
  return bytes;
}

bool hasMark(const velhost::Bytes& bytes) {
  return std::search(bytes.begin(), bytes.end(), kMark.begin(), kMark.end()) != bytes.end();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  NKRXVEL20::host::SmbiosTable table;
  table.structures = {{structureOf(data, size), 0}};
  velhost::Bytes& bytes = table.structures.front().bytes;
  const auto parts = velhost::takeApart(bytes);
  if (parts && velhost::wholeStructure(*parts) != bytes) std::abort();

  const bool marked = hasMark(bytes);
  if (marked != (velhost::blankCredentials(table) != 0) || hasMark(bytes)) std::abort();
  return 0;
}
