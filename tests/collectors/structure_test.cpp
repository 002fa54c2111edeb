// SPDX-License-Identifier: Apache-2.0
#include "collectors/smbiosinventory/structure.h"

#include <gtest/gtest.h>

#include "structurebytes.h"

namespace smbiosinventory {
namespace {

TEST(Structure, NumbersHaveTheirLowestByteFirstAndEndWithTheArea) {
  const OwnedBytes bytes = structureBytes(17, {0x11, 0x22, 0x33, 0x44, 0x55});
  const Structure structure(bytes);
  const struct {
    const char* what;
    std::size_t offset;
    std::size_t size;
    std::optional<std::uint64_t> number;
  } kCases[] = {
      {"a byte", 4, 1, 0x11},
      {"two bytes", 4, 2, 0x2211},
      {"four bytes, up to the last one", 5, 4, 0x55443322},
      {"one byte too many", 6, 4, std::nullopt},
      {"the byte behind the area", 9, 1, std::nullopt},
      {"far behind it", 255, 1, std::nullopt},
      {"the header", 0, 2, 0x0911},
  };
  for (const auto& c : kCases) EXPECT_EQ(c.number, structure.number(c.offset, c.size)) << c.what;
}

TEST(Structure, StringsAreFoundByTheirNumber) {
  const OwnedBytes bytes = structureBytes(0, {1, 2, 3, 0, 255}, {"first", " second "});
  const Structure structure(bytes);
  const struct {
    const char* what;
    std::size_t offset;
    std::optional<std::string_view> text;
  } kCases[] = {
      {"the first", 4, "first"},
      {"the last, with its blanks", 5, " second "},
      {"behind the last", 6, std::nullopt},
      {"number 0", 7, std::nullopt},
      {"number 255", 8, std::nullopt},
      {"no such field", 9, std::nullopt},
  };
  for (const auto& c : kCases) EXPECT_EQ(c.text, structure.string(c.offset)) << c.what;
}

TEST(Structure, HostileLengthsLeaveWhatThereIs) {
  const struct {
    const char* what;
    OwnedBytes bytes;
    std::optional<std::uint64_t> number;   // the byte at offset 4
    std::optional<std::string_view> text;  // the string of that number
  } kCases[] = {
      {"nothing at all", {}, std::nullopt, std::nullopt},
      {"three bytes", {0, 5, 0}, std::nullopt, std::nullopt},
      {"a Length without room for the header",
       {0, 3, 0, 0, 1, 'a', 0, 0},
       std::nullopt,
       std::nullopt},
      {"the header alone", {0, 4, 0, 0, 'a', 0, 0}, std::nullopt, std::nullopt},
      {"a Length past the end", {0, 255, 0, 0, 1}, 1, std::nullopt},
      {"no zero behind the string", {0, 5, 0, 0, 1, 'a', 'b'}, 1, "ab"},
      {"no second zero", {0, 5, 0, 0, 2, 'a', 0}, 2, std::nullopt},
      {"a second string behind the end of the set",
       {0, 5, 0, 0, 2, 'a', 0, 0, 'b', 0},
       2,
       std::nullopt},
      {"no string set", {0, 5, 0, 0, 1}, 1, std::nullopt},
  };
  for (const auto& c : kCases) {
    const Structure structure(c.bytes);
    EXPECT_EQ(c.number, structure.number(4, 1)) << c.what;
    EXPECT_EQ(c.text, structure.string(4)) << c.what;
  }
}

}  // namespace
}  // namespace smbiosinventory
