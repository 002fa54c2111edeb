// SPDX-License-Identifier: Apache-2.0
#include "host/collectors/classfailure.h"

#include <gtest/gtest.h>

namespace velhost {
namespace {

using Names = std::vector<std::string>;

const RequestError kRefusal{"TVELException", 2, "not served"};

TEST(ClassFailure, OnlyWhatMayHaveBeenRefusedFailed) {
  const std::string tape = "F does not serve KRXSG_TapeDrive";
  const std::string either = "SPFirmwareVPD does not serve one of the classes asked for with it";
  const struct {
    const char* what;
    const char* collector;
    Names classes;
    std::set<std::string> published;
    Names failures;
  } cases[] = {
      {"the one class", "F", {"KRXSG_TapeDrive"}, {}, {tape}},
      {"the last class, as the others have instances",
       "F",
       {"KRXSG_Vpd", "KRXSG_TapeDrive"},
       {"KRXSG_Vpd"},
       {"", tape}},
      {"the one that is another collector's",
       "SPFirmwareVPD",
       {"KRXSG_Vpd", "KRXSG_cKVM", "KRXSG_TapeDrive", "KRXSG_DeviceDriver"},
       {"KRXSG_Vpd"},
       {"", "", "SPFirmwareVPD does not serve KRXSG_TapeDrive",
        "SPFirmwareVPD does not serve KRXSG_TapeDrive"}},
      {"one of two", "SPFirmwareVPD", {"KRXSG_TapeDrive", "KRXSG_USBDevice"}, {}, {either, either}},
      {"none that should be",
       "SPFirmwareVPD",
       {"KRXSG_Vpd", "KRXSG_cKVM", "KRXSG_DeviceDriver"},
       {"KRXSG_Vpd"},
       {"", either, either}},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.failures, classFailures(c.classes, c.published, c.collector, kRefusal)) << c.what;
  }
}

TEST(ClassFailure, AnyOtherExceptionMayHaveComeAnywhere) {
  const RequestError broke{"std::runtime_error", std::nullopt, "it broke"};
  const std::string text = "F ended in std::runtime_error: it broke";
  EXPECT_EQ((Names{text, text}),
            classFailures({"KRXSG_Vpd", "KRXSG_cKVM"}, {"KRXSG_Vpd"}, "F", broke));
  const RequestError nobody{"TVELException", 2, "no collector serves KRXSG_Vpd", false};
  EXPECT_EQ(Names{"no collector serves KRXSG_Vpd"}, classFailures({"KRXSG_Vpd"}, {}, "", nobody));
}

}  // namespace
}  // namespace velhost
