// SPDX-License-Identifier: Apache-2.0
//
// The machine types that switch special cases: four-digit model numbers of the maker's servers.
#pragma once

#include <algorithm>
#include <array>
#include <string_view>

namespace spfirmwarevpd {

// Carry a cKVM device.
inline constexpr std::array<std::string_view, 12> kcKVMMachines = {
    "3105", "3110", "3220", "3225", "3340", "3345", "3450", "3455", "3560", "3565", "3670", "3675"};

// Name SP firmware in SMBIOS that may not be there.
inline constexpr std::array<std::string_view, 2> kBrennaMachines = {"4210", "4215"};

// Carry more BIOS structures than count: only the first is published.
inline constexpr std::array<std::string_view, 2> kCallowayMachines = {"4320", "4325"};
inline constexpr std::array<std::string_view, 1> kDurnikMachines = {"4430"};

// Keep a diagnostics record on every node.
inline constexpr std::array<std::string_view, 5> kPerNodeDiagnosticsMachines = {
    "5010", "5020", "5030", "5040", "5050"};

// The machine type stands in the list, whole.
template <std::size_t Size>
bool isOneOf(std::string_view machineType, const std::array<std::string_view, Size>& machines) {
  return std::ranges::find(machines, machineType) != machines.end();
}

}  // namespace spfirmwarevpd
