// SPDX-License-Identifier: Apache-2.0
#include "host/formats/schemaformat.h"

#include <gtest/gtest.h>

namespace velhost {
namespace {

using NKRXVEL20::ECIMType;
using NKRXVEL20::host::ClassSchema;
using NKRXVEL20::host::PropertySchema;

constexpr PropertySchema kProperties[] = {{"Name", ECIMType::kString},
                                          {"SourceNode", ECIMType::kUint8}};
constexpr ClassSchema kOne{"KRXSG_One", "The first", kProperties};
constexpr ClassSchema kTwo{"KRXSG_Two", "The second", {}};

TEST(SchemaFormat, ForPeopleABlockAClass) {
  EXPECT_EQ(
      "KRXSG_One  The first\n"
      "  Name        string\n"
      "  SourceNode  uint8\n"
      "\n"
      "KRXSG_Two  The second\n",
      schemaTable({&kOne, &kTwo}, {}));
}

TEST(SchemaFormat, ABlockStaysInsideTheScreen) {
  EXPECT_EQ(
      "KRXSG_One  The\n"
      "first\n"
      "  Name\n"
      "    string\n"
      "  SourceNode\n"
      "    uint8\n",
      schemaTable({&kOne}, {.width = 16}));
}

TEST(SchemaFormat, ForProgramsAList) {
  EXPECT_EQ(R"([
  {
    "name": "KRXSG_One",
    "description": "The first",
    "properties": [
      {
        "name": "Name",
        "type": "string"
      },
      {
        "name": "SourceNode",
        "type": "uint8"
      }
    ]
  }
]
)",
            schemaJson({&kOne}));
}

}  // namespace
}  // namespace velhost
