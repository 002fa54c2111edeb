// SPDX-License-Identifier: Apache-2.0
#include "host/report/unfilled.h"

#include <gtest/gtest.h>

#include "tests/host/formats/formatsample.h"

namespace velhost {
namespace {

using NKRXVEL20::host::TrafficEntry;

TrafficEntry sent(int sp, std::vector<unsigned char> command, bool answered,
                  std::int32_t length = 0) {
  TrafficEntry entry;
  entry.sp = sp;
  entry.command = std::move(command);
  entry.answered = answered;
  entry.length = length;
  return entry;
}

QueryResult vpdResult(const std::vector<const char*>& names, std::vector<TrafficEntry> traffic) {
  QueryResult result = resultOf("KRXSG_Vpd", {});
  for (const char* const name : names) {
    result.instances.push_back({"KRXSG_Vpd", {{"Name", TCIMValue(name)}}});
  }
  result.traffic = std::move(traffic);
  return result;
}

// "2: DIMM 5 empty; ..."
std::string placesText(const QueryResult& result) {
  constexpr const char* kWhy[] = {"empty", "unanswered", "untold"};
  std::string text;
  for (const Unfilled& place : unfilledPlaces(result)) {
    text += (place.node ? std::to_string(*place.node) : "-") + ": " + place.title + ' ' +
            kWhy[static_cast<std::size_t>(place.why)] + "; ";
  }
  return text;
}

TEST(Unfilled, TheTrafficTellsWhichPlacesThereAre) {
  const struct {
    const char* what;
    std::vector<TrafficEntry> traffic;
    const char* places;
  } cases[] = {
      {"filled", {sent(0, {4, 3, 5, 0x0B, 1}, true, 99)}, ""},
      {"answered with nothing", {sent(0, {4, 3, 5, 0x0B, 1}, true, 0)}, "1: DIMM 1 empty; "},
      {"refused: empty or silent", {sent(1, {4, 3, 5, 0x0B, 5}, false)}, "2: DIMM 5 untold; "},
      {"refused, and there is but one",
       {sent(1, {4, 3, 5, 3, 1}, false)},
       "2: Processor Card unanswered; "},
      {"a number that the name does not have",
       {sent(0, {4, 3, 5, 0x0E, 2}, false)},
       "1: DASD BackPlane untold; "},
      {"answered by another data set",
       {sent(0, {4, 3, 5, 0x0D, 1}, false), sent(0, {4, 3, 5, 0x0D, 1}, true, 60)},
       ""},
      {"refused by both data sets",
       {sent(0, {4, 3, 5, 0x0D, 1}, false), sent(0, {4, 3, 5, 0x0D, 1}, false)},
       "1: Power BackPlane unanswered; "},
      {"of each SP its own",
       {sent(0, {4, 3, 5, 0x0C, 1}, true, 60), sent(1, {4, 3, 5, 0x0C, 2}, false)},
       "2: Power Supply 2 untold; "},
      {"commands for other things",
       {sent(0, {4, 3, 5, 6, 1}, false), sent(0, {4, 3, 5, 0x0B}, false),
        sent(0, {4, 3, 5, 0x0B, 1, 1}, false)},
       ""},
  };
  for (const auto& c : cases) EXPECT_EQ(c.places, placesText(vpdResult({}, c.traffic))) << c.what;
}

TEST(Unfilled, OtherwiseTheNumbersThatAreLeftOutDo) {
  const struct {
    const char* what;
    std::vector<const char*> names;
    const char* places;
  } cases[] = {
      {"none", {}, ""},
      {"no gap", {"DIMM 1", "DIMM 2"}, ""},
      {"one node", {"DIMM 1", "DIMM 4"}, "-: DIMM 2 untold; -: DIMM 3 untold; "},
      {"not from 1 on", {"DIMM 2"}, "-: DIMM 1 untold; "},
      {"kinds by themselves", {"DIMM 1", "Power Supply 2"}, "-: Power Supply 1 untold; "},
      {"numbers run on",
       {"Node 1: DIMM 1", "Node 1: DIMM 2", "Node 1: DIMM 3", "Node 2: DIMM 4"},
       "2: DIMM 5 untold; 2: DIMM 6 untold; "},
      {"gap at the seam",
       {"Node 1: Power Supply 1", "Node 1: Power Supply 2", "Node 2: Power Supply 4"},
       "2: Power Supply 3 untold; "},
      {"numbers begin anew",
       {"Node 1: DIMM 1", "Node 1: DIMM 2", "Node 2: DIMM 1", "Node 2: DIMM 3"},
       "2: DIMM 2 untold; "},
      {"no numbers in the names", {"DASD BackPlane"}, ""},
      {"number 0 and beyond any machine", {"DIMM 0", "DIMM 1025", "DIMM 99999999999999999999"}, ""},
  };
  for (const auto& c : cases) EXPECT_EQ(c.places, placesText(vpdResult(c.names, {}))) << c.what;
}

TEST(Unfilled, WhatIsNotAnsweredSaysWhichCommand) {
  const auto places = unfilledPlaces(
      vpdResult({}, {sent(0, {4, 3, 5, 0x0B, 2}, false), sent(0, {4, 3, 5, 3, 1}, false)}));
  ASSERT_EQ(2U, places.size());
  EXPECT_EQ("command 04 03 05 0B 02 was not answered; an empty slot looks so", places[0].reason);
  EXPECT_EQ("command 04 03 05 03 01 was not answered", places[1].reason);
}

TEST(Unfilled, ATitleMayEndInANumber) {
  const struct {
    const char* title;
    const char* word;
    std::uint64_t number;
  } cases[] = {
      {"DIMM 5", "DIMM", 5},
      {"Power Supply 12", "Power Supply", 12},
      {"Planar", "Planar", 0},
      {"P1-DIMMA1", "P1-DIMMA1", 0},
      {"DIMM 5 ", "DIMM 5 ", 0},
      {"DIMM -5", "DIMM -5", 0},
      {"DIMM 99999999999999999999", "DIMM 99999999999999999999", 0},
      {"7", "7", 0},
  };
  for (const auto& c : cases) {
    const NumberedTitle numbered = numberedTitle(c.title);
    EXPECT_EQ(c.word, numbered.word) << c.title;
    EXPECT_EQ(c.number, numbered.number) << c.title;
  }
}

}  // namespace
}  // namespace velhost
