// SPDX-License-Identifier: Apache-2.0
#include "host/redaction.h"

#include <gtest/gtest.h>

#include "host/machinewriter.h"
#include "host/smbiosparts.h"

namespace velhost {
namespace {

using NKRXVEL20::TCIMValue;

MachineFile withStructure(const Bytes& bytes) {
  MachineFile machine;
  machine.smbios.emplace().structures = {{bytes, 0}};
  return machine;
}

// A formatted area, header left out, of 40 bytes with these at the offsets that DSP0134 counts from
// the structure's start.
Bytes area(std::vector<std::pair<std::size_t, unsigned char>> bytes) {
  Bytes data(40, 0);
  for (const auto& [offset, byte] : bytes) data[offset - kSmbiosHeaderSize] = byte;
  return data;
}

TEST(Redaction, SmbiosStrings) {
  using Texts = std::vector<std::string>;
  const struct {
    const char* what;
    std::uint8_t type;
    Bytes data;
    Texts redacted;  // of the strings K1, K2, K3
  } cases[] = {
      {"system: serial number", 1, area({{0x05, 1}, {0x07, 2}, {0x19, 3}}), {"K1", "G1", "K3"}},
      {"baseboard: serial number, asset tag", 2, area({{0x07, 2}, {0x08, 3}}), {"K1", "G1", "G2"}},
      {"chassis: serial number, asset tag", 3, area({{0x07, 1}, {0x08, 2}}), {"G1", "G2", "K3"}},
      {"processor: serial number, asset tag", 4, area({{0x20, 2}, {0x21, 3}}), {"K1", "G1", "G2"}},
      {"memory device: serial number, asset tag",
       17,
       area({{0x18, 1}, {0x19, 3}}),
       {"G1", "K2", "G2"}},
      {"battery: serial number", 22, area({{0x07, 3}}), {"K1", "K2", "G1"}},
      {"power supply: serial number, asset tag",
       39,
       area({{0x08, 1}, {0x09, 2}}),
       {"G1", "G2", "K3"}},
      {"both in one string", 2, area({{0x07, 2}, {0x08, 2}}), {"K1", "G1", "K3"}},
      {"a string that is not there", 2, area({{0x07, 4}}), {"K1", "K2", "K3"}},
      {"BIOS has none", 0, area({{0x07, 1}, {0x08, 2}}), {"K1", "K2", "K3"}},
      {"an area that ends before", 2, {9, 1, 1}, {"K1", "K2", "K3"}},
  };
  for (const auto& c : cases) {
    MachineFile machine = withStructure(wholeStructure({c.type, 0, c.data, {"K1", "K2", "K3"}}));
    redact(machine);
    const auto parts = takeApart(machine.smbios->structures[0].bytes);
    ASSERT_TRUE(parts) << c.what;
    EXPECT_EQ(c.redacted, parts->strings) << c.what;
    EXPECT_EQ(c.data, parts->data) << c.what;
  }
}

TEST(Redaction, SmbiosNumbersAndMalformedStructures) {
  const struct {
    const char* what;
    const char* bytes;
    const char* redacted;
  } cases[] = {
      {"UUID", "01 19 00 00 00 00 00 00 4C 4C 45 44 00 31 10 35 80 33 B7 C0 4F 4A 32 33 06 00 00",
       "01 19 00 00 00 00 00 00 0A 0A 00 00 00 00 00 00 00 00 A0 A0 0A 0A 00 01 06 00 00"},
      {"UUID that is not set",
       "01 19 00 00 00 00 00 00 FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF 06 00 00",
       "01 19 00 00 00 00 00 00 FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF 06 00 00"},
      {"UUID cut off", "01 0A 00 00 00 00 00 00 12 34", "01 0A 00 00 00 00 00 00 00 01"},
      {"battery's number", "16 12 00 00 00 00 00 00 00 00 00 00 00 00 00 00 12 34 00 00",
       "16 12 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 01 00 00"},
      {"a set that does not end", "02 09 00 00 00 00 00 01 00 4B 39",
       "02 09 00 00 00 00 00 01 00 47 31"},
      {"nothing", "", ""},
      {"type only", "01", "01"},
  };
  for (const auto& c : cases) {
    MachineFile machine = withStructure(bytesOfHex(c.bytes));
    redact(machine);
    EXPECT_EQ(c.redacted, hexPairs(machine.smbios->structures[0].bytes)) << c.what;
  }
}

// Replies of 120 bytes "9": what is replaced shows as other digits.
TEST(Redaction, RepliesToDotCommands) {
  const struct {
    const char* what;
    const char* command;
    std::vector<std::pair<std::size_t, std::string>> replaced;
  } cases[] = {
      {"POST/BIOS", "04 03 05 01", {{22, "0000001"}, {29, "00000000001"}}},
      {"diagnostics", "04 03 05 01 01", {{22, "0000001"}, {29, "00000000001"}}},
      {"planar", "04 03 05 02 01", {{0, "000001"}}},
      {"processor card", "04 03 05 03 01", {{38, "000001"}}},
      {"power supply", "04 03 05 0C 07", {{38, "000001"}}},
      {"power backplane", "04 03 05 0D 01", {{38, "000001"}}},
      {"DASD backplane", "04 03 05 0E 02", {{38, "000001"}}},
      {"DIMM", "04 03 05 0B 01", {{95, std::string("\0\0\0\1", 4)}}},
      {"main firmware", "04 03 05 06 01", {}},
      {"hardware level", "04 03 05 07", {}},
      {"a shorter command", "04 03 05", {}},
  };
  for (const auto& c : cases) {
    Bytes reply(120, '9');
    Bytes expected = reply;
    for (const auto& [offset, text] : c.replaced) {
      std::ranges::copy(text, expected.begin() + static_cast<std::ptrdiff_t>(offset));
    }
    MachineFile machine;
    machine.sp.dotCommands = {{1, bytesOfHex(c.command), {}, {{true, {}, {}}, {false, reply, {}}}}};
    redact(machine);
    EXPECT_EQ(hexPairs(expected), hexPairs(machine.sp.dotCommands[0].replies[1].bytes)) << c.what;
    EXPECT_TRUE(machine.sp.dotCommands[0].replies[0].bytes.empty()) << c.what;
  }
}

TEST(Redaction, AReplyThatEndsInAFieldIsReplacedToItsEnd) {
  MachineFile machine;
  const auto entry = [](const char* text) {
    return NKRXVEL20::host::DotCommandEntry{
        0,
        {4, 3, 5, 2, 1},
        {},
        {{false, Bytes(text, text + std::char_traits<char>::length(text)), {}}}};
  };
  machine.sp.dotCommands = {entry("PL4"), entry("")};
  redact(machine);
  EXPECT_EQ("47 47 31", hexPairs(machine.sp.dotCommands[0].replies[0].bytes));
  EXPECT_EQ("", hexPairs(machine.sp.dotCommands[1].replies[0].bytes));
}

TEST(Redaction, TextsOfInstances) {
  const struct {
    const char* property;
    const char* text;
    const char* redacted;
  } cases[] = {
      {"SerialNumber", "KX71", "GG01"},
      {"UniqueID", " KX71 ", " GG01 "},
      {"DevicePrefix", "KX71", "GG01"},
      {"DeviceID", R"(USBSTOR\SEQUENTIAL&VEN_A&PROD_B&REV_0102\KX71&0)",
       R"(USBSTOR\SEQUENTIAL&VEN_A&PROD_B&REV_0102\GG01&0)"},
      {"DeviceID", R"(USB\VID_04B3&PID_4010\KX71)", R"(USB\VID_04B3&PID_4010\GG01)"},
      {"DeviceID", R"(USB\VID_04B3&PID_4010\5&1A2B)", R"(USB\VID_04B3&PID_4010\0&0A0B)"},
      {"DeviceID", R"(USB\VID_04B3&PID_4010\)", R"(USB\VID_04B3&PID_4010\)"},
      {"DeviceID", "USB1-1", "USB1-1"},
      {"DeviceID", "", ""},
      {"Description", "KX71", "KX71"},
  };
  for (const auto& c : cases) {
    MachineFile machine;
    machine.instances = {{"KRXSG_USBDevice", {{c.property, TCIMValue(c.text)}}}};
    redact(machine);
    EXPECT_EQ(c.redacted, machine.instances[0].properties[0].second.ToString()) << c.text;
  }
}

TEST(Redaction, ValuesStayEqualWhereverTheyStand) {
  MachineFile machine = withStructure(wholeStructure({1, 0, area({{0x07, 1}}), {"KQ0K401"}}));
  Bytes record(47, 0);
  std::ranges::copy(std::string("KQ0K401"), record.begin() + 22);
  std::ranges::copy(std::string("N200-000401"), record.begin() + 29);
  machine.sp.dotCommands = {{0, {4, 3, 5, 1}, {}, {{false, record, {}}}},
                            {1, {4, 3, 5, 1, 1}, {}, {{false, record, {}}}}};
  machine.instances = {{"KRXSG_TapeDrive", {{"DeviceID", TCIMValue(R"(A\B\KQ0K402)")}}},
                       {"KRXSG_TapeDrive", {{"DeviceID", TCIMValue(R"(A\B\KQ0K401&0)")}}}};
  redact(machine);
  EXPECT_EQ("GG0G001", takeApart(machine.smbios->structures[0].bytes)->strings[0]);
  for (const auto& entry : machine.sp.dotCommands) {
    const Bytes& reply = entry.replies[0].bytes;
    EXPECT_EQ("GG0G001G000-000001", std::string(reply.begin() + 22, reply.begin() + 40));
  }
  EXPECT_EQ(R"(A\B\GG0G002)", machine.instances[0].properties[0].second.ToString());
  EXPECT_EQ(R"(A\B\GG0G001&0)", machine.instances[1].properties[0].second.ToString());
  const std::string once = machineFileText(machine);
  redact(machine);
  EXPECT_EQ(once, machineFileText(machine));
}

}  // namespace
}  // namespace velhost
