// SPDX-License-Identifier: Apache-2.0
#include "collectors/ipmiinventory/sdrrepository.h"

#include <gtest/gtest.h>

#include "scriptedbmc.h"

namespace ipmiinventory {
namespace {

// Behind the record ID: version, type, length, rest. Of 21, 22, 21 and 6 bytes.
const std::string kFru1 = " 00 51 11 10 20 01 80 00 00 10 02 0A 01 00 C5 50 53 55 20 31";
const std::string kFru3 = " 00 51 11 11 20 03 80 00 00 10 02 0F 01 00 C6 42 61 63 6B 20 31";
const std::string kFru1Again = " 00 51 11 10 20 01 80 00 00 10 02 0A 02 00 C5 50 53 55 20 32";
const std::string kSensor = " 00 51 01 01 20";

std::string whole(const char* id) { return "0A 23 00 00 " + std::string(id) + " 00 FF"; }
std::string good(const char* next, const char* id, const std::string& record) {
  return "00 " + std::string(next) + " " + id + record;
}

// "ID NAME", a device a line, then the fault if there is one.
std::vector<std::string> walk(std::vector<Exchange> exchanges) {
  ScriptedBmc bmc(std::move(exchanges));
  const FruLocators found = readFruLocators(bmc);
  std::vector<std::string> lines;
  for (const FruLocator& locator : found.locators) {
    lines.push_back(std::to_string(locator.fruDeviceId) + " " + locator.name);
  }
  if (!found.fault.empty()) lines.push_back(found.fault);
  return lines;
}

using Lines = std::vector<std::string>;

TEST(SdrRepository, ARecordIsOneCommandAndNeedsNoReservation) {
  EXPECT_EQ((Lines{"1 PSU 1", "3 Back 1"}),
            walk({{whole("00 00"), good("05 00", "01", kSensor)},
                  {whole("05 00"), good("06 00", "05", kFru3)},
                  {whole("06 00"), good("07 00", "06", kFru1)},
                  {whole("07 00"), good("FF FF", "07", kFru1Again)}}));
}

TEST(SdrRepository, AnEmptyOneHasNoFault) { EXPECT_EQ(Lines{}, walk({{whole("00 00"), "CB"}})); }

TEST(SdrRepository, AWalkThatEndsEarlySaysSo) {
  EXPECT_EQ(Lines{"a record cannot be read"}, walk({{whole("00 00"), ""}}));
  EXPECT_EQ(Lines{"a record cannot be read"}, walk({{whole("00 00"), "C1"}}));
  EXPECT_EQ(Lines{"a record cannot be read"}, walk({{whole("00 00"), "00 01"}}));
  EXPECT_EQ((Lines{"1 PSU 1", "a record cannot be read"}),
            walk({{whole("00 00"), good("02 00", "01", kFru1)}, {whole("02 00"), "CB"}}));
}

TEST(SdrRepository, ARecordThatLeadsBackEndsTheWalk) {
  const Lines kFound{"1 PSU 1", "a record leads back"};
  const Exchange first{whole("00 00"), good("02 00", "01", kSensor)};
  for (const char* next : {"01 00", "02 00", "00 00"}) {  // the first, itself, the start
    EXPECT_EQ(kFound, walk({first, {whole("02 00"), good(next, "02", kFru1)}})) << next;
  }
}

TEST(SdrRepository, ARecordThatIsTooMuchIsReadInPieces) {
  for (const char* refusal : {"C7", "C8", "CA"}) {
    EXPECT_EQ((Lines{"1 PSU 1"}),
              walk({{whole("00 00"), refusal},
                    {"0A 22", "00 34 12"},
                    {"0A 23 34 12 00 00 00 05", "00 02 00 01 00 51 01 30"},  // a sensor: no more
                    {"0A 23 34 12 02 00 00 05", "00 FF FF 02 00 51 11 10"},
                    {"0A 23 34 12 02 00 05 10",
                     "00 FF FF 20 01 80 00 00 10 02 0A 01 00 C5 50 53 55 20 31"}}))
        << refusal;
  }
}

TEST(SdrRepository, ARecordThatEndsInsideItsHeaderLocatesNothing) {
  EXPECT_EQ((Lines{"1 PSU 1"}), walk({{whole("00 00"), good("02 00", "01", "")},
                                      {whole("02 00"), good("FF FF", "02", kFru1)}}));
}

TEST(SdrRepository, PiecesOfARecordWithoutAHeaderAreNotAskedFor) {
  const std::vector<Exchange> kFirst{{whole("00 00"), "CA"},
                                     {"0A 22", "00 34 12"},
                                     {"0A 23 34 12 00 00 00 05", "00 02 00 01 00 51"}};
  const struct {
    const char* what;
    const char* reply;
    Lines found;
  } kCases[] = {
      {"a header cut short", "00 FF FF 02 00 51 11", {}},
      {"a refused one", "C1", {"a record cannot be read"}},
      {"one without an answer", "", {"a record cannot be read"}},
  };
  for (const auto& c : kCases) {
    auto exchanges = kFirst;
    exchanges.push_back({"0A 23 34 12 02 00 00 05", c.reply});
    EXPECT_EQ(c.found, walk(exchanges)) << c.what;
  }
}

TEST(SdrRepository, PiecesGetSmallerAndStaySo) {
  const std::string record = "0A 23 34 12 00 00 ";
  const std::string second = "0A 23 34 12 02 00 ";
  EXPECT_EQ((Lines{"1 PSU 1"}),
            walk({{whole("00 00"), "CA"},
                  {"0A 22", "00 34 12"},
                  {record + "00 05", "00 02 00 01 00 51 11 10"},
                  {record + "05 10", "CA"},
                  {record + "05 08", "00 02 00 20 01 80 00 00 10 02 0A"},
                  {record + "0D 08", "00 02 00 01 00 C5 50 53 55 20 31"},
                  {second + "00 05", "00 FF FF 02 00 51 12 0B"},
                  {second + "05 08", "00 FF FF 20 00 00 07 00 00 00 07"},  // no FRU information
                  {second + "0D 03", "00 FF FF 01 00 C0"}}));
}

TEST(SdrRepository, WhatCannotBeHadOfALocatorIsLeftOut) {
  const std::string record = "0A 23 34 12 00 00 ";
  EXPECT_EQ((Lines{"1 P"}),
            walk({{whole("00 00"), "CA"},
                  {"0A 22", "00 34 12"},
                  {record + "00 05", "00 FF FF 01 00 51 11 FF"},
                  {record + "05 10", "00 FF FF 20 01 80 00 00 10 02 0A 01 00 C5 50"},
                  {record + "11 10", "CA"},
                  {record + "11 08", "CA"},
                  {record + "11 04", "CA"}}));
  EXPECT_EQ((Lines{"1 P"}),
            walk({{whole("00 00"), "CA"},
                  {"0A 22", "00 34 12"},
                  {record + "00 05", "00 FF FF 01 00 51 11 FF"},
                  {record + "05 10", "00 FF FF 20 01 80 00 00 10 02 0A 01 00 C5 50"},
                  {record + "11 10", "00 FF FF"}}));
}

TEST(SdrRepository, ALostReservationIsTakenAnew) {
  EXPECT_EQ((Lines{"1 PSU 1"}),
            walk({{whole("00 00"), "CA"},
                  {"0A 22", "00 34 12"},
                  {"0A 23 34 12 00 00 00 05", "00 FF FF 01 00 51 11 10"},
                  {"0A 23 34 12 00 00 05 10", "C5"},
                  {"0A 22", "00 35 12"},
                  {"0A 23 35 12 00 00 00 05", "00 FF FF 01 00 51 11 10"},
                  {"0A 23 35 12 00 00 05 10",
                   "00 FF FF 20 01 80 00 00 10 02 0A 01 00 C5 50 53 55 20 31"}}));
}

TEST(SdrRepository, ABmcThatWantsAReservationForWholeRecordsGetsOne) {
  EXPECT_EQ((Lines{"1 PSU 1"}), walk({{whole("00 00"), "C5"},
                                      {"0A 22", "00 34 12"},
                                      {"0A 23 34 12 00 00 00 FF", good("FF FF", "01", kFru1)}}));
}

TEST(SdrRepository, ReservationsThatAreLostForEverEndTheWalk) {
  std::vector<Exchange> exchanges{{whole("00 00"), "C5"}};
  for (int i = 0; i < 8; ++i) {
    exchanges.push_back({"0A 22", "00 34 12"});
    exchanges.push_back({"0A 23 34 12 00 00 00 FF", "C5"});
  }
  EXPECT_EQ(Lines{"a record cannot be read"}, walk(exchanges));
}

TEST(SdrRepository, WithoutAReservationThereAreNoPieces) {
  for (const char* reply : {"", "C1", "00", "00 01"}) {
    EXPECT_EQ(Lines{"a record cannot be read"}, walk({{whole("00 00"), "CA"}, {"0A 22", reply}}))
        << reply;
  }
}

// Every record a new one.
class EndlessBmc : public Bmc {
 public:
  std::optional<Reply> ask(const Request& request) override {
    ++asked;
    const auto next = static_cast<std::uint8_t>(request.data[2] + 1);
    const auto carry = static_cast<std::uint8_t>(request.data[3] + (next == 0 ? 1 : 0));
    return Reply{0, {next, carry, request.data[2], request.data[3], 0x51, 0x01, 0x00}};
  }
  int asked = 0;
};

TEST(SdrRepository, RecordsWithoutEndHaveOne) {
  EndlessBmc bmc;
  EXPECT_EQ("there are too many records", readFruLocators(bmc).fault);
  EXPECT_EQ(4096, bmc.asked);
}

}  // namespace
}  // namespace ipmiinventory
