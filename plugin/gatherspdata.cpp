// SPDX-License-Identifier: Apache-2.0
#include "plugin/collectiondriver.h"
#include "plugin/spfirmwarevpd.h"

using namespace NKRXVEL20;
using spfirmwarevpd::Collector;

TVELStatusCode SPFirmwareVpd::gatherSPdata(NamespaceHandle ns) {
  SPLibrary* const spLibrary = SPLibrary::GetSplibraryInstance(0);
  const auto run = [&](Collector collector) -> TVELStatusCode {
    switch (collector) {
      case Collector::kSPFirmwareVpd:
        return getSPFirmwareVpd(spLibrary, ns);
      case Collector::kComponentVpd:
        return getVPDdata(spLibrary, ns);
      case Collector::kTamberFirmware:
        return gettamberFirmware(spLibrary, ns);
      case Collector::kSPFirmware:
        return getSPFirmware(ns);
      case Collector::kDiagnostics:
        return getDiagsFirmware(ns, spLibrary);
      case Collector::kSystemBios:
        return getBIOSstructure(spLibrary, ns);
    }
    return {kStatusFailure};
  };
  return spfirmwarevpd::driveCollection(*spLibrary, run);  // the handle is not tested for null
}
