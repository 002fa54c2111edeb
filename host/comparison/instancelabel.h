// SPDX-License-Identifier: Apache-2.0
//
// Instances in one line for people.
#pragma once

#include <string>

#include "velhost/cimnamespace.h"

namespace velhost {

// What the instance is called, with the keys that the name does not tell: "DASD BackPlane
// (SlotNumber 2)". One that has neither name nor keys is called by its values.
std::string instanceLabel(const NKRXVEL20::host::PublishedInstance& instance);

// What tells most of it besides: "1.08 (build ABC123)", or part and serial number. May be empty.
std::string instanceDetail(const NKRXVEL20::host::PublishedInstance& instance);

// The text without anything that a terminal obeys, and of bounded length.
std::string labelText(std::string_view text);

}  // namespace velhost
