// SPDX-License-Identifier: Apache-2.0
//
// The instances of a class as columns of texts for people, those that say most first.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "velhost/cimnamespace.h"

namespace velhost {

using InstanceList = std::vector<const NKRXVEL20::host::PublishedInstance*>;

// A property, and what it is in each instance; empty where an instance says nothing of it.
struct PropertyColumn {
  std::string name;
  std::vector<std::string> cells;
};

// All properties that say something in one instance at least: what the instances are called, their
// level and build, part and serial number, maker and date, then the others in the order in which they
// were set. Last come those that say the same on every machine, or the node's number again. A text
// beyond a thousand characters is cut in its middle.
std::vector<PropertyColumn> allColumns(const std::string& className, const InstanceList& instances);

// What is worth a look of them.
struct InstanceDigest {
  std::vector<std::string> nodes;  // of each instance; empty for one of no particular node
  std::vector<PropertyColumn> columns;
  std::vector<std::pair<std::string, std::string>> common;  // what all of them have, beside that
};

// Without the properties that say the same on every machine, those that repeat another one, and the
// node's label in front of texts ("Node 2: DIMM 1" is DIMM 1). A level that all instances have
// stays a column of its own.
InstanceDigest digestOf(const std::string& className, const InstanceList& instances);

}  // namespace velhost
