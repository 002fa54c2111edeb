// SPDX-License-Identifier: Apache-2.0
#include "host/reasons/classstate.h"

#include <array>
#include <cstddef>

namespace velhost {
namespace {

// In the order of State.
constexpr std::array<std::string_view, 9> kNames{
    "present",    "partial",    "absent",    "elsewhere", "unused",
    "unanswered", "unreadable", "forbidden", "failed",
};

}  // namespace

std::string_view stateName(State state) { return kNames[static_cast<std::size_t>(state)]; }

bool isTrouble(State state) { return state >= State::kUnanswered; }

}  // namespace velhost
