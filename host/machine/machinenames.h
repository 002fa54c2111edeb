// SPDX-License-Identifier: Apache-2.0
//
// The names that machine files use, for those who read and those who write them.
#pragma once

#include <algorithm>
#include <string_view>
#include <utility>

#include "velhost/cimnamespace.h"
#include "velhost/spdriver.h"

namespace velhost {

inline constexpr std::string_view kMachineFormat = "vel-machine/1";

inline constexpr std::pair<std::string_view, NKRXVEL20::host::SPKind> kSPKinds[] = {
    {"dot-command", NKRXVEL20::host::SPKind::kDotCommand},
    {"tamber", NKRXVEL20::host::SPKind::kTamber},
    {"none", NKRXVEL20::host::SPKind::kNone},
};

inline constexpr std::pair<std::string_view, NKRXVEL20::host::CimOperation> kOperations[] = {
    {"get_class", NKRXVEL20::host::CimOperation::kGetClass},
    {"create_instance", NKRXVEL20::host::CimOperation::kCreateInstance},
    {"enumerate_instances", NKRXVEL20::host::CimOperation::kEnumerateInstances},
    {"get_property", NKRXVEL20::host::CimOperation::kGetProperty},
    {"set_property", NKRXVEL20::host::CimOperation::kSetProperty},
    {"add_to_class", NKRXVEL20::host::CimOperation::kAddToClass},
};

// What a fault throws: true for a std::runtime_error.
inline constexpr std::pair<std::string_view, bool> kThrownAsRuntimeError[] = {
    {"TVELException", false},
    {"runtime_error", true},
};

// The name of a value that the table has.
template <class T, std::size_t N>
std::string_view nameIn(const std::pair<std::string_view, T> (&names)[N], T value) {
  return std::ranges::find(names, value, &std::pair<std::string_view, T>::second)->first;
}

}  // namespace velhost
