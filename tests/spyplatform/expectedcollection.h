// SPDX-License-Identifier: Apache-2.0
//
// The calls of a whole collection, for those tests that share one: from the construction of the
// plug-in's object to the last instance that is made, and those that publish them.
#pragma once

#include <string>
#include <vector>

#include "tests/spyplatform/expectedcalls.h"

namespace spyplatform {

// The instances of the classes that a machine has any of.
struct Collected {
  std::vector<std::string> diagnostics;
  std::vector<std::string> systemBios;
  std::vector<std::string> hardware;
  std::vector<std::string> vpd;
  std::vector<std::string> main;
  std::vector<std::string> bootRom;
  std::vector<std::string> cKVM;
};

// What a request for every class publishes.
void publishAll(ExpectedCalls& expected, const Collected& collected);

// There is no other source of the components' data.
void noFruSource(ExpectedCalls& expected);

// On the machine of describeMachineWithOneDotCommandSP().
Collected collectFromOneDotCommandSP(ExpectedCalls& expected);

}  // namespace spyplatform
