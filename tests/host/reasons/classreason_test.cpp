// SPDX-License-Identifier: Apache-2.0
//
// Somebody else's classes and collector: what they come to is worked out from their schema alone.
#include "host/reasons/classreason.h"

#include <gtest/gtest.h>

#include <deque>
#include <map>
#include <span>

namespace velhost {
namespace {

using NKRXVEL20::TCIMValue;
using NKRXVEL20::host::CimOperation;
using NKRXVEL20::host::CommandTally;
using NKRXVEL20::host::PropertyList;
using NKRXVEL20::host::PublishedInstance;
using Kind = NKRXVEL20::host::TrafficEntry::Kind;

constexpr char kMof[] = R"(
Qualifier LeftTo : string[], Scope(class), Flavor(Restricted);
Qualifier MachineTypes : string[], Scope(class), Flavor(Restricted);
Qualifier MappingStrings : string[], Scope(class, property);
Qualifier Provider : string, Scope(any), Flavor(Restricted);

[Provider("FanCollector")]
class MINE_Fan {
  [MappingStrings { "IPMI.VEL|06 52|bytes 9-|text", "Constant.VEL|1.0" }]
  string Level;
  [MappingStrings { "Constant.VEL|fan" }]
  string Kind;
};
[Provider("FanCollector"), LeftTo { "MINE_Fan", "IPMI.VEL" }]
class MINE_Rotor {
  [MappingStrings { "DotCommand.VEL|04 03 05 07|byte 0|decimal|when Name lacks A",
                    "SMBIOS.DMTF|type 11|string with ROTOR|text|when Name has A" }]
  string Name;
};
[Provider("FanCollector"), MachineTypes { "1111", "2222" },
 MappingStrings { "Instance.VEL|MINE_Fan.Kind|has big" }]
class MINE_Blade {
  [MappingStrings { "Instance.VEL|MINE_Fan.Level|text" }]
  string Level;
};
[Provider("FanCollector")]
class MINE_Wind {
  [MappingStrings { "Registry.MINE|a key" }]
  string Force;
};
[Provider("FanCollector")]
class MINE_Nothing {
  string Name;
};
)";

CommandTally sent(const char* command, unsigned refused) {
  return {Kind::kDotCommand, 0, bytesOfHex(command), 1, refused, refused == 0, {}};
}

CommandTally ipmi(const char* reply) {
  return {Kind::kIpmiCommand, 0, bytesOfHex("01 20 06 00 52 00 00 00 00"), 1, 0, true,
          bytesOfHex(reply)};
}

class ClassReason : public ::testing::Test {
 protected:
  ClassReason() : before_(NKRXVEL20::host::currentSchema()) {
    const NKRXVEL20::host::SchemaFile file{"mine.mof", kMof};
    NKRXVEL20::host::setSchema(NKRXVEL20::host::parseSchema(std::span(&file, 1)));
    seen_.machineType = "1111";
    seen_.smbios = std::make_shared<const NKRXVEL20::host::SmbiosTable>();
    seen_.instancesOf = [this](const std::string& name) { return others_[name]; };
  }
  ~ClassReason() override { NKRXVEL20::host::setSchema(before_); }

  void publish(PropertyList instance) {
    instances_.push_back(std::move(instance));
    outcome_.instances.push_back(&instances_.back());
  }

  // "state: reason"
  std::string told(const std::string& className) const {
    const ClassState state = stateOf(*NKRXVEL20::host::findClass(className), outcome_, seen_);
    EXPECT_EQ(className, state.className);
    EXPECT_EQ("FanCollector", state.collector);
    return std::string(stateName(state.state)) + ": " + state.reason;
  }

  NKRXVEL20::host::SchemaPtr before_;
  Observations seen_;
  ClassOutcome outcome_{"FanCollector", "", false, {}};
  std::deque<PropertyList> instances_;
  std::map<std::string, std::vector<PublishedInstance>> others_;
};

TEST_F(ClassReason, WithoutASourceNobodyFillsIt) {
  EXPECT_EQ("unused: no collector ever fills it", told("MINE_Nothing"));
}

TEST_F(ClassReason, WithInstancesAndNothingWrongItIsPresent) {
  publish({});
  for (const char* const name : {"MINE_Fan", "MINE_Rotor", "MINE_Blade", "MINE_Wind"}) {
    EXPECT_EQ("present: ", told(name)) << name;
  }
}

TEST_F(ClassReason, ACollectorThatFailedIsAFailure) {
  outcome_.failure = "FanCollector ended in int";
  EXPECT_EQ("failed: FanCollector ended in int", told("MINE_Nothing"));
  publish({});
  EXPECT_EQ("partial: FanCollector ended in int", told("MINE_Fan"));
}

TEST_F(ClassReason, CallsThatTheFrameworkRefusedAreAFailure) {
  seen_.refusedCalls = {{CimOperation::kCreateInstance, "MINE_Fan", "", 3},
                        {CimOperation::kSetProperty, "MINE_Wind", "Force", 1}};
  EXPECT_EQ("failed: the framework refused create_instance of MINE_Fan 3 times", told("MINE_Fan"));
  EXPECT_EQ("failed: the framework refused set_property of MINE_Wind.Force once",
            told("MINE_Wind"));
  publish({});
  EXPECT_EQ("partial: the framework refused set_property of MINE_Wind.Force once",
            told("MINE_Wind"));
}

TEST_F(ClassReason, ASourceThatOnlyItsCollectorSeesSaysNone) {
  EXPECT_EQ("absent: its collector found no Registry.MINE|a key", told("MINE_Wind"));
}

TEST_F(ClassReason, TheFilesOwnInstancesAreAllThereIs) {
  outcome_.isGiven = true;
  EXPECT_EQ("absent: the machine file lists none", told("MINE_Fan"));
  seen_.refusedCalls = {{CimOperation::kGetProperty, "MINE_Fan", "Level", 1}};
  publish({});
  EXPECT_EQ("present: ", told("MINE_Fan"));
}

TEST_F(ClassReason, AClassIsLeftToAnotherThatHasInstances) {
  seen_.driver.isDotCommand = false;
  EXPECT_EQ("absent: no SP speaks dot commands; SMBIOS has no structure of type 11",
            told("MINE_Rotor"));
  seen_.driver.hasBmc = seen_.driver.hasIpmiDrivers = true;
  EXPECT_EQ("elsewhere: left to MINE_Fan, as a BMC answers", told("MINE_Rotor"));
  others_["MINE_Fan"] = {{"MINE_Fan", {}}, {"MINE_Fan", {}}};
  EXPECT_EQ("elsewhere: left to MINE_Fan, which has 2", told("MINE_Rotor"));
}

TEST_F(ClassReason, OtherMachineTypesHaveNone) {
  seen_.machineType = "3333";
  EXPECT_EQ("absent: machines of type 3333 have none", told("MINE_Blade"));
  seen_.machineType = "";
  EXPECT_EQ("absent: the machine type is not known, and only some have one", told("MINE_Blade"));
  seen_.smbios = nullptr;
  EXPECT_EQ("unreadable: the SMBIOS tables cannot be opened (status 1)", told("MINE_Blade"));
  seen_.machineType = "X2222AC1";
  EXPECT_EQ(R"(absent: no MINE_Fan has "big" in its Kind)", told("MINE_Blade"));
}

TEST_F(ClassReason, WhatTellsOfAnInstanceIsLookedAtFirst) {
  EXPECT_EQ(R"(absent: no MINE_Fan has "big" in its Kind)", told("MINE_Blade"));
  seen_.failedCollectors = {{"FanCollector", "it is not there"}};
  EXPECT_EQ("failed: MINE_Fan is missing: it is not there", told("MINE_Blade"));
  others_["MINE_Fan"] = {{"MINE_Fan", {{"Kind", TCIMValue("a big one")}}}};
  seen_.failedCollectors.clear();
  EXPECT_EQ("unused: its collector asks none of its sources", told("MINE_Blade"));
  seen_.enumerated = {"MINE_Fan"};
  EXPECT_EQ("absent: MINE_Fan was read, and names none", told("MINE_Blade"));
  seen_.refusedCalls = {{CimOperation::kEnumerateInstances, "MINE_Fan", "", 1}};
  EXPECT_EQ("failed: the framework refused enumerate_instances of MINE_Fan once",
            told("MINE_Blade"));
}

TEST_F(ClassReason, TheWorstTroubleIsTold) {
  seen_.driver.commands = {sent("04030507", 1)};
  EXPECT_EQ("unanswered: no SP answers dot commands: command 04 03 05 07 was refused once",
            told("MINE_Rotor"));
  seen_.smbios = nullptr;
  EXPECT_EQ("unreadable: the SMBIOS tables cannot be opened (status 1)", told("MINE_Rotor"));
}

TEST_F(ClassReason, TroubleOfASourceMakesAClassPartial) {
  publish({{"Name", TCIMValue("B")}});
  seen_.smbios = nullptr;  // which no instance here could have come from
  EXPECT_EQ("present: ", told("MINE_Rotor"));
  seen_.driver.commands = {sent("04030507", 1)};
  EXPECT_EQ("partial: no SP answers dot commands: command 04 03 05 07 was refused once",
            told("MINE_Rotor"));
  publish({{"Name", TCIMValue("A")}});
  EXPECT_EQ("partial: the SMBIOS tables cannot be opened (status 1)", told("MINE_Rotor"));
}

TEST_F(ClassReason, AValueThatStandsInIsTold) {
  const struct {
    const char* what;
    std::vector<CommandTally> commands;
    const char* level;
    const char* told;
  } cases[] = {
      {"refused",
       {ipmi("01 20 07 00 C1")},
       "1.0",
       "partial: 1.0 is a fixed value: the BMC refused command 06 52 with completion code C1"},
      {"answered without it",
       {ipmi("01 20 07 00 00 39")},
       "1.0",
       "partial: 1.0 is a fixed value: the answer to command 06 52 has none"},
      {"not sent", {}, "1.0", "partial: 1.0 is a fixed value: command 06 52 was not sent"},
      {"the level that was read is the same",
       {ipmi("01 20 07 00 00 31 20 2E 00 30")},
       "1.0",
       "present: "},
      {"another level", {ipmi("01 20 07 00 00 39")}, "9", "present: "},
      {"another level, refused the last time",
       {ipmi("01 20 07 00 D4 39")},
       "9",
       "partial: the BMC refused command 06 52 with completion code D4"},
  };
  for (const auto& c : cases) {
    outcome_.instances.clear();
    publish({{"Level", TCIMValue(c.level)}, {"Kind", TCIMValue("fan")}});
    seen_.driver.commands = c.commands;
    EXPECT_EQ(c.told, told("MINE_Fan")) << c.what;
  }
}

TEST_F(ClassReason, EachStepThatFailedIsTold) {
  const auto stepsOf = [this](const char* name) {
    return failedSteps(*NKRXVEL20::host::findClass(name), outcome_, seen_);
  };
  using Lines = std::vector<std::string>;
  EXPECT_EQ(Lines{}, stepsOf("MINE_Rotor"));
  outcome_.failure = "it\nbroke";
  seen_.refusedCalls = {{CimOperation::kCreateInstance, "MINE_Rotor", "", 3},
                        {CimOperation::kCreateInstance, "MINE_Fan", "", 3},
                        {CimOperation::kSetProperty, "MINE_Rotor", "Name", 1}};
  CommandTally second = sent("04030507", 1);
  second.sp = 1;
  seen_.driver.commands = {sent("04030507", 1), second, sent("04030508", 1)};
  seen_.smbios = nullptr;
  EXPECT_EQ((Lines{"it\\nbroke", "the framework refused create_instance of MINE_Rotor 3 times",
                   "the framework refused set_property of MINE_Rotor.Name once",
                   "command 04 03 05 07 was refused once by SP 1",
                   "command 04 03 05 07 was refused once by SP 2",
                   "the SMBIOS tables cannot be opened (status 1)"}),
            stepsOf("MINE_Rotor"));
}

TEST_F(ClassReason, AReasonIsOneLineOfBoundedLength) {
  outcome_.failure = "a\nb\x1b[2J\xFF" + std::string(10000, 'x');
  const std::string text = told("MINE_Fan");
  EXPECT_TRUE(text.starts_with("failed: a\\nb\\x1b[2J\\xffxxx")) << text;
  EXPECT_EQ(std::string("failed: ").size() + 240, text.size());
}

}  // namespace
}  // namespace velhost
