// SPDX-License-Identifier: Apache-2.0
//
// SMBIOS type 42, Management Controller Host Interface (DSP0134, 7.43), of a network interface with
// Redfish behind it (DSP0270).
#pragma once

#include <optional>

#include "host/recording/identifyingfields.h"

namespace velhost {

struct HostInterfaceIds {
  std::optional<std::size_t> serialString;  // the number of the serial number's string
  IdentifyingFields fields;                 // in the formatted area
};

// `formatted` is the formatted area, header included, however it is cut and whatever its lengths
// say.
HostInterfaceIds hostInterfaceIds(std::span<const unsigned char> formatted);

}  // namespace velhost
