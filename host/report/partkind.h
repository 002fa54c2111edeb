// SPDX-License-Identifier: Apache-2.0
//
// Where on the picture of a machine an instance has its place.
#pragma once

#include <string>
#include <string_view>

#include "velhost/cimnamespace.h"

namespace velhost {

// In the order in which a machine's picture has them.
enum class Place {
  kMachine,  // the machine itself, in its head
  kServiceProcessor,
  kFirmware,
  kMemory,
  kPower,
  kBackplanes,
  kBoards,
  kDevices,
  kOther,  // of a class that is not known here
};

std::string_view placeName(Place place);

// Drawn with its level, version and build; everything else is drawn as a part.
inline bool isForLevels(Place place) {
  return place == Place::kServiceProcessor || place == Place::kFirmware;
}

// By the table of kinds; a class that it does not have is firmware where it has a level, and the kind
// of a unit known through IPMI is its EntityID.
Place placeOf(const NKRXVEL20::host::PublishedInstance& instance);

// The same for a class of which there is no instance; kOther where its instances have several.
Place placeOfClass(const std::string& className);

// What people call the class: the schema's description, or its name.
std::string classTitle(const std::string& className);

}  // namespace velhost
