// SPDX-License-Identifier: Apache-2.0
#include "collectors/support/ciminstance.h"
#include "collectors/support/corelog.h"
#include "plugin/classnames.h"
#include "plugin/spfirmwarevpd.h"
#include "vel/exception.h"

using namespace NKRXVEL20;
using namespace collector;
using namespace spfirmwarevpd;

namespace {

std::string fruCountText(std::size_t count) {
  if (count == 0) return "spfirmwarevpd: There is no KRXSG_IPMIFRU instance.";
  if (count == 1) return "spfirmwarevpd: There is one KRXSG_IPMIFRU instance.";
  return "spfirmwarevpd: There are " + std::to_string(count) + " KRXSG_IPMIFRU instances.";
}

}  // namespace

// Another plug-in may publish the components' VPD from their IPMI FRU records; this one then leaves
// them alone.
void SPFirmwareVpd::DetermineIPMIFRUExist(NamespaceHandle ns) {
  ipmiFruProbed = true;  // first, so that a probe that fails is not repeated
  SPLibrary* const spLibrary = SPLibrary::GetSplibraryInstance(0);
  if (spLibrary == nullptr) {
    fdrWriteLog(kSeverityPrevented, "Could not load SPLibrary.");
    return;
  }
  if (spLibrary->IsIPMIDriversPresent() && spLibrary->IsBMCMachine()) {
    ipmiFruExists = true;
    return;
  }
  try {
    const std::size_t count = enumerateInstances(ns, kIpmiFruClass, {}).size();
    ipmiFruExists = count > 0;
    logProgress(fruCountText(count));
  } catch (const TVELException&) {
    logProgress("spfirmwarevpd: Can't get any instance of KRXSG_IPMIFRU");
  }
}
