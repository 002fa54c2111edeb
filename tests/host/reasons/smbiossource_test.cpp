// SPDX-License-Identifier: Apache-2.0
#include "host/reasons/smbiossource.h"

#include <gtest/gtest.h>

#include "tests/host/reasons/verdicttext.h"

namespace velhost {
namespace {

using NKRXVEL20::host::SmbiosStructure;
using NKRXVEL20::host::SmbiosTable;

// A structure of OEM strings (DSP0134, 7.12): header, count, one string.
SmbiosStructure oem(const std::string& text, int status = 0) {
  Bytes bytes{11, 5, 0, 0, 1};
  bytes.insert(bytes.end(), text.begin(), text.end());
  bytes.insert(bytes.end(), 2, 0);
  return {bytes, status};
}

const char kBios[] = "SMBIOS.DMTF|type 0|offset 5|string|version part";
const char kDiagnostics[] = "SMBIOS.DMTF|type 11|string with KRX Diagnostics|version part";
const char kPreboot[] = "SMBIOS.DMTF|type 11|string with KRX Preboot|version part";
const char kOther[] = "SMBIOS.DMTF|type 11|string with A|text";
const char kFourth[] = "SMBIOS.DMTF|type 11|string with \x1b[1m|text";

Verdict verdictOf(const std::vector<const char*>& lines, const Observations& seen) {
  std::vector<Origin> origins;
  for (const char* const line : lines) origins.push_back(originOf(line));
  return smbiosVerdict(origins, seen);
}

TEST(SmbiosSource, StructuresAndStrings) {
  const SmbiosStructure bios{{0, 4, 0, 0, 0, 0}, 0};
  const struct {
    const char* what;
    std::vector<const char*> lines;
    SmbiosTable table;
    const char* verdict;
  } cases[] = {
      {"no structure", {kBios}, {{}, 0, 5}, "none: SMBIOS has no structure of type 0"},
      {"read", {kBios}, {{bios}, 0, 5}, "looked: SMBIOS type 0 was read, and names none"},
      {"cannot be opened",
       {kBios},
       {{bios}, 7, 5},
       "unreadable: the SMBIOS tables cannot be opened (status 7)"},
      {"status of a structure",
       {kBios},
       {{{bios.bytes, 9}}, 0, 5},
       "unreadable: reading SMBIOS type 0 ended with status 9"},
      {"status at the end",
       {kBios},
       {{bios}, 0, 3},
       "unreadable: reading SMBIOS type 0 ended with status 3"},
      {"hidden by the status of no more",
       {kBios},
       {{{bios.bytes, 5}, {bios.bytes, 9}}, 0, 5},
       "none: SMBIOS has no structure of type 0"},
      {"status of another type",
       {kBios},
       {{oem("A", 9)}, 0, 5},
       "none: SMBIOS has no structure of type 0"},
      {"string",
       {kDiagnostics},
       {{oem("A"), oem("x KRX Diagnostics y")}, 0, 5},
       "looked: a string of SMBIOS type 11 was read, and names none"},
      {"no such string",
       {kDiagnostics, kPreboot, kDiagnostics},
       {{oem("KRX")}, 0, 5},
       R"(none: no string of SMBIOS type 11 has "KRX Diagnostics" or "KRX Preboot")"},
      {"more strings than are named",
       {kDiagnostics, kPreboot, kOther, kFourth},
       {{oem("x")}, 0, 5},
       R"(none: no string of SMBIOS type 11 has "KRX Diagnostics" or 3 others)"},
      {"a text that a terminal obeys",
       {kFourth},
       {{oem("x")}, 0, 5},
       R"(none: no string of SMBIOS type 11 has "\x1b[1m")"},
      {"behind what collectors read",
       {kDiagnostics},
       {{oem(std::string(1010, 'x') + "KRX Diagnostics")}, 0, 5},
       R"(none: no string of SMBIOS type 11 has "KRX Diagnostics")"},
      {"cut short",
       {kDiagnostics},
       {{{{11}, 0}, {{11, 200, 0, 0}, 0}}, 0, 5},
       R"(none: no string of SMBIOS type 11 has "KRX Diagnostics")"},
      {"two types, one of them absent",
       {kDiagnostics, kBios},
       {{oem("KRX Diagnostics")}, 0, 5},
       "none: SMBIOS has no structure of type 0"},
  };
  for (const auto& c : cases) {
    Observations seen;
    seen.smbios = std::make_shared<const SmbiosTable>(c.table);
    EXPECT_EQ(c.verdict, told(verdictOf(c.lines, seen))) << c.what;
  }
}

TEST(SmbiosSource, TablesThatCannotBeHad) {
  Observations seen;
  EXPECT_EQ("unreadable: the SMBIOS tables cannot be opened (status 1)",
            told(verdictOf({kBios}, seen)));
  seen.refused.smbios = {"/sys/firmware/dmi/tables/DMI: Permission denied", true};
  EXPECT_EQ(
      "forbidden: cannot read /sys/firmware/dmi/tables/DMI: Permission denied; run velhost as root",
      told(verdictOf({kBios}, seen)));
  seen.refused.smbios = {"/sys/firmware/dmi/tables/DMI: No such file or directory", false};
  EXPECT_EQ(
      "unreadable: cannot read /sys/firmware/dmi/tables/DMI: No such file or directory; this "
      "system "
      "shows none",
      told(verdictOf({kBios}, seen)));
}

}  // namespace
}  // namespace velhost
