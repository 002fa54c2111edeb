// SPDX-License-Identifier: Apache-2.0
#include "collectors/support/chassistypes.h"

#include <gtest/gtest.h>

namespace collector {
namespace {

TEST(ChassisTypes, HaveTheNamesOfTheStandard) {
  const struct {
    std::uint8_t type;
    const char* name;
  } kCases[] = {
      {0x00, ""},      {0x01, "Other"},    {0x02, ""}, {0x11, "Main Server Chassis"},
      {0x1C, "Blade"}, {0x24, "Stick PC"}, {0x25, ""}, {0x97, "Rack Mount Chassis"},
      {0x80, ""},      {0xFF, ""},
  };
  for (const auto& c : kCases) EXPECT_EQ(c.name, chassisTypeName(c.type)) << int{c.type};
}

}  // namespace
}  // namespace collector
