// SPDX-License-Identifier: Apache-2.0
//
// How a requested class ended, so that a failure never looks like an absence.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace velhost {

enum class State {
  kPresent,     // instances, all that there should be
  kPartial,     // instances, and something of them could not be told
  kAbsent,      // this machine has none
  kElsewhere,   // left to another collector
  kUnused,      // no collector ever fills it
  kUnanswered,  // an SP or BMC that should have answered did not
  kUnreadable,  // a source could not be read
  kForbidden,   // no permission
  kFailed,      // the plug-in or the framework failed
};

// As documents have it: "present", "partial", ...
std::string_view stateName(State state);

// Something should have answered and did not.
bool isTrouble(State state);

struct ClassState {
  std::string className;
  std::string collector;  // that serves it; empty: none
  State state = State::kPresent;
  std::string reason;                   // one line in plain words; empty: there is nothing to say
  std::vector<std::string> steps = {};  // that failed, a line each; kept where they are asked for
};

// How a collector of the request did.
struct CollectorState {
  std::string name;
  std::string version;
  bool hasAnswered = true;
  std::string reason;  // why it has not, in one line
};

}  // namespace velhost
