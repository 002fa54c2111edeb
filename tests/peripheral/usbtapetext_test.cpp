// SPDX-License-Identifier: Apache-2.0
//
// How the tape collector turns a device identifier into text: this program defines the value's
// operation, and it takes the place of the real one. No identifier of digits alone names a USB
// device, so the base shows nowhere else.
#include "tests/support/pluginfixture.h"

namespace {

// What was asked of values, and what they answer.
std::vector<int> bases;  // NOLINT
std::string deviceId;    // NOLINT

}  // namespace

namespace NKRXVEL20 {

std::string TCIMValue::ToString(int base) const {
  bases.push_back(base);
  return deviceId;
}

}  // namespace NKRXVEL20

namespace spfirmwarevpd::test {
namespace {

using namespace NKRXVEL20;

class UsbTapeTextTest : public PluginTest {};

TEST_F(UsbTapeTextTest, IdentifierIsReadOnceADriveInBaseTen) {
  for (const char* path : {R"(SCSI\SEQUENTIAL&VEN_A&REV_1\5)", R"(USBSTOR\VEN_A&REV_1\5)"}) {
    deviceId = path;
    bases.clear();
    useFaults({});
    for (int i = 0; i < 2; ++i) {
      ns->addCompanion("KRXSG_TapeDrive", {{"DeviceID", TCIMValue("any")}});
    }
    plugin.getUsbTapeFirmware(ns);
    EXPECT_EQ(bases, (std::vector<int>{10, 10})) << path;
    EXPECT_EQ(ns->takePublished().size(), deviceId.starts_with("USBSTOR") ? 2U : 0U) << path;
  }
}

}  // namespace
}  // namespace spfirmwarevpd::test
