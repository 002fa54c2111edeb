// SPDX-License-Identifier: Apache-2.0
//
// Five machines, one of each kind.
#pragma once

#include <string>
#include <vector>

namespace spyplatform {

// OEM strings, of the diagnostics, blank and of a Torvik processor.
void describeMachineWithoutSP();

// Of everything a bit: components that answer, that answer with nothing and that fail.
void describeMachineWithOneDotCommandSP();

// Both SPs answer; the first one's diagnostics record is empty.
void describeMachineWithTwoNodes();

// A BMC with IPMI drivers: another source describes the components, and the namespace is not asked.
void describeMachineWithTamberSP();

// Two FRU instances, a keyboard, the cKVM device and one that is not looked at any more.
void describeMachineWithcKVM();

// Every class that the plug-in serves.
const std::vector<std::string>& allClasses();

}  // namespace spyplatform
