// SPDX-License-Identifier: Apache-2.0
#include "plugin/collectiondriver.h"

#include "collectors/support/corelog.h"

using namespace NKRXVEL20;
using namespace collector;

namespace spfirmwarevpd {

namespace {

constexpr char kDiagnosticsFailed[] = "Failed to collect diags information from smbios";
constexpr char kSPFirmwareFailed[] = "Failed to collect SP firmware data from smbios";
constexpr char kSystemBiosFailed[] = "Failed to collect BIOS data from smbios";
constexpr char kTamberFailed[] = "Failed to collect full set of AMP firmware data";
constexpr char kComponentVpdFailed[] = "Failed to collect full set of VPD data";

TVELStatusCode runLogged(const RunCollector& run, Collector collector, const char* failureText) {
  const TVELStatusCode result = run(collector);
  if (result.status != kStatusSuccess) logFailure(failureText);
  return result;
}

// What SMBIOS alone can tell; its last step's status counts.
TVELStatusCode fallBack(const RunCollector& run) {
  runLogged(run, Collector::kDiagnostics, kDiagnosticsFailed);
  runLogged(run, Collector::kSPFirmware, kSPFirmwareFailed);
  return runLogged(run, Collector::kSystemBios, kSystemBiosFailed);
}

TVELStatusCode driveSilentSP(const RunCollector& run) {
  logFailure("Unknown Error Code, Possible causes: Driver/SP failure!");
  fallBack(run);
  return {kStatusFailure};
}

TVELStatusCode driveDotCommandSP(const RunCollector& run) {
  logProgress("Getting firmware and vpd");
  const TVELStatusCode spFirmwareVpd = run(Collector::kSPFirmwareVpd);
  const TVELStatusCode componentVpd = run(Collector::kComponentVpd);
  if (spFirmwareVpd.status != kStatusSuccess) return fallBack(run);
  if (componentVpd.status != kStatusSuccess) {
    // The one failure that ends the collection: the BIOS collector is left out on purpose.
    logFailure(kComponentVpdFailed);
    return componentVpd;
  }
  runLogged(run, Collector::kSystemBios, kSystemBiosFailed);
  return {kStatusSuccess};
}

TVELStatusCode readTamberFirmware(SPLibrary& spLibrary, const RunCollector& run) {
  if (!spLibrary.isTwgStop() && spLibrary.isTvmlibrary()) {
    logPrevented("Tvmlibrary present on the system..can not get AMP firmware");
    return {kStatusFailure};
  }
  return runLogged(run, Collector::kTamberFirmware, kTamberFailed);
}

TVELStatusCode driveTamberSP(SPLibrary& spLibrary, const RunCollector& run) {
  logProgress("Getting AMP firmware and vpd");
  if (readTamberFirmware(spLibrary, run).status != kStatusSuccess) {
    runLogged(run, Collector::kSPFirmware, kSPFirmwareFailed);
  }
  runLogged(run, Collector::kDiagnostics, kDiagnosticsFailed);
  return runLogged(run, Collector::kSystemBios, kSystemBiosFailed);
}

TVELStatusCode driveWithoutSP(const RunCollector& run) {
  const TVELStatusCode result = fallBack(run);
  logProgress("No SP's installed on the system");
  return result;
}

}  // namespace

TVELStatusCode driveCollection(SPLibrary& spLibrary, const RunCollector& run) {
  if (spLibrary.isDotcommand()) {
    return spLibrary.checkSPComm() ? driveDotCommandSP(run) : driveSilentSP(run);
  }
  return spLibrary.isTamber() ? driveTamberSP(spLibrary, run) : driveWithoutSP(run);
}

}  // namespace spfirmwarevpd
