// SPDX-License-Identifier: Apache-2.0
#include "host/formats/openmetrics.h"

#include <gtest/gtest.h>

#include "tests/host/formats/formatsample.h"

namespace velhost {
namespace {

using std::chrono::milliseconds;

const std::string kElementHead =
    "# TYPE krxsg_element_info gauge\n"
    "# HELP krxsg_element_info An element with a level, as its labels tell; the value is 1.\n";
const std::string kInstancesHead =
    "# TYPE krxsg_instances gauge\n"
    "# HELP krxsg_instances Instances that a class has.\n";
const std::string kStateHead =
    "# TYPE krxsg_class_state gauge\n"
    "# HELP krxsg_class_state How asking for a class ended, as its label tells; the value is 1.\n";

std::string exposition(const QueryResult& result) {
  return openMetricsText(sampleContext(), result, std::nullopt);
}

// Of a result with one class that is present.
std::string countAndState(const std::string& className, const std::string& count) {
  const std::string labels = R"({machine="a server",class=")" + className + "\"";
  return kInstancesHead + "krxsg_instances" + labels + "} " + count + "\n" + kStateHead +
         "krxsg_class_state" + labels + ",state=\"present\"} 1\n# EOF\n";
}

TEST(OpenMetrics, HasLevelsCountsAndStates) {
  EXPECT_EQ(
      kElementHead +
          R"(krxsg_element_info{machine="a server",class="KRXSG_SystemBIOSElement",node="1",name="Node 1 : UEFI",version="104",build="KRE104C"} 1
krxsg_element_info{machine="a server",class="KRXSG_SystemBIOSElement",node="2",name="Node 2 : UEFI",version="104",build="KRE104C"} 1
)" + kInstancesHead +
          R"(krxsg_instances{machine="a server",class="KRXSG_SystemBIOSElement"} 2
krxsg_instances{machine="a server",class="KRXSG_Vpd"} 1
krxsg_instances{machine="a server",class="KRXSG_cKVM"} 0
krxsg_instances{machine="a server",class="KRXSG_DeviceDriver"} 0
)" + kStateHead +
          R"(krxsg_class_state{machine="a server",class="KRXSG_SystemBIOSElement",state="present"} 1
krxsg_class_state{machine="a server",class="KRXSG_Vpd",state="partial"} 1
krxsg_class_state{machine="a server",class="KRXSG_cKVM",state="absent"} 1
krxsg_class_state{machine="a server",class="KRXSG_DeviceDriver",state="unused"} 1
# EOF
)",
      exposition(sampleResult()));
}

TEST(OpenMetrics, TheTimesOfALiveMachineFollow) {
  EXPECT_EQ(kInstancesHead + "krxsg_instances{machine=\"a server\",class=\"KRXSG_Vpd\"} 0\n" +
                kStateHead +
                "krxsg_class_state{machine=\"a server\",class=\"KRXSG_Vpd\",state=\"present\"} 1\n"
                "# TYPE krxsg_collection_seconds gauge\n"
                "# UNIT krxsg_collection_seconds seconds\n"
                "# HELP krxsg_collection_seconds How long the collection took.\n"
                "krxsg_collection_seconds{machine=\"a server\"} 5.007\n"
                "# TYPE krxsg_collection_timestamp_seconds gauge\n"
                "# UNIT krxsg_collection_timestamp_seconds seconds\n"
                "# HELP krxsg_collection_timestamp_seconds When the collection ended, in Unix"
                " time.\n"
                "krxsg_collection_timestamp_seconds{machine=\"a server\"} 1795275000.120\n"
                "# EOF\n",
            openMetricsText(sampleContext(), resultOf("KRXSG_Vpd", {}),
                            CollectionTime{milliseconds(1795275000120), milliseconds(5007)}));
}

TEST(OpenMetrics, ElementsThatNoLabelTellsApartAreOneSeries) {
  const PropertyList one{{"Version", TCIMValue("1")}, {"FileName", TCIMValue("a")}};
  const PropertyList same{{"Version", TCIMValue("1 ")}, {"FileName", TCIMValue("b")}};
  const PropertyList other{{"Version", TCIMValue("2")}};
  const std::string labels = R"({machine="a server",class="KRXSG_cKVM",node="",name="",version=")";
  EXPECT_EQ(kElementHead + "krxsg_element_info" + labels + "1\",build=\"\"} 1\n" +
                "krxsg_element_info" + labels + "2\",build=\"\"} 1\n" +
                countAndState("KRXSG_cKVM", "3"),
            exposition(resultOf("KRXSG_cKVM", {one, same, other})));
}

TEST(OpenMetrics, LabelsOfAnyBytes) {
  const std::string half(600, 'v');
  const struct {
    const char* what;
    std::string text;
    std::string label;
  } cases[] = {
      {"quote", "a\"b", "a\\\"b"},
      {"backslash", "a\\b\\", "a\\\\b\\\\"},
      {"line feed", "a\nb", "a\\\\nb"},
      {"carriage return", "a\rb", "a\\\\rb"},
      {"control character", "\x1B[31m", "\\\\x1b[31m"},
      {"line separator", "\xE2\x80\xA8", "\\\\u2028"},
      {"no UTF-8", "\xFF\xC3", "\xEF\xBF\xBD\xEF\xBF\xBD"},
      {"HTML and other signs", "<b>{a=1} # EOF\xC3\xBC", "<b>{a=1} # EOF\xC3\xBC"},
      {"too long", half + "m" + half, std::string(511, 'v') + "..." + std::string(510, 'v')},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(
        kElementHead +
            R"(krxsg_element_info{machine="a server",class="KRXSG_cKVM",node="",name="",version=")" +
            c.label + "\",build=\"\"} 1\n" + countAndState("KRXSG_cKVM", "1"),
        exposition(resultOf("KRXSG_cKVM", {{{"Version", TCIMValue(c.text)}}})))
        << c.what;
  }
}

TEST(OpenMetrics, NothingRequestedIsTheEndAlone) { EXPECT_EQ("# EOF\n", exposition({})); }

}  // namespace
}  // namespace velhost
