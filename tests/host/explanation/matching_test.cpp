// SPDX-License-Identifier: Apache-2.0
#include "host/explanation/matching.h"

#include <gtest/gtest.h>

#include "tests/host/explanation/explanationsample.h"

namespace velhost {
namespace {

using NKRXVEL20::TCIMValue;
using NKRXVEL20::host::findClass;
using NKRXVEL20::host::PropertyList;
using NKRXVEL20::host::PublishedInstance;

std::vector<Match> matches(const std::vector<PublishedInstance>& instances,
                           const Evidence& evidence) {
  std::vector<const PropertyList*> lists;
  for (const PublishedInstance& instance : instances) lists.push_back(&instance.properties);
  return matchesOf(*findClass(instances.front().className), lists, evidence);
}

// Which reply each was made of, by its place; -1: of none.
std::vector<int> repliesOf(const std::vector<Match>& found, const Evidence& evidence) {
  std::vector<int> places;
  for (const Match& match : found) {
    places.push_back(match.view.replies.empty()
                         ? -1
                         : static_cast<int>(match.view.replies.front() - evidence.replies.data()));
  }
  return places;
}

TEST(Matching, AnInstanceHasTheReplyThatExplainsMost) {
  Evidence evidence;
  evidence.replies = {dimmReply(0, 1, "P1"), dimmReply(0, 2, "P2"), dimmReply(1, 3, "P1"),
                      dimmReply(1, 4, "P2")};
  const std::vector<PublishedInstance> instances{
      dimm("Node 2: DIMM 4", "P2"), dimm("Node 1: DIMM 1", "P1"), dimm("Node 2: DIMM 3", "P1")};
  EXPECT_EQ((std::vector<int>{3, 0, 2}), repliesOf(matches(instances, evidence), evidence));
}

TEST(Matching, OfEqualRepliesEachIsTakenInTurn) {
  Evidence evidence;
  for (int i = 0; i < 3; ++i) evidence.replies.push_back(dimmReply(0, 1, "P1"));
  const std::vector<PublishedInstance> instances(4, dimm("DIMM 1", "P1"));
  EXPECT_EQ((std::vector<int>{0, 1, 2, 0}), repliesOf(matches(instances, evidence), evidence));
}

TEST(Matching, NothingIsClaimedOfBytesThatGiveAnotherValue) {
  Evidence evidence;
  evidence.replies = {dimmReply(0, 1, "P1")};
  const std::vector<PublishedInstance> instances{dimm("DIMM 1", "P9")};
  const auto found = matches(instances, evidence);
  const auto& cimClass = *findClass("KRXSG_Vpd");
  for (const PropertyLines& lines : linesOf(cimClass)) {
    const PropertyLines holding = holdingFor(lines, instances.front().properties);
    const Explained explained = explainedBy(holding, found.front(), cimClass);
    if (lines.property->name == "Name") {
      EXPECT_EQ(Fit::kGives, explained.fit);
    } else if (lines.property->name == "PartNumber") {
      EXPECT_EQ(nullptr, explained.line);
    }
  }
}

// Vendor is a rule of the collector's own: its bytes are told where the rest confirms the reply.
TEST(Matching, AnOpenRuleIsToldOfAConfirmedReplyAlone) {
  Evidence evidence;
  evidence.replies = {dimmReply(0, 1, "P1")};
  const auto& cimClass = *findClass("KRXSG_Vpd");
  for (const bool isConfirmed : {true, false}) {
    PublishedInstance instance{"KRXSG_Vpd", {{"Vendor", TCIMValue("KRX")}}};
    if (isConfirmed) instance.properties.emplace_back("PartNumber", TCIMValue("P1"));
    const PropertyLines lines{NKRXVEL20::host::findProperty(cimClass, "Vendor"),
                              {originOf("DotCommand.VEL|04 03 05 0B n|bytes 64-71|JEP106 maker")}};
    View view{{&evidence.replies.front()}, {}, std::nullopt, nullptr, 0, nullptr};
    Match match{&instance.properties, view, {}};
    if (isConfirmed) match.confirmed = {Part::kReply};
    EXPECT_EQ(isConfirmed, explainedBy(lines, match, cimClass).line != nullptr);
  }
}

TEST(Matching, AStructureHasToGiveAllOfTheInstance) {
  // Type 17 with the locator, the bank and a part number; the strings behind it.
  const auto slot = [](const std::string& strings, unsigned number) {
    Bytes bytes(84);
    bytes[0] = 17;
    bytes[1] = 84;
    bytes[16] = 1;
    bytes[17] = 2;
    bytes[26] = 3;
    bytes.insert(bytes.end(), strings.begin(), strings.end());
    bytes.push_back(0);
    return Structure{bytes, 17, number};
  };
  using namespace std::literals;
  Evidence evidence;
  evidence.structures = {slot("A1\0B\0P1\0"s, 1), slot("A2\0B\0P1\0"s, 2)};
  const auto module = [](const char* locator) {
    return PublishedInstance{"KRXSG_PhysicalMemory",
                             {{"DeviceLocator", TCIMValue(locator)},
                              {"BankLocator", TCIMValue("B")},
                              {"PartNumber", TCIMValue("P1")}}};
  };
  const std::vector<PublishedInstance> instances{module("A2"), module("A1")};
  const auto found = matches(instances, evidence);
  EXPECT_EQ(2U, found[0].view.structures.at(17)->number);
  EXPECT_EQ(1U, found[1].view.structures.at(17)->number);
}

TEST(Matching, ManyInstancesTakeTheirRepliesInOneGo) {
  Evidence evidence;
  std::vector<PublishedInstance> instances;
  for (int i = 0; i < 6000; ++i) {
    const auto number = static_cast<unsigned char>(i % 250 + 1);
    evidence.replies.push_back(dimmReply(i / 250, number, "P" + std::to_string(i)));
    instances.push_back(
        dimm("Node " + std::to_string(i / 250 + 1) + ": DIMM " + std::to_string(number),
             "P" + std::to_string(i)));
  }
  const auto places = repliesOf(matches(instances, evidence), evidence);
  for (int i = 0; i < 6000; ++i) ASSERT_EQ(i, places[static_cast<std::size_t>(i)]);
}

}  // namespace
}  // namespace velhost
