// SPDX-License-Identifier: Apache-2.0
//
// Which exceptions pass to the framework, out of every call that a collection makes.
#include <algorithm>
#include <set>

#include "tests/spyplatform/machines.h"
#include "tests/spyplatform/spyfixture.h"

namespace spyplatform {
namespace {

using NKRXVEL20::TCIMValue;
using NKRXVEL20::TVELException;

const struct {
  const char* what;
  void (*describe)();
} kMachines[] = {
    {"without SP", describeMachineWithoutSP},
    {"one dot-command SP", describeMachineWithOneDotCommandSP},
    {"two nodes", describeMachineWithTwoNodes},
    {"Tamber SP", describeMachineWithTamberSP},
    {"cKVM", describeMachineWithcKVM},
};

class PassingExceptionsTest : public SpyTest {
 protected:
  void collect() {
    load();
    query(allClasses());
  }

  // How often each operation is called.
  std::map<std::string, int> operationsOf(void (*describe)()) {
    freshMachine(describe);
    collect();
    std::map<std::string, int> counts;
    for (const std::string& operation : state().operations) {
      if (!operation.starts_with('~')) ++counts[operation];  // a destructor throws nothing
    }
    plugin.reset();
    return counts;
  }

  void freshMachine(void (*describe)()) {
    plugin.reset();
    reset();
    describe();
  }

  // Nothing but destructions behind the call that threw.
  static void expectNothingBehind(const std::string& thrown, const std::string& what) {
    const Trace calls = takeTrace();
    const auto call = std::ranges::find_if(
        calls, [&](const std::string& line) { return line.ends_with(thrown); });
    ASSERT_NE(call, calls.end()) << what;
    for (auto behind = call + 1; behind != calls.end(); ++behind) {
      EXPECT_EQ(behind->front(), '~') << what << ": " << *behind;
    }
  }
};

// The first and the last call of each operation.
TEST_F(PassingExceptionsTest, ForeignExceptionPassesOutOfEveryCall) {
  for (const auto& machine : kMachines) {
    for (const auto& [operation, count] : operationsOf(machine.describe)) {
      for (const int nth : std::set<int>{1, count}) {
        const std::string what =
            std::string(machine.what) + ", " + operation + " " + std::to_string(nth);
        freshMachine(machine.describe);
        when(operation, throwsForeign(), nth);
        EXPECT_THROW(collect(), Foreign) << what;
        expectNothingBehind("throws something foreign", what);
      }
    }
  }
}

// Caught are the look-ups of classes and the creation and setting of instances, nothing else. The
// first entry of the log belongs to what the FRU probe catches, see below; a date may be made where
// it is set.
TEST_F(PassingExceptionsTest, RefusalPassesOutOfEveryCallButThoseThatCollectorsCatch) {
  const std::set<std::string> kCaughtSomewhere = {"GetClass",     "CreateInstance",
                                                  "GetInstances", "SetProperty",
                                                  "GetProperty",  "GetValueAsString"};
  for (const auto& machine : kMachines) {
    for (const auto& [operation, count] : operationsOf(machine.describe)) {
      if (kCaughtSomewhere.contains(operation)) continue;
      const bool isOfLog = operation == "Log" || operation == "GetCoreLogger";
      for (const int nth : std::set<int>{isOfLog ? 2 : 1, count}) {
        const std::string what =
            std::string(machine.what) + ", " + operation + " " + std::to_string(nth);
        freshMachine(machine.describe);
        when(operation, refuses(5), nth);
        EXPECT_THROW(collect(), TVELException) << what;
        expectNothingBehind("throws TVELException(5)", what);
      }
    }
  }
}

// The probe catches whatever the framework refuses from the look-up to the entry about what it found.
TEST_F(PassingExceptionsTest, RefusedEntryOfTheFruProbeIsCaught) {
  for (const char* operation : {"GetClass", "GetInstances", "GetCoreLogger", "Log"}) {
    freshMachine(describeMachineWithcKVM);
    load();
    when(operation, refuses(5), 1);
    EXPECT_NO_THROW(plugin->DetermineIPMIFRUExist(ns)) << operation;
    EXPECT_EQ(takeTrace().back(),
              "Log(3, \"spfirmwarevpd: Can't get any instance of KRXSG_IPMIFRU\")")
        << operation;
  }
}

// The namespace is asked for the SPs' names outside of what is caught.
TEST_F(PassingExceptionsTest, RefusalOfTheSPsNamesPasses) {
  const Rule kRules[] = {
      {"GetClass", {"KRXSG_QLA_ComputerSystem"}, refuses(5), 0, {}},
      {"GetInstances", {"KRXSG_QLA_ComputerSystem"}, refuses(5), 0, {}},
      {"GetProperty", {"KRXSG_QLA_ComputerSystem[0]", "SourceNode"}, refuses(5), 0, {}},
      {"GetValue", {"KRXSG_QLA_ComputerSystem[0].SourceNode"}, refuses(5), 0, {}},
      {"GetProperty", {"KRXSG_QLA_ComputerSystem[1]", "Description"}, refuses(5), 0, {}},
      {"GetValueAsString", {"KRXSG_QLA_ComputerSystem[1].Description"}, refuses(5), 0, {}},
  };
  for (const Rule& rule : kRules) {
    freshMachine(describeMachineWithOneDotCommandSP);
    state().rules.push_back(rule);
    EXPECT_THROW(collect(), TVELException) << rule.operation;
    expectNothingBehind("throws TVELException(5)", rule.operation + " " + rule.parts.front());
  }
}

// What the look-up of a USB device's description gives, and what becomes of the cKVM probe.
TEST_F(PassingExceptionsTest, OnlyTheLookUpOfADescriptionIsCaught) {
  constexpr char kNoDescription[] =
      "Log(3, \"spfirmwarevpd: No Description property in the current instance of "
      "KRXSG_USBDevice\")";
  const struct {
    const char* what;
    Rule rule;
    bool passes;
    Trace noted;
  } cases[] = {
      {"refused look-up", {"GetProperty", {"[0]"}, refuses(12), 0, {}}, false, {kNoDescription}},
      {"null instance",
       {"GetInstances", {"USBDevice"}, null(), 0, {}},
       false,
       {kNoDescription, kNoDescription, kNoDescription}},
      {"null property", {"GetProperty", {"[0]"}, null(), 0, {}}, true, {}},
      {"refused value", {"GetValueAsString", {"[0]"}, refuses(12), 0, {}}, true, {}},
  };
  for (const auto& c : cases) {
    freshMachine(describeMachineWithcKVM);
    load();
    state().rules.push_back(c.rule);
    if (c.passes) {
      EXPECT_THROW(plugin->DeterminecKVMExist(ns), TVELException) << c.what;
    } else {
      EXPECT_NO_THROW(plugin->DeterminecKVMExist(ns)) << c.what;
    }
    EXPECT_EQ(linesWith(takeTrace(), "No Description"), c.noted) << c.what;
  }
}

TEST_F(PassingExceptionsTest, DeviceBehindOneWithoutDescriptionIsLookedAt) {
  freshMachine(describeMachineWithcKVM);
  load();
  when("GetProperty", {"[0]"}, refuses(12));
  plugin->DeterminecKVMExist(ns);
  EXPECT_TRUE(plugin->cKVMExists);
}

// The collection counts as done before the cKVM is looked for; before that it does not.
TEST_F(PassingExceptionsTest, ExceptionBehindTheCollectionDoesNotBringItAgain) {
  const struct {
    const char* what;
    Rule rule;
    bool collectsAgain;
  } cases[] = {
      {"out of the cKVM probe", {"GetInstances", {"USBDevice"}, throwsForeign(), 1, {}}, false},
      {"out of the IPMI request", {"sendIPMICommand", {}, throwsForeign(), 1, {}}, false},
      {"out of the driver", {"isTamber", {}, throwsForeign(), 1, {}}, true},
      {"out of the OEM strings", {"smBiosGetFirst", {}, throwsForeign(), 1, {}}, true},
  };
  for (const auto& c : cases) {
    freshMachine(describeMachineWithcKVM);
    state().rules.push_back(c.rule);
    EXPECT_THROW(collect(), Foreign) << c.what;
    takeTrace();
    query({"KRXSG_DeviceDriver"});
    const Trace calls = takeTrace();
    EXPECT_EQ(linesWith(calls, "IPMIFRU"), Trace{}) << c.what;  // probed once, in any case
    if (c.collectsAgain) {
      EXPECT_EQ(linesWith(calls, "Entering SPFirmwareVpd::getType11()").size(), 1U) << c.what;
    } else {
      EXPECT_EQ(calls, Trace{"KRXSG_DeviceDriver.GetName({})"}) << c.what;
    }
  }
}

TEST_F(PassingExceptionsTest, ClassThatIsNotServedIsRefusedBehindThoseThatAre) {
  freshMachine(describeMachineWithTamberSP);
  load();
  query({});
  takeTrace();
  EXPECT_THROW(query({"KRXSG_SPROMFirmwareVPDMain", "KRXSG_Other", "KRXSG_SystemBIOSElement"}),
               TVELException);
  EXPECT_EQ(takeTrace(),
            (Trace{"KRXSG_SPROMFirmwareVPDMain.GetName({})", "instance#1.AddToClass({})",
                   "KRXSG_Other.GetName({})", "TVELException(2)"}));
}

}  // namespace
}  // namespace spyplatform
