// SPDX-License-Identifier: Apache-2.0
#include "host/recording/redaction.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "host/machine/machinewriter.h"
#include "host/machine/smbiosparts.h"

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
      {"AssetTag", "KX71", "GG01"},
      {"UUID", "KX71", "GG01"},
      {"ChassisSerialNumber", "KX71", "GG01"},
      {"ChassisAssetTag", "KX71", "GG01"},
      {"BoardSerialNumber", "KX71", "GG01"},
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

// A type 42 structure of a USB network interface (version 2) with Redfish behind it; its serial
// number is string 1.
Bytes hostInterface(const std::string& uuid, const std::vector<std::string>& strings) {
  return wholeStructure(
      {42, 0, bytesOfHex("40 0D 04 0D B3 04 10 40 01 0A 0B 0C 0D 0E 0F 01 04 10" + uuid), strings});
}

TEST(Redaction, IdsOfAHostInterface) {
  MachineFile machine =
      withStructure(hostInterface("4C4C4544003110358033B7C04F4A3233", {"KX71", "KX72"}));
  redact(machine);
  EXPECT_EQ(hexPairs(hostInterface("0A0A0000000000000000A0A00A0A0001", {"GG01", "KX72"})),
            hexPairs(machine.smbios->structures[0].bytes));
  machine = withStructure(bytesOfHex("2A 11 00 00 40 0B 02 B3 04 10 40 06 03 4B 00 37 00 00 00"));
  redact(machine);
  EXPECT_EQ("2A 11 00 00 40 0B 02 B3 04 10 40 06 03 47 00 31 00 00 00",
            hexPairs(machine.smbios->structures[0].bytes));
}

Bytes asBytes(const std::string& text) { return {text.begin(), text.end()}; }

// KX71Q is the serial number of the system; what stands elsewhere follows.
// A FRU command of this code and data, and its reply, completed with that data.
NKRXVEL20::host::IpmiCommandEntry fruCommand(const Bytes& command, const Bytes& data) {
  Bytes request = {0x01, 0x20, 0x0A, 0x00, command[0], 0, 0, 0, 0};
  request[5] = static_cast<unsigned char>(command.size() - 1);
  request.insert(request.end(), command.begin() + 1, command.end());
  Bytes reply = {0x01, 0x20, 0x0E, 0x00, 0x00};
  reply.insert(reply.end(), data.begin(), data.end());
  return {request, {{false, reply, {}}}};
}

// FRU device 5, whose product area of 16 bytes stands from byte 8 on, as it is read: the area in two
// pieces, which part its serial number. `word`: the bytes that offsets and counts are told in.
std::vector<NKRXVEL20::host::IpmiCommandEntry> readsOf(const Bytes& area, unsigned char word) {
  const Bytes header = bytesOfHex("01 00 00 00 01 00 00 FE");
  const auto read = [word](std::size_t at, Bytes bytes) {
    const auto count = static_cast<unsigned char>(bytes.size() / word);
    bytes.insert(bytes.begin(), count);
    return fruCommand({0x11, 5, static_cast<unsigned char>(at / word), 0, count}, bytes);
  };
  const unsigned char access = word - 1;
  return {read(18, {area.begin() + 10, area.end()}), read(0, header),
          read(8, {area.begin(), area.begin() + 10}), fruCommand({0x10, 5}, {24, 0, access})};
}

Bytes repliesOf(const MachineFile& machine) {
  Bytes bytes;
  for (const auto& entry : machine.sp.ipmiCommands) {
    bytes.insert(bytes.end(), entry.replies[0].bytes.begin(), entry.replies[0].bytes.end());
  }
  return bytes;
}

// Version, length, language, four empty fields, the serial number, no asset tag, end, a zero, checksum.
TEST(Redaction, SerialNumbersOfFruDevicesAndTheirChecksums) {
  const struct {
    const char* what;
    const char* area;
    const char* redacted;
  } cases[] = {
      {"Latin-1: Q7K9", "01 02 00 C0 C0 C0 C0 C4 51 37 4B 39 C0 C1 00 AC",
       "01 02 00 C0 C0 C0 C0 C4 47 30 47 31 C0 C1 00 C9"},
      {"BCD plus: 12-378", "01 02 00 C0 C0 C0 C0 44 A1 2B 37 8A C0 C1 00 AB",
       "01 02 00 C0 C0 C0 C0 44 A0 0B 00 1A C0 C1 00 73"},
      {"six-bit ASCII: IPMI", "01 02 00 C0 C0 C0 C0 83 29 DC A6 C0 C1 00 00 4E",
       "01 02 00 C0 C0 C0 C0 83 E7 79 A2 C0 C1 00 00 F7"},
      {"binary", "01 02 00 C0 C0 C0 C0 04 12 34 56 78 C0 C1 00 64",
       "01 02 00 C0 C0 C0 C0 04 00 00 00 01 C0 C1 00 77"},
      {"UTF-16: Q7", "01 02 16 C0 C0 C0 C0 C4 51 00 37 00 C0 C1 00 1A",
       "01 02 16 C0 C0 C0 C0 C4 47 00 31 00 C0 C1 00 2A"},
      {"no field for one", "01 02 00 C4 51 37 4B 39 C1 00 00 00 00 00 00 6C",
       "01 02 00 C4 51 37 4B 39 C1 00 00 00 00 00 00 6C"},
      {"a wrong checksum stays wrong", "01 02 00 C0 C0 C0 C0 C4 51 37 4B 39 C0 C1 00 AD",
       "01 02 00 C0 C0 C0 C0 C4 47 30 47 31 C0 C1 00 AD"},
  };
  for (const auto& c : cases) {
    for (const unsigned char word : Bytes{1, 2}) {
      MachineFile machine;
      MachineFile expected;
      machine.sp.ipmiCommands = readsOf(bytesOfHex(c.area), word);
      expected.sp.ipmiCommands = readsOf(bytesOfHex(c.redacted), word);
      redact(machine);
      EXPECT_EQ(hexPairs(repliesOf(expected)), hexPairs(repliesOf(machine))) << c.what << int{word};
    }
  }
}

// The system's serial number in a custom field of a FRU device.
TEST(Redaction, AKnownValueInAFruDeviceLeavesItsChecksumGood) {
  MachineFile machine = withStructure(wholeStructure({1, 0, area({{0x07, 1}}), {"Q7K9"}}));
  machine.sp.ipmiCommands =
      readsOf(bytesOfHex("01 02 00 C0 C0 C0 C0 C0 C0 C4 51 37 4B 39 C1 EC"), 1);
  redact(machine);
  MachineFile expected;
  expected.sp.ipmiCommands =
      readsOf(bytesOfHex("01 02 00 C0 C0 C0 C0 C0 C0 C4 47 30 47 31 C1 09"), 1);
  EXPECT_EQ(hexPairs(repliesOf(expected)), hexPairs(repliesOf(machine)));
}

TEST(Redaction, RepliesThatAreNoFruDataStayAsTheyAre) {
  MachineFile machine;
  machine.sp.ipmiCommands = {
      fruCommand({0x11, 5, 0, 0, 8}, {}), fruCommand({0x11, 5, 0, 0}, {8, 1}),
      fruCommand({0x11, 5, 0, 0, 9}, {200, 1, 2}), fruCommand({0x10, 5}, {1})};
  // Of the header of device 5 and its area, by commands that do not read it or replies that are none.
  for (auto& entry : readsOf(bytesOfHex("01 02 00 C0 C0 C0 C0 C4 51 37 4B 39 C0 C1 00 AC"), 1)) {
    auto otherFunction = entry;
    otherFunction.request[2] = 0x2C;
    auto otherCommand = entry;
    otherCommand.request[4] = 0x12;
    auto unanswered = entry;
    unanswered.replies[0].fails = true;
    auto refused = entry;
    refused.replies[0].bytes[4] = 0xCB;
    for (const auto& other : {otherFunction, otherCommand, unanswered, refused}) {
      machine.sp.ipmiCommands.push_back(other);
    }
  }
  machine.sp.ipmiCommands.push_back(fruCommand({0x10, 6}, {}));
  const Bytes before = repliesOf(machine);
  redact(machine);
  EXPECT_EQ(hexPairs(before), hexPairs(repliesOf(machine)));
}

TEST(Redaction, WhatHoldsNoTextStaysAsItIs) {
  MachineFile machine;
  machine.sp.tamberCommands = {
      {{0x01, 0xF1, 0xF1, 0x0F}, std::nullopt, {{false, bytesOfHex("01 02 03 4B 58 37 31"), {}}}}};
  machine.sp.ipmiCommands = {{bytesOfHex("01200600"), {{false, Bytes(21, 0x12), {}}}}};
  machine.instances = {
      {"KRXSG_IPMIFRU", {{"FRUDeviceID", TCIMValue(static_cast<std::uint8_t>(3))}}}};
  const std::string before = machineFileText(machine);
  redact(machine);
  EXPECT_EQ(before, machineFileText(machine));
}

TEST(Redaction, GuidOfAController) {
  MachineFile machine;
  machine.sp.ipmiCommands = {
      {bytesOfHex("0120060008 00000000"),
       {{false, bytesOfHex("0120070000 12345678 9ABCDEF0 12345678 9ABCDEF0"), {}}}},
      {bytesOfHex("0120060001 00000000"), {{false, bytesOfHex("0120070000 12345678 9ABC"), {}}}}};
  redact(machine);
  EXPECT_EQ(bytesOfHex("0120070000 00000000 0AAAAAA0 00000000 0AAAAAA1"),
            machine.sp.ipmiCommands[0].replies[0].bytes);
  EXPECT_EQ(bytesOfHex("0120070000 12345678 9ABC"), machine.sp.ipmiCommands[1].replies[0].bytes);
}

TEST(Redaction, AKnownValueGoesWhereverItStands) {
  const auto with = [](auto put) {
    MachineFile machine =
        withStructure(wholeStructure({1, 0, area({{0x07, 1}}), {"KX71Q", "\x01"}}));
    put(machine);
    return machine;
  };
  const auto structure = [](SmbiosParts parts) {
    return [parts](MachineFile& machine) {
      machine.smbios->structures.push_back({wholeStructure(parts), 0});
    };
  };
  const auto raw = [](const char* bytes) {
    return [bytes](MachineFile& machine) {
      machine.smbios->structures.push_back({bytesOfHex(bytes), 0});
    };
  };
  const auto reply = [](const char* bytes) {
    return std::vector<NKRXVEL20::host::SimulatedReply>{{false, bytesOfHex(bytes), {}}};
  };
  const struct {
    const char* what;
    MachineFile machine;
    MachineFile redacted;
  } cases[] = {
      {"OEM string", with(structure({11, 1, {2}, {"x", "SN:KX71Q;kx71q"}})),
       with(structure({11, 1, {2}, {"x", "SN:GG00H;gg00h"}}))},
      {"additional information's value",
       with(structure({40, 1, bytesOfHex("01 0A 01 00 07 00 4B 58 37 31 51"), {}})),
       with(structure({40, 1, bytesOfHex("01 0A 01 00 07 00 47 47 30 30 48"), {}}))},
      {"vendor structure's string", with(structure({221, 1, {1}, {"KX71Q"}})),
       with(structure({221, 1, {1}, {"GG00H"}}))},
      {"vendor structure's bytes, UTF-16",
       with(structure({221, 1, bytesOfHex("4B00 5800 3700 3100 5100"), {}})),
       with(structure({221, 1, bytesOfHex("4700 4700 3000 3000 4800"), {}}))},
      {"across the Length of a structure", with(raw("DD 06 00 00 4B 58 37 31 51 00 00")),
       with(raw("DD 06 00 00 47 47 30 30 48 00 00"))},
      {"a header stays", with(raw("4B 58 37 31 51")), with(raw("4B 58 37 31 51"))},
      {"part of another value", with(structure({2, 1, area({{0x07, 1}}), {"KX71Q/9"}})),
       with(structure({2, 1, area({{0x07, 1}}), {"GG00G/1"}}))},
      {"dot command", with([&](MachineFile& m) {
         m.sp.dotCommands = {{0, {4, 3, 5, 6, 1}, asBytes("KX71Q"), reply("00 4B 58 37 31 51")}};
       }),
       with([&](MachineFile& m) {
         m.sp.dotCommands = {{0, {4, 3, 5, 6, 1}, asBytes("GG00H"), reply("00 47 47 30 30 48")}};
       })},
      {"beside the field of a reply", with([&](MachineFile& m) {
         m.sp.dotCommands = {{0, {4, 3, 5, 2}, {}, reply("31 32 33 34 35 36 4B 58 37 31 51")}};
       }),
       with([&](MachineFile& m) {
         m.sp.dotCommands = {{0, {4, 3, 5, 2}, {}, reply("30 30 30 30 30 31 47 47 30 30 48")}};
       })},
      {"Tamber command", with([&](MachineFile& m) {
         m.sp.tamberCommands = {{{1, 2, 3, 4}, asBytes("KX71Q"), reply("000000 4B58373151")}};
       }),
       with([&](MachineFile& m) {
         m.sp.tamberCommands = {{{1, 2, 3, 4}, asBytes("GG00H"), reply("000000 4747303048")}};
       })},
      {"IPMI command", with([&](MachineFile& m) {
         m.sp.ipmiCommands = {
             {bytesOfHex("0120060052 05000000 4B58373151"), reply("0120070000 4B58373151")}};
       }),
       with([&](MachineFile& m) {
         m.sp.ipmiCommands = {
             {bytesOfHex("0120060052 05000000 4747303048"), reply("0120070000 4747303048")}};
       })},
      {"IPMI record of its header", with([&](MachineFile& m) {
         m.sp.ipmiCommands = {{bytesOfHex("4B58373151"), reply("4B58373151")}};
       }),
       with([&](MachineFile& m) {
         m.sp.ipmiCommands = {{bytesOfHex("4B58373151"), reply("4B58373151")}};
       })},
      {"description of an instance", with([](MachineFile& m) {
         m.instances = {{"KRXSG_USBDevice", {{"Description", TCIMValue("disk KX71Q")}}}};
       }),
       with([](MachineFile& m) {
         m.instances = {{"KRXSG_USBDevice", {{"Description", TCIMValue("disk GG00H")}}}};
       })},
      {"beside a device's own serial number", with([](MachineFile& m) {
         m.instances = {{"KRXSG_USBDevice", {{"DeviceID", TCIMValue(R"(KX71Q\7&0)")}}}};
       }),
       with([](MachineFile& m) {
         m.instances = {{"KRXSG_USBDevice", {{"DeviceID", TCIMValue(R"(GG00H\1&0)")}}}};
       })},
      {"name and description", with([](MachineFile& m) {
         m.name = "rack7-kx71q";
         m.description = "recorded from rack7-KX71Q";
       }),
       with([](MachineFile& m) {
         m.name = "rack7-gg00h";
         m.description = "recorded from rack7-GG00H";
       })},
  };
  for (const auto& c : cases) {
    MachineFile machine = c.machine;
    MachineFile expected = c.redacted;
    expected.smbios->structures[0].bytes =
        wholeStructure({1, 0, area({{0x07, 1}}), {"GG00H", "\x01"}});
    redact(machine);
    EXPECT_EQ(machineFileText(expected), machineFileText(machine)) << c.what;
    redact(machine);
    EXPECT_EQ(machineFileText(expected), machineFileText(machine)) << c.what << ", again";
  }
}

// All bytes and texts of a machine file, hexadecimal ones decoded, upper case, with separators.
void collect(const nlohmann::json& json, std::string& all) {
  if (json.is_string()) {
    const auto& text = json.get_ref<const std::string&>();
    all += text + '\n';
    try {
      const Bytes bytes = bytesOfHex(text);
      all.append(bytes.begin(), bytes.end());
    } catch (const HexTextError&) {  // a text
    }
  }
  if (!json.is_structured()) return;
  for (const auto& element : json) collect(element, all);
}

std::string allOf(const MachineFile& machine) {
  std::string all;
  collect(nlohmann::json::parse(machineFileText(machine)), all);
  std::ranges::transform(all, all.begin(), [](char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c;
  });
  return all;
}

// Every kind of value, in its field and in places of every kind.
MachineFile machineOfEveryKind() {
  const std::string texts =
      "SYS4711 BOARD-4712 chassis4713 AT-4714 CPU4715 DIMM4716 BATT4717 PSU4718 USBSER4719 "
      "KQ0K401 N200-000401 PL4720 PC4721 4C4C4544-0031-1035-8033-b7c04f4a3233 "
      "44454c4c-3100-3510-8033-b7c04f4a3233 8899AABBCCDDEEFF0123456789ABCDEF 401A2B3C tape4722";
  const Bytes numbers = bytesOfHex(
      "FE 44454C4C310035108033B7C04F4A3233 4C4C4544003110358033B7C04F4A3233 "
      "8899AABBCCDDEEFF0123456789ABCDEF BBAA9988DDCCFFEE0123456789ABCDEF 401A2B3C "
      "5300 5900 5300 3400 3700 3100 3100");
  Bytes everything = asBytes(texts);
  everything.insert(everything.end(), numbers.begin(), numbers.end());

  MachineFile machine;
  machine.name = "host " + texts;
  machine.description = "recorded from " + texts;
  Bytes system = area({{0x07, 1}});
  std::ranges::copy(bytesOfHex("44454C4C310035108033B7C04F4A3233"), system.begin() + 4);
  Bytes planar = asBytes("PL4720" + texts);
  Bytes card(38, 0);
  for (const char c : "PC4721" + texts) card.push_back(static_cast<unsigned char>(c));
  Bytes postBios(22, 0);
  for (const char c : "KQ0K401N200-000401" + texts)
    postBios.push_back(static_cast<unsigned char>(c));
  Bytes dimm(95, 0);
  for (const unsigned char byte : bytesOfHex("401A2B3C")) dimm.push_back(byte);
  dimm.insert(dimm.end(), everything.begin(), everything.end());
  auto& structures = machine.smbios.emplace().structures;
  const auto add = [&](SmbiosParts parts) { structures.push_back({wholeStructure(parts), 0}); };
  add({1, 1, system, {"SYS4711"}});
  add({2, 2, area({{0x07, 1}}), {"BOARD-4712"}});
  add({3, 3, area({{0x07, 1}, {0x08, 2}}), {"chassis4713", "AT-4714"}});
  add({4, 4, area({{0x20, 1}}), {"CPU4715"}});
  add({17, 5, area({{0x18, 1}}), {"DIMM4716"}});
  add({22, 6, area({{0x07, 1}}), {"BATT4717"}});
  add({39, 7, area({{0x08, 1}}), {"PSU4718"}});
  structures.push_back({hostInterface("8899AABBCCDDEEFF0123456789ABCDEF", {"USBSER4719"}), 0});
  add({11, 8, {1}, {texts}});
  add({40, 9, numbers, {texts}});
  add({221, 10, numbers, {texts, texts}});
  for (const bool isCut : {false, true}) {
    Bytes bytes{221, 251, 0, 0};
    bytes.insert(bytes.end(), everything.begin(), everything.end());
    if (isCut) bytes[1] = 9;
    structures.push_back({bytes, 0});
  }
  const auto reply = [](const Bytes& bytes) {
    return std::vector<NKRXVEL20::host::SimulatedReply>{{false, bytes, {}}};
  };
  machine.sp.dotCommands = {{0, {4, 3, 5, 1}, everything, reply(postBios)},
                            {0, {4, 3, 5, 2}, {}, reply(planar)},
                            {0, {4, 3, 5, 3}, {}, reply(card)},
                            {0, {4, 3, 5, 0x0B}, {}, reply(dimm)},
                            {0, {4, 3, 5, 6, 1}, {}, reply(everything)}};
  Bytes behindHeader(9, 0);
  behindHeader.insert(behindHeader.end(), everything.begin(), everything.end());
  machine.sp.tamberCommands = {{{1, 2, 3, 4}, everything, reply(behindHeader)}};
  machine.sp.ipmiCommands = {{behindHeader, reply(behindHeader)}};
  machine.instances = {
      {"KRXSG_TapeDrive",
       {{"DeviceID", TCIMValue(R"(A\B\tape4722&0)")}, {"Description", TCIMValue(texts)}}}};
  return machine;
}

TEST(Redaction, NoKnownValueIsLeft) {
  std::vector<std::string> values{"SYS4711",
                                  "BOARD-4712",
                                  "CHASSIS4713",
                                  "AT-4714",
                                  "CPU4715",
                                  "DIMM4716",
                                  "BATT4717",
                                  "PSU4718",
                                  "USBSER4719",
                                  "KQ0K401",
                                  "N200-000401",
                                  "PL4720",
                                  "PC4721",
                                  "TAPE4722",
                                  "401A2B3C",
                                  std::string("S\0Y\0S\0"
                                              "4\0"
                                              "7\0"
                                              "1\0"
                                              "1\0",
                                              14),
                                  "4C4C4544-0031-1035-8033-B7C04F4A3233",
                                  "44454C4C-3100-3510-8033-B7C04F4A3233",
                                  "8899AABBCCDDEEFF0123456789ABCDEF"};
  // Upper case, as the text that is searched: "J" is the byte 4A, "j" would be 6A.
  for (const char* const number :
       {"44454C4C310035108033B7C04F4A3233", "4C4C4544003110358033B7C04F4A3233",
        "8899AABBCCDDEEFF0123456789ABCDEF", "BBAA9988DDCCFFEE0123456789ABCDEF", "401A2B3C"}) {
    std::string bytes;
    for (const unsigned char byte : bytesOfHex(number)) {
      bytes += static_cast<char>(byte >= 'a' && byte <= 'z' ? byte - 32 : byte);
    }
    values.push_back(bytes);
  }
  MachineFile machine = machineOfEveryKind();
  const std::string before = allOf(machine);
  for (const std::string& value : values) {
    EXPECT_NE(std::string::npos, before.find(value)) << hexPairs(asBytes(value));
  }
  redact(machine);
  const std::string after = allOf(machine);
  for (const std::string& value : values) {
    EXPECT_EQ(std::string::npos, after.find(value)) << hexPairs(asBytes(value));
  }
  EXPECT_EQ(before.size(), after.size());
  const std::string once = machineFileText(machine);
  redact(machine);
  EXPECT_EQ(once, machineFileText(machine));
}

}  // namespace
}  // namespace velhost
