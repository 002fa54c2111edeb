// SPDX-License-Identifier: Apache-2.0
//
// Instances of a class inside the width of a screen.
#pragma once

#include <string>
#include <vector>

#include "host/formats/instancecolumns.h"
#include "host/text/screen.h"

namespace velhost {

struct DigestText {
  std::string text;
  bool isWhole = true;  // all columns had room
};

// A line an instance: as many columns as there is room for, those that say most first. A cell that is
// too long for its column is cut in its middle. A single instance has a line for each property.
// The numbers of the nodes are shown where `showsNodes`, in front of the first instance of each.
DigestText digestText(const InstanceDigest& digest, bool showsNodes, const Screen& screen);

// All columns of so many instances: a line an instance if they have room, otherwise a line a property, with as many
// instances side by side as have room.
std::string wholeText(const std::vector<PropertyColumn>& columns, std::size_t count,
                      const Screen& screen);

}  // namespace velhost
