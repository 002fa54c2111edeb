// SPDX-License-Identifier: Apache-2.0
//
// What a reader looks for in any instance, also of a class of somebody else's: which node it belongs
// to, what it is called and which level it has. The schema's names of properties tell. Texts are as
// the collector gave them, so they may be no UTF-8.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "velhost/cimnamespace.h"

namespace velhost {

// The number in SourceNode. Where the schema says that a class's Name begins with the node's label
// ("Node 2: ", docs/schema.md), the number in that. nullopt: of no node in particular.
std::optional<std::uint64_t> nodeOf(const NKRXVEL20::host::PublishedInstance& instance);

// Name, or ElementName; of a class that has neither its keys with ", " between them, but for
// SourceNode. Empty when nothing names it.
std::string nameOf(const NKRXVEL20::host::PublishedInstance& instance);

// "DIMM 5" of the name "Node 2: DIMM 5", "System BIOS" of "Node 1 : System BIOS".
std::string withoutNode(const std::string& name);

// Version, or FirmwareVersion where that says nothing. Empty when it is not told.
std::string versionOf(const NKRXVEL20::host::PublishedInstance& instance);

// BuildNumber; empty when it is not told.
std::string buildOf(const NKRXVEL20::host::PublishedInstance& instance);

// Whether instances of the class have a level: the schema gives it a Version or FirmwareVersion.
bool hasLevel(const std::string& className);

}  // namespace velhost
