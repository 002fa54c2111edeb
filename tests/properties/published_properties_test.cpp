// SPDX-License-Identifier: Apache-2.0
//
// What holds of the documents of every machine, tried on random ones.
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "tests/properties/judge.h"
#include "tests/properties/machinerun.h"
#include "tests/properties/randommachine.h"

namespace velhost::properties {
namespace {

std::string judged(const char* witness, const std::string& machine) {
  return Judge::instance().complaint(
      witness, {{"machine", machine}, {"document", queried(machine).document}});
}

RC_GTEST_PROP(RandomMachine, EveryPublishedTextComesFromTheBytesThatTheSchemaNames, ()) {
  const MachineText machine = *randomMachine(Framework::kSometimesFails);
  RC_ASSERT(judged("origins", machine.text) == "");
}

RC_GTEST_PROP(RandomMachine, TheDocumentIsTheOneThatTheSecondWitnessWorksOut, ()) {
  const MachineText machine = *randomMachine(Framework::kSometimesFails);
  RC_ASSERT(judged("model", machine.text) == "");
}

RC_GTEST_PROP(RandomMachine, TheNumbersOfInstancesFollowTheMachine, ()) {
  const MachineText machine = *randomMachine(Framework::kSound);
  RC_ASSERT(judged("counts", machine.text) == "");
}

}  // namespace
}  // namespace velhost::properties
