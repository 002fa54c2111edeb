// SPDX-License-Identifier: Apache-2.0
#include "host/collectors/witness.h"

#include <gtest/gtest.h>

namespace velhost {
namespace {

// Why the firmware of tape drives is not there. It comes from the drives' class, which the request asks
// for or not.
std::string reasonAfter(Witness& witness, bool init, bool isEnumerated) {
  NKRXVEL20::host::CimNamespace ns({}, {});
  QueryResult result;
  result.requested = {"KRXSG_USBTapeFirmwareElement"};
  witness.begin(init);
  if (isEnumerated) witness.sawEnumeration("KRXSG_TapeDrive");
  witness.sawOutcome({"SPFirmwareVPD", "", false, {}});
  witness.conclude(ns, false, result);
  return result.states.front().reason;
}

TEST(Witness, WhatWasEnumeratedCountsUntilTheNextInit) {
  Machine machine;
  machine.source = "file";
  Witness witness(machine, std::chrono::milliseconds(0));
  EXPECT_EQ("there is no KRXSG_TapeDrive", reasonAfter(witness, true, true));
  EXPECT_EQ("there is no KRXSG_TapeDrive", reasonAfter(witness, false, false));
  EXPECT_EQ("its collector asks none of its sources", reasonAfter(witness, true, false));
}

}  // namespace
}  // namespace velhost
