// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <string>

#include "velhost/smbios.h"

namespace NKRXVEL20::host {
namespace {

using Dump = std::vector<unsigned char>;

// clang-format off
const std::vector<Dump> kFour = {
    {1, 4, 0x01, 0x00, 'X', 0, 0},
    {11, 5, 0x02, 0x00, 0x00, 0, 0},
    {127, 4, 0x03, 0x00, 0, 0},
    {2, 4, 0x04, 0x00, 0, 0},
};
const std::vector<Dump> kTwo = {kFour[0], kFour[1]};
const std::vector<Dump> kThree = {kFour[0], kFour[1], kFour[2]};

// The entry point at 0, the table of 26 bytes at 0x20.
Dump dumpOf(Dump entryPoint) {
  entryPoint.resize(0x20, 0);
  for (const Dump& structure : kFour) {
    entryPoint.insert(entryPoint.end(), structure.begin(), structure.end());
  }
  return entryPoint;
}

// A checksum byte brings its record's sum to 0 modulo 256.
const Dump k32 = dumpOf({
    '_', 'S', 'M', '_',        // 0x00  sum 0x15E
    0x39,                      // 0x04  0x15E + 0x1F + 0x02 + 0x08 + 0x40 = 0x1C7
    0x1F,                      // 0x05  length
    0x02, 0x08,                // 0x06  version
    0x40, 0x00,                // 0x08  largest structure
    0x00, 0, 0, 0, 0, 0,       // 0x0A  revision, formatted area
    '_', 'D', 'M', 'I', '_',   // 0x10  sum 0x198
    0x02,                      // 0x15  0x198 + 0x1A + 0x20 + 0x03 + 0x29 = 0x1FE
    0x1A, 0x00,                // 0x16  table length
    0x20, 0x00, 0x00, 0x00,    // 0x18  table address
    0x03, 0x00,                // 0x1C  structure count
    0x29,                      // 0x1E  BCD revision
});
const Dump kLegacy = dumpOf({
    '_', 'D', 'M', 'I', '_',   // 0x00
    0x02,                      // 0x05  as above
    0x1A, 0x00,                // 0x06  table length
    0x20, 0x00, 0x00, 0x00,    // 0x08  table address
    0x03, 0x00,                // 0x0C  structure count
    0x29,                      // 0x0E  BCD revision
});
const Dump k64 = dumpOf({
    '_', 'S', 'M', '3', '_',   // 0x00  sum 0x191
    0xF3,                      // 0x05  0x191 + 0x18 + 0x03 + 0x01 + 0x40 + 0x20 = 0x20D
    0x18,                      // 0x06  length
    0x03, 0x00, 0x00,          // 0x07  version
    0x01, 0x00,                // 0x0A  revision, reserved
    0x40, 0x00, 0x00, 0x00,    // 0x0C  maximum size, more than there is
    0x20, 0, 0, 0, 0, 0, 0, 0, // 0x10  table address
});
// clang-format on

struct Edit {
  std::size_t offset;
  unsigned char value;
};

Dump edited(Dump dump, const std::vector<Edit>& edits) {
  for (const Edit& edit : edits) dump.at(edit.offset) = edit.value;
  return dump;
}

Dump cut(const Dump& dump, std::ptrdiff_t size) { return {dump.begin(), dump.begin() + size}; }

const struct {
  const char* what;
  Dump dump;
  std::vector<Dump> expected;
} kGood[] = {
    {"32-bit: its count ends it", k32, kThree},
    {"32-bit: count of two", edited(k32, {{0x1C, 2}, {0x1E, 0x2A}}), kTwo},
    {"32-bit: count of zero is none", edited(k32, {{0x1C, 0}, {0x1E, 0x2C}}), kFour},
    {"32-bit: count beyond the table", edited(k32, {{0x1C, 9}, {0x1E, 0x23}}), kFour},
    {"32-bit: table of no bytes", edited(k32, {{0x16, 0}, {0x1E, 0x43}}), {}},
    {"32-bit: the length that version 2.1 had", edited(k32, {{0x05, 0x1E}, {0x04, 0x63}}), kThree},
    {"legacy: its count ends it", kLegacy, kThree},
    {"64-bit: type 127 ends it, and a size beyond the file is no harm", k64, kThree},
    {"64-bit: the maximum size cuts it", edited(k64, {{0x0C, 14}, {0x05, 0x25}}), kTwo},
    {"64-bit: table begins at the end of the file", edited(k64, {{0x10, 0x3A}, {0x05, 0xD9}}), {}},
};

TEST(ParseDmiDump, ReadsEachKindOfEntryPoint) {
  for (const auto& c : kGood) {
    const SmbiosTable table = parseDmiDump(c.dump);
    std::vector<Dump> actual;
    for (const SmbiosStructure& structure : table.structures) actual.push_back(structure.bytes);
    EXPECT_EQ(actual, c.expected) << c.what;
    EXPECT_EQ(table.loadStatus, 0) << c.what;
    EXPECT_EQ(table.endStatus, 5) << c.what;
  }
}

const struct {
  const char* what;
  Dump dump;
  std::string error;
} kBad[] = {
    {"empty", {}, "it does not begin with an SMBIOS entry point (_SM3_, _SM_ or _DMI_)"},
    {"no anchor", edited(k32, {{0x03, 'X'}}),
     "it does not begin with an SMBIOS entry point (_SM3_, _SM_ or _DMI_)"},
    {"anchor cut short", cut(k32, 3),
     "it does not begin with an SMBIOS entry point (_SM3_, _SM_ or _DMI_)"},
    {"32-bit: cut before its length", cut(k32, 5), "it ends inside the 32-bit entry point"},
    {"32-bit: cut one byte short", cut(k32, 0x1E), "it ends inside the 32-bit entry point"},
    {"32-bit: length too small", edited(k32, {{0x05, 0x1D}}),
     "the length of the 32-bit entry point is wrong: 29"},
    {"32-bit: length too large", edited(k32, {{0x05, 0x21}}),
     "the length of the 32-bit entry point is wrong: 33"},
    {"32-bit: checksum", edited(k32, {{0x04, 0x3A}}),
     "the checksum of the 32-bit entry point is wrong"},
    {"32-bit: second anchor", edited(k32, {{0x10, '`'}, {0x04, 0x38}}),
     "the 32-bit entry point has no _DMI_ anchor in its second half"},
    {"32-bit: second checksum", edited(k32, {{0x15, 0x03}, {0x04, 0x38}}),
     "the checksum of the second half of the 32-bit entry point is wrong"},
    {"32-bit: address behind the file", edited(k32, {{0x1B, 0x01}, {0x1E, 0x28}}),
     "its table begins behind its end, at 16777248"},
    {"32-bit: table one byte past the file", edited(k32, {{0x16, 0x1B}, {0x1E, 0x28}}),
     "its table of 27 bytes runs past its end"},
    {"legacy: cut one byte short", cut(kLegacy, 14), "it ends inside the legacy entry point"},
    {"legacy: checksum", edited(kLegacy, {{0x05, 0}}),
     "the checksum of the legacy entry point is wrong"},
    {"legacy: file without its last byte", cut(kLegacy, 0x39),
     "its table of 26 bytes runs past its end"},
    {"64-bit: cut before its length", cut(k64, 6), "it ends inside the 64-bit entry point"},
    {"64-bit: cut one byte short", cut(k64, 0x17), "it ends inside the 64-bit entry point"},
    {"64-bit: length too small", edited(k64, {{0x06, 0x17}}),
     "the length of the 64-bit entry point is wrong: 23"},
    {"64-bit: length too large", edited(k64, {{0x06, 0xFF}}),
     "the length of the 64-bit entry point is wrong: 255"},
    {"64-bit: checksum", edited(k64, {{0x05, 0xF2}}),
     "the checksum of the 64-bit entry point is wrong"},
    {"64-bit: address one behind the file", edited(k64, {{0x10, 0x3B}, {0x05, 0xD8}}),
     "its table begins behind its end, at 59"},
    {"64-bit: address with its highest bit", edited(k64, {{0x17, 0x80}, {0x05, 0x73}}),
     "its table begins behind its end, at 9223372036854775840"},
};

TEST(ParseDmiDump, RefusesMoreStructuresThanAllowed) {
  for (const Dump& dump : {k32, kLegacy, k64}) {
    EXPECT_EQ(3U, parseDmiDump(dump, 3).structures.size());
    try {
      parseDmiDump(dump, 2);
      ADD_FAILURE() << "accepted";
    } catch (const DmiDumpError& error) {
      EXPECT_STREQ("its table has more than 2 structures", error.what());
    }
  }
}

TEST(ParseDmiDump, SaysWhatIsWrong) {
  for (const auto& c : kBad) {
    std::string error = "no error";
    try {
      parseDmiDump(c.dump);
    } catch (const DmiDumpError& caught) {
      error = caught.what();
    }
    EXPECT_EQ(error, c.error) << c.what;
  }
}

}  // namespace
}  // namespace NKRXVEL20::host
