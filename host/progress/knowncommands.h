// SPDX-License-Identifier: Apache-2.0
//
// The commands that the schema knows, in words.
#pragma once

#include <cstddef>
#include <set>
#include <string>
#include <vector>

#include "host/text/hextext.h"
#include "velhost/schema.h"
#include "velhost/spdriver.h"

namespace velhost {

struct KnownCommand {
  NKRXVEL20::host::TrafficEntry::Kind kind = NKRXVEL20::host::TrafficEntry::Kind::kDotCommand;
  Bytes command;                    // of IPMI: network function and command
  bool isNumbered = false;          // one more byte behind it, the component's number
  std::string words;                // "DIMM", "hardware revision level of a service processor"
  std::set<std::string> providers;  // of the classes that have values by it
};

// Each command once, in the order of the schema's classes. A component is called as the names of its
// instances have it, everything else as its class.
std::vector<KnownCommand> knownCommands(const NKRXVEL20::host::Schema& schema);

// Null: the schema does not know it.
const KnownCommand* findCommand(const std::vector<KnownCommand>& commands,
                                const NKRXVEL20::host::TrafficEntry& sent);

// The last byte of a numbered command that was sent.
unsigned componentNumber(const NKRXVEL20::host::TrafficEntry& sent);

}  // namespace velhost
