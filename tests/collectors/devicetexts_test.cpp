// SPDX-License-Identifier: Apache-2.0
#include "collectors/deviceinventory/devicetexts.h"

#include <gtest/gtest.h>

namespace deviceinventory {
namespace {

TEST(DeviceTexts, DescriptionIsMakerAndProduct) {
  const struct {
    const char* what;
    const char* maker;
    const char* product;
    const char* description;
  } cases[] = {
      {"both", "KRX", "Console cKVM", "KRX Console cKVM"},
      {"maker alone", "KRX", "", "KRX"},
      {"product alone", "", "cKVM", "cKVM"},
      {"neither", "", "", ""},
      {"padded, as INQUIRY texts are", "ACME    ", "TAPE1           ", "ACME TAPE1"},
      {"padded in front", "  KRX", "\tcKVM", "KRX cKVM"},
      {"nothing but padding", "        ", "cKVM", "cKVM"},
      {"nothing but control characters", "\x01\x1F\x7F", "cKVM", "cKVM"},
      {"blanks inside stay", "A  B", "C", "A  B C"},
      {"a control character inside is a blank", "A\nB",
       "C\x7F"
       "D",
       "A B C D"},
      {"UTF-8 stays", "M\xC3\xBCller", "\xE2\x82\xAC", "M\xC3\xBCller \xE2\x82\xAC"},
      {"each byte that is no UTF-8 is U+FFFD", "A\xFC",
       "\xFF\xFE"
       "B",
       "A\xEF\xBF\xBD \xEF\xBF\xBD\xEF\xBF\xBD"
       "B"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.description, deviceDescription(c.maker, c.product)) << c.what;
  }
}

TEST(DeviceTexts, UsbDeviceIdTellsWhatItIsAndWhere) {
  const struct {
    const char* what;
    UsbDeviceTexts device;
    const char* id;
  } cases[] = {
      {"behind a hub", {"1-1.4", "1d6b", "0104", "KRX", "cKVM"}, R"(USB\VID_1D6B&PID_0104\1-1.4)"},
      {"root hub", {"usb1", "1d6b", "0002", "", ""}, R"(USB\VID_1D6B&PID_0002\usb1)"},
      {"letters at both ends", {"2-1", "aaff", "zz00", "", ""}, R"(USB\VID_AAFF&PID_ZZ00\2-1)"},
      {"beside the letters", {"2-1", "`{~a", "z@[Z", "", ""}, R"(USB\VID_`{~A&PID_Z@[Z\2-1)"},
      {"vendor unknown", {"2-1", "", "0104", "", ""}, R"(USB\VID_&PID_0104\2-1)"},
      {"product unknown", {"2-1", "1d6b", "", "", ""}, R"(USB\VID_1D6B&PID_\2-1)"},
  };
  for (const auto& c : cases) EXPECT_EQ(c.id, usbDeviceId(c.device)) << c.what;
}

TEST(DeviceTexts, TapeDeviceIdHasTheInquiryTextsAsFields) {
  const struct {
    const char* what;
    TapeDriveTexts drive;
    const char* id;
  } cases[] = {
      {"on USB",
       {"1-1:1.0", "2:0:0:0", "ACME", "TAPE1", "0102"},
       R"(USBSTOR\SEQUENTIAL&VEN_ACME&PROD_TAPE1&REV_0102\1-1:1.0&0)"},
      {"second unit on USB",
       {"1-1.4:1.2", "12:0:0:31", "ACME", "TAPE1", "0102"},
       R"(USBSTOR\SEQUENTIAL&VEN_ACME&PROD_TAPE1&REV_0102\1-1.4:1.2&31)"},
      {"on SCSI",
       {"", "2:0:0:5", "ACME", "TAPE1", "0102"},
       R"(SCSI\SEQUENTIAL&VEN_ACME&PROD_TAPE1&REV_0102\2:0:0:5)"},
      {"padded to 8, 16 and 4 characters",
       {"1-1:1.0", "2:0:0:0", "ACME    ", "TAPE1           ", "A1  "},
       R"(USBSTOR\SEQUENTIAL&VEN_ACME&PROD_TAPE1&REV_A1\1-1:1.0&0)"},
      {"each text fills its width",
       {"1-1:1.0", "2:0:0:0", "ACMECORP", "ULTRIUM-HH-ABC-8", "Z51U"},
       R"(USBSTOR\SEQUENTIAL&VEN_ACMECORP&PROD_ULTRIUM-HH-ABC-8&REV_Z51U\1-1:1.0&0)"},
      {"blanks inside",
       {"1-1:1.0", "2:0:0:0", "A CME", "DAT  72", "1 2"},
       R"(USBSTOR\SEQUENTIAL&VEN_A_CME&PROD_DAT__72&REV_1_2\1-1:1.0&0)"},
      {"what parts the fields is no part of one",
       {"1-1:1.0", "2:0:0:0", "A&B", "C\\D", "1,2"},
       R"(USBSTOR\SEQUENTIAL&VEN_A_B&PROD_C_D&REV_1_2\1-1:1.0&0)"},
      {"control characters and bytes above ASCII",
       {"1-1:1.0", "2:0:0:0",
        "A\x01\x1F\x7F"
        "B",
        "\xC3\xBC!~", "\x7F\x31\xFF"},
       R"(USBSTOR\SEQUENTIAL&VEN_A___B&PROD___!~&REV_1_\1-1:1.0&0)"},
      {"all blank",
       {"1-1:1.0", "2:0:0:0", "        ", "                ", "    "},
       R"(USBSTOR\SEQUENTIAL&VEN_&PROD_&REV_\1-1:1.0&0)"},
  };
  for (const auto& c : cases) EXPECT_EQ(c.id, tapeDeviceId(c.drive)) << c.what;
}

}  // namespace
}  // namespace deviceinventory
