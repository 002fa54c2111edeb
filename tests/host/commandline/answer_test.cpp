// SPDX-License-Identifier: Apache-2.0
#include "host/commandline/answer.h"

#include <gtest/gtest.h>

#include "tests/host/resultsample.h"

namespace velhost {
namespace {

using std::chrono::milliseconds;

constexpr CollectionTime kTime{milliseconds(1500), milliseconds(20)};

QueryResult resultWith(const char* name) {
  QueryResult result;
  result.requested = {"KRXSG_Vpd"};
  result.states = {{"KRXSG_Vpd", "SPFirmwareVPD", State::kPresent, ""}};
  result.instances = {sampleVpd(name, "")};
  return result;
}

std::string answerText(Format format, const QueryContext& context) {
  Answer answer(format, {}, Replies::kLeftOut, context);
  answer.add(resultWith("first"), kTime);
  answer.add(resultWith("last"), kTime);
  return answer.text();
}

bool has(const std::string& text, const char* part) { return text.find(part) != std::string::npos; }

TEST(Answer, EachFormatIsItself) {
  const struct {
    Format format;
    const char* begin;
  } cases[] = {
      {Format::kTable, "SPFirmwareVPD 1.0 on a server"},
      {Format::kJson, "{\n  \"KRXSG_Vpd\": ["},
      {Format::kInventory, "{\n  \"format\": \"vel-inventory/1\","},
      {Format::kNdjson, "{\"machine\":\"a server\",\"class\":\"KRXSG_Vpd\","},
      {Format::kCsv, "machine,class,"},
      {Format::kOpenMetrics, "# TYPE krxsg_instances gauge\n"},
      {Format::kTrace, "{\n  \"format\": \"vel-result/1\","},
  };
  for (const auto& c : cases)
    EXPECT_EQ(0U, answerText(c.format, sampleContext()).find(c.begin)) << c.begin;
}

TEST(Answer, TheTraceHasAllResultsAndTheOthersTheLast) {
  for (const Format format :
       {Format::kTable, Format::kJson, Format::kInventory, Format::kNdjson, Format::kCsv}) {
    const std::string text = answerText(format, sampleContext());
    EXPECT_FALSE(has(text, "first")) << text;
    EXPECT_TRUE(has(text, "last")) << text;
  }
  const std::string trace = answerText(Format::kTrace, sampleContext());
  EXPECT_TRUE(has(trace, "first") && has(trace, "last")) << trace;
}

TEST(Answer, OnlyALiveMachineHasATimeOfDay) {
  QueryContext context = sampleContext();
  EXPECT_FALSE(has(answerText(Format::kOpenMetrics, context), "krxsg_collection"));
  context.machineSource = "live";
  const std::string live = answerText(Format::kOpenMetrics, context);
  EXPECT_TRUE(has(live, "krxsg_collection_seconds{machine=\"a server\"} 0.020\n")) << live;
  EXPECT_TRUE(has(live, "krxsg_collection_timestamp_seconds{machine=\"a server\"} 1.500\n"));
}

}  // namespace
}  // namespace velhost
