// SPDX-License-Identifier: Apache-2.0
#include "host/recording/hostinterface.h"

#include <gtest/gtest.h>

#include "host/text/hextext.h"

namespace velhost {
namespace {

// The offsets are those of DSP0134, 7.43, and DSP0270, counted by hand.
TEST(HostInterface, WhereItsIdsStand) {
  const std::string uuid = " 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F 10";
  const struct {
    const char* what;
    std::string bytes;
    std::optional<std::size_t> serialString;
    IdentifyingFields fields;
  } cases[] = {
      {"USB: a string in UTF-16",
       "2A 14 00 00 40 0D 02 B3 04 10 40 08 03 4B 00 58 00 37 00 00",
       std::nullopt,
       {{13, 6, Notation::kWideText}}},
      {"USB: a string in ASCII",
       "2A 12 00 00 40 0B 02 B3 04 10 40 06 03 4B 58 37 31 00",
       std::nullopt,
       {{13, 4, Notation::kText}}},
      {"USB: a string longer than the descriptor",
       "2A 10 00 00 40 09 02 B3 04 10 40 FF 03 4B 58 00",
       std::nullopt,
       {{13, 2, Notation::kText}}},
      {"USB: an empty string", "2A 0E 00 00 40 07 02 B3 04 10 40 02 03 00", std::nullopt, {}},
      {"USB: a length below its own",
       "2A 0E 00 00 40 08 02 B3 04 10 40 00 03 41 00",
       std::nullopt,
       {}},
      {"USB: no string", "2A 0C 00 00 40 05 02 B3 04 10 40 00", std::nullopt, {}},
      {"USB, version 2: a string of the set",
       "2A 14 00 00 40 0D 04 0D B3 04 10 40 03 0A 0B 0C 0D 0E 0F 00",
       3,
       {}},
      {"USB, version 2: cut off", "2A 0D 00 00 40 06 04 0D B3 04 10 40 00", std::nullopt, {}},
      {"PCI, version 2: nothing",
       "2A 14 00 00 40 0D 05 0D B3 04 10 40 03 0A 0B 0C 0D 0E 0F 00",
       std::nullopt,
       {}},
      {"Redfish over IP",
       "2A 1A 00 00 40 01 80 01 04 10" + uuid,
       std::nullopt,
       {{10, 16, Notation::kNumber}}},
      {"Redfish over IP behind another record",
       "2A 1E 00 00 40 00 02 02 02 AA BB 04 11" + uuid + " 01",
       std::nullopt,
       {{13, 16, Notation::kNumber}}},
      {"two Redfish records",
       "2A 2C 00 00 40 00 02 04 10" + uuid + " 04 10" + uuid,
       std::nullopt,
       {{9, 16, Notation::kNumber}, {27, 16, Notation::kNumber}}},
      {"more records than counted", "2A 1A 00 00 40 00 00 04 10" + uuid, std::nullopt, {}},
      {"a record cut off by its length",
       "2A 1A 00 00 40 00 01 04 08" + uuid,
       std::nullopt,
       {{9, 8, Notation::kNumber}}},
      {"a record cut off by the end",
       "2A 0D 00 00 40 00 01 04 10 01 02 03 04",
       std::nullopt,
       {{9, 4, Notation::kNumber}}},
      {"a record of no bytes", "2A 09 00 00 40 00 01 04 00", std::nullopt, {}},
      {"a record of no bytes before another",
       "2A 1B 00 00 40 00 02 04 00 04 10" + uuid,
       std::nullopt,
       {{11, 16, Notation::kNumber}}},
      {"a record's type alone", "2A 08 00 00 40 00 FF 04", std::nullopt, {}},
      {"data longer than the structure", "2A 08 00 00 40 FF 02 B3", std::nullopt, {}},
      {"another interface", "2A 1A 00 00 04 01 80 01 04 10" + uuid, std::nullopt, {}},
      {"header only", "2A 04 00 00", std::nullopt, {}},
      {"cut behind the type", "2A 05 00 00 40", std::nullopt, {}},
      {"cut behind the length", "2A 06 00 00 40 00", std::nullopt, {}},
      {"nothing", "", std::nullopt, {}},
  };
  for (const auto& c : cases) {
    const HostInterfaceIds ids = hostInterfaceIds(bytesOfHex(c.bytes));
    EXPECT_EQ(c.serialString, ids.serialString) << c.what;
    EXPECT_EQ(c.fields, ids.fields) << c.what;
  }
}

}  // namespace
}  // namespace velhost
