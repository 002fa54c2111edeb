// SPDX-License-Identifier: Apache-2.0
//
// Which collectors run for which kind of service processor, and in which order. Knows the
// collectors by name only, so that every outcome can be tried.
#pragma once

#include <functional>

#include "vel/splibrary.h"
#include "vel/status.h"

namespace spfirmwarevpd {

enum class Collector {
  kSPFirmwareVpd,
  kComponentVpd,
  kTamberFirmware,
  kSPFirmware,
  kDiagnostics,
  kSystemBios,
};

using RunCollector = std::function<NKRXVEL20::TVELStatusCode(Collector)>;

// Logs each collector that fails and goes on. Returns 0, the status of the collector that counts
// for the kind of machine, or 3. Catches nothing.
NKRXVEL20::TVELStatusCode driveCollection(NKRXVEL20::SPLibrary& spLibrary, const RunCollector& run);

}  // namespace spfirmwarevpd
