// SPDX-License-Identifier: Apache-2.0
#include "host/formats/plainjson.h"

#include <gtest/gtest.h>

#include "tests/host/resultsample.h"

namespace velhost {
namespace {

TEST(PlainJson, HasAKeyForEachRequestedClassInOrder) {
  QueryResult result;
  result.requested = {"KRXSG_Vpd", "KRXSG_cKVM", "KRXSG_SystemBIOSElement"};
  result.instances = {sampleBios(), sampleVpd("DIMM 1", "P1"), sampleVpd("DIMM 2", "")};
  EXPECT_EQ(R"({
  "KRXSG_Vpd": [
    {
      "Name": "DIMM 1",
      "PartNumber": "P1"
    },
    {
      "Name": "DIMM 2",
      "PartNumber": ""
    }
  ],
  "KRXSG_cKVM": [],
  "KRXSG_SystemBIOSElement": [
    {
      "Version": "1.08",
      "Name": ")"
            "M\xEF\xBF\xBDller\\n"
            R"(",
      "SourceNode": 2,
      "TargetOperatingSystem": 36,
      "LoadedEndingAddress": 18446744073709551615,
      "PrimaryBIOS": true,
      "ReleaseDate": "20070315000000.000000+000"
    }
  ]
}
)",
            plainJson(result));
}

TEST(PlainJson, WhatATerminalObeysIsEscaped) {
  QueryResult result;
  result.requested = {"KRXSG_Vpd"};
  result.instances = {
      sampleVpd("\xC2\x9B"
                "31m\xE2\x80\xAE",
                "\x7F\xC3\xBC")};
  EXPECT_EQ(
      "{\n  \"KRXSG_Vpd\": [\n    {\n      \"Name\": \"\\u009B31m\\u202E\",\n"
      "      \"PartNumber\": \"\\u007F\xC3\xBC\"\n    }\n  ]\n}\n",
      plainJson(result));
}

TEST(PlainJson, AClassNamedTwiceIsOneKeyWithItsInstancesTwice) {
  QueryResult result;
  result.requested = {"KRXSG_Vpd", "KRXSG_Vpd"};
  result.instances = {sampleVpd("DIMM 1", "P1"), sampleVpd("DIMM 1", "P1")};
  EXPECT_EQ(R"({
  "KRXSG_Vpd": [
    {
      "Name": "DIMM 1",
      "PartNumber": "P1"
    },
    {
      "Name": "DIMM 1",
      "PartNumber": "P1"
    }
  ]
}
)",
            plainJson(result));
}

}  // namespace
}  // namespace velhost
