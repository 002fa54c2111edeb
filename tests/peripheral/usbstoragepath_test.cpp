// SPDX-License-Identifier: Apache-2.0
#include "peripheral/usbstoragepath.h"

#include <gtest/gtest.h>

#include <tuple>

namespace spfirmwarevpd::test {
namespace {

TEST(UsbStoragePath, FieldsAreCutAtTheirMarks) {
  const struct {
    const char* what;
    const char* deviceId;
    const char* vendor;
    const char* product;
    const char* revision;
  } cases[] = {
      {"whole path", R"(USBSTOR\SEQUENTIAL&VEN_ACME&PROD_TAPE1&REV_0102\5&1A2B)", "ACME", "TAPE1",
       "0102"},
      {"blanks are kept", R"(USBSTOR\SEQUENTIAL&VEN_ A C &PROD_T 1 &REV_ 01 \5)", " A C ", "T 1 ",
       " 01 "},
      {"key anywhere", R"(x USBSTOR x VEN_A&PROD_B&REV_C\)", "A", "B", "C"},
      {"keys in another order", R"(USBSTOR\REV_C\&PROD_B&VEN_A&)", "A", "B", "C"},
      {"the first of a key counts", R"(USBSTOR\VEN_A&VEN_X&PROD_B&PROD_Y&REV_C\REV_Z\)", "A", "B",
       "C"},
      {"keys are case-sensitive", R"(USBSTOR\ven_A&prod_B&rev_C\)", "", "", ""},
      {"empty fields", R"(USBSTOR\SEQUENTIAL&VEN_&PROD_&REV_\5&1A2B)", "", "", ""},
      {"empty revision only", R"(USBSTOR\SEQUENTIAL&VEN_ACME&PROD_TAPE1&REV_\5&1A2B)", "ACME",
       "TAPE1", ""},
      {"no vendor key", R"(USBSTOR\SEQUENTIAL&PROD_TAPE1&REV_0102\5)", "", "TAPE1", "0102"},
      {"no product key", R"(USBSTOR\SEQUENTIAL&VEN_ACME&REV_0102\5)", "ACME", "", "0102"},
      {"no revision key", R"(USBSTOR\SEQUENTIAL&VEN_ACME&PROD_TAPE1\5)", "ACME", R"(TAPE1\5)", ""},
      {"no key at all", "USBSTOR", "", "", ""},
      {"no end mark behind the revision", "USBSTOR&VEN_ACME&PROD_TAPE1&REV_0102", "ACME", "TAPE1",
       "0102"},
      {"no end mark behind the vendor", R"(USBSTOR\REV_1\PROD_B&VEN_ACME)", "ACME", "B", "1"},
      {"no end mark behind the product", R"(USBSTOR\VEN_A&REV_1\PROD_TAPE1)", "A", "TAPE1", "1"},
      {"key at the end", R"(USBSTOR\VEN_A&PROD_B&REV_)", "A", "B", ""},
      {"a product's own underscore", R"(USBSTOR\VEN_A_1&PROD_LTO_4&REV_C_2\)", "A_1", "LTO_4",
       "C_2"},
      {"a revision with an ampersand", R"(USBSTOR\VEN_A&PROD_B&REV_C&D\E)", "A", "B", "C&D"},
  };
  for (const auto& c : cases) {
    const auto device = parseUsbStoragePath(c.deviceId);
    EXPECT_TRUE(isUsbStoragePath(c.deviceId)) << c.what;
    EXPECT_EQ(std::tie(device.vendor, device.product, device.revision),
              std::make_tuple(c.vendor, c.product, c.revision))
        << c.what;
  }
}

TEST(UsbStoragePath, OtherDevicesAreNoUsbStorage) {
  for (const char* deviceId :
       {"", R"(SCSI\SEQUENTIAL&VEN_ACME&PROD_TAPE1&REV_0102\5)",
        R"(SAS\SEQUENTIAL&VEN_ACME&PROD_TAPE1&REV_0102\5)",
        R"(usbstor\SEQUENTIAL&VEN_ACME&PROD_TAPE1&REV_0102\5)", R"(USBSTO\R&VEN_A&REV_1\)"}) {
    EXPECT_FALSE(isUsbStoragePath(deviceId)) << deviceId;
  }
}

}  // namespace
}  // namespace spfirmwarevpd::test
