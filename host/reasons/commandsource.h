// SPDX-License-Identifier: Apache-2.0
//
// What was seen of the commands that a class's values come from.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "host/reasons/observations.h"
#include "host/reasons/origin.h"

namespace velhost {

// The command is one of those that the line names, with the request's data where that is told apart.
bool isOf(const Origin& origin, const NKRXVEL20::host::CommandTally& tally);

// It was answered the last time, and by a BMC with completion code 0.
bool isGood(const NKRXVEL20::host::CommandTally& tally);

// The lines are all of dot commands, of Tamber commands or of IPMI.
Verdict commandVerdict(std::span<const Origin> lines, const Observations& seen);

// A line for each command of these lines that was sent and is not good.
std::vector<std::string> refusedCommands(std::span<const Origin> origins, const Observations& seen);

// "the BMC refused command 06 52 with completion code C1", of a tally that is not good.
std::string refusalText(const NKRXVEL20::host::CommandTally& tally, const Observations& seen);

}  // namespace velhost
