// SPDX-License-Identifier: Apache-2.0
#include "host/recording/fruareas.h"

#include <gtest/gtest.h>

#include <string>

#include "host/text/hextext.h"

namespace velhost {
namespace {

// Common header: chassis at 8, product at 16. Chassis: type, BCD plus, a field to the last byte. Product:
// German, "D", end.
const Bytes kDevice = bytesOfHex(
    "01 00 01 00 02 00 00 FC"
    "01 01 17 41 AA C2 42 C1"
    "01 01 16 C2 44 00 C1 00");

// "KIND OFFSET+SIZE", an area a line, each field behind it.
std::string described(const Bytes& device) {
  std::string text;
  for (const FruArea& area : fruAreas(device)) {
    text += "KBP"[static_cast<int>(area.kind)];
    text += ' ' + std::to_string(area.offset) + '+' + std::to_string(area.size);
    if (!isEnglish(device, area)) text += " not English";
    for (const FruField& field : fruFields(device, area)) {
      text += ", " + std::to_string(field.encoding) + ' ' + std::to_string(field.offset) + '+' +
              std::to_string(field.size);
    }
    text += '\n';
  }
  return text;
}

Bytes with(std::vector<std::pair<std::size_t, unsigned char>> changes) {
  Bytes device = kDevice;
  for (const auto& [place, byte] : changes) device[place] = byte;
  return device;
}

TEST(FruAreas, HaveFieldsAsFarAsTheyGo) {
  const std::string kProduct = "P 16+8 not English, 3 20+2\n";
  const struct {
    const char* what;
    Bytes device;
    std::string areas;
  } kCases[] = {
      {"nothing", {}, ""},
      {"both", kDevice, "K 8+8, 1 12+1, 3 14+2\n" + kProduct},
      {"a field before the end mark", with({{13, 0x81}}), "K 8+8, 1 12+1, 2 14+1\n" + kProduct},
      {"a field that is cut", with({{13, 0xBF}}), "K 8+8, 1 12+1, 2 14+2\n" + kProduct},
      {"a wrong header", with({{7, 0xFD}}), ""},
      {"another version", with({{0, 2}, {7, 0xFB}}), ""},
      {"an area behind the end", with({{2, 3}, {7, 0xFA}}), kProduct},
      {"an area longer than the device", with({{17, 9}}),
       "K 8+8, 1 12+1, 3 14+2\nP 16+8 not English, 3 20+2\n"},
      {"an area without a length", with({{9, 0}}), kProduct},
      {"English", with({{18, 25}}), "K 8+8, 1 12+1, 3 14+2\nP 16+8, 3 20+2\n"},
      {"a device that ends in its header", Bytes(kDevice.begin(), kDevice.begin() + 7), ""},
      {"a device that ends in an area", Bytes(kDevice.begin(), kDevice.begin() + 18),
       "K 8+8, 1 12+1, 3 14+2\n"},
  };
  for (const auto& c : kCases) EXPECT_EQ(c.areas, described(c.device)) << c.what;
}

TEST(FruAreas, ChecksumIsOfTheWholeArea) {
  EXPECT_TRUE(hasGoodChecksum(bytesOfHex("01 01 00 00 00 00 00 FE"), {FruAreaKind::kBoard, 0, 8}));
  EXPECT_FALSE(hasGoodChecksum(bytesOfHex("01 01 00 00 00 00 00 FF"), {FruAreaKind::kBoard, 0, 8}));
  EXPECT_FALSE(hasGoodChecksum(bytesOfHex("01 02 00 00 00 00 00 FD"), {FruAreaKind::kBoard, 0, 8}));
}

}  // namespace
}  // namespace velhost
