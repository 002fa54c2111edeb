// SPDX-License-Identifier: Apache-2.0
#include "host/formats/ndjson.h"

#include <gtest/gtest.h>

#include "tests/host/formats/formatsample.h"

namespace velhost {
namespace {

TEST(Ndjson, HasALineAnInstanceAndOneForEachClassWithout) {
  EXPECT_EQ(
      R"({"machine":"a server","class":"KRXSG_SystemBIOSElement","node":1,"properties":)"
      R"({"SourceNode":1,"Name":"Node 1 : UEFI","Version":"104","BuildNumber":"KRE104C","PrimaryBIOS":true}})"
      "\n"
      R"({"machine":"a server","class":"KRXSG_SystemBIOSElement","node":2,"properties":)"
      R"({"SourceNode":2,"Name":"Node 2 : UEFI","Version":"104","BuildNumber":"KRE104C","PrimaryBIOS":true}})"
      "\n"
      R"({"machine":"a server","class":"KRXSG_Vpd","node":2,"properties":{"Name":"Node 2: DIMM 1","PartNumber":"R4G72"}})"
      "\n"
      R"({"machine":"a server","class":"KRXSG_cKVM","state":"absent","reason":"no cKVM device, by the machine type"})"
      "\n"
      R"({"machine":"a server","class":"KRXSG_DeviceDriver","state":"unused","reason":null})"
      "\n",
      ndjsonText(sampleContext(), sampleResult()));
}

TEST(Ndjson, AnInstanceStaysOneLineWhateverItsTexts) {
  const QueryResult result =
      resultOf("KRXSG_Vpd",
               {{{"Name", TCIMValue("\xFF<b>\"\r\n\x1B[31m\xE2\x80\xA8\xC2\x85\xC3\xBC")}}, {}});
  const QueryContext context{"file", "a\nb\xFF", {}};
  EXPECT_EQ(
      "{\"machine\":\"a\\nb\xEF\xBF\xBD\",\"class\":\"KRXSG_Vpd\",\"node\":null,\"properties\":"
      "{\"Name\":\"\xEF\xBF\xBD<b>\\\"\\r\\n\\u001b[31m\\u2028\\u0085\xC3\xBC\"}}\n"
      "{\"machine\":\"a\\nb\xEF\xBF\xBD\",\"class\":\"KRXSG_Vpd\",\"node\":null,\"properties\":{}}"
      "\n",
      ndjsonText(context, result));
}

TEST(Ndjson, NothingRequestedIsNoLine) { EXPECT_EQ("", ndjsonText(sampleContext(), {})); }

}  // namespace
}  // namespace velhost
