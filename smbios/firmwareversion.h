// SPDX-License-Identifier: Apache-2.0
//
// Firmware version texts, split into version and build.
#pragma once

#include <string>

#include "vel/osspecific.h"

namespace spfirmwarevpd {

struct FirmwareVersion {
  std::string version;
  std::string build;
};

// Drops everything but letters and digits before it splits: 1.08 [ABC123] gives 108 and ABC123.
inline FirmwareVersion splitVersion(std::string text) {
  NKRXVEL20::TOSSpecific::removeNonAlpaNumeric(text);
  FirmwareVersion result{text, text};
  NKRXVEL20::TOSSpecific::breakApartVersion(result.version, result.build);
  return result;
}

}  // namespace spfirmwarevpd
