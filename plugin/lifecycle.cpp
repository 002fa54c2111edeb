// SPDX-License-Identifier: Apache-2.0
#include <array>

#include "collectors/support/plugin.h"
#include "plugin/classnames.h"
#include "plugin/spfirmwarevpd.h"

using namespace NKRXVEL20;
using namespace spfirmwarevpd;

namespace {

constexpr char kPluginVersion[] = "1.0";

constexpr std::array<const char*, 10> kClassNames = {
    kDiagnosticClass, kPostBiosClass,     kSystemBiosElementClass, kHardwareRevisionClass,
    kVpdClass,        kMainFirmwareClass, kBootRomFirmwareClass,   kDeviceDriverClass,
    kSystemBiosClass,  // known, never filled
    kcKVMClass,
};

// The classes before KRXSG_SystemBIOS.
constexpr std::uint32_t kSPClassCount = 8;

// Null is allowed: a framework may call PrepareForUnload for an object that it does not have. This
// unit is built so that the test for null stays in (see CMakeLists.txt).
void release(IPluginCallbacks* plugin) {
  delete plugin;  // NOLINT(cppcoreguidelines-owning-memory): nobody else owns it
}

}  // namespace

SPFirmwareVpd::SPFirmwareVpd() { collector::registerPlugin(this); }

SPFirmwareVpd::~SPFirmwareVpd() = default;

int SPFirmwareVpd::GetType() { return 0; }

std::string SPFirmwareVpd::GetName() { return "SPFirmwareVPD"; }

std::string SPFirmwareVpd::GetVersion() { return kPluginVersion; }

std::string SPFirmwareVpd::GetInterfaceVersion() { return fdrPluginInterfaceVersion; }

void SPFirmwareVpd::PrepareForUnload() { release(this); }

// Leaves the instance lists, smbiosOemEntries and parsedVpdRecords as they are, and appends the
// descriptor lines once more: the SP is read once in the object's life, and what was published
// stays published.
void SPFirmwareVpd::Init() {
  dataGathered = false;
  machineType.clear();
  for (std::size_t i = 0; i < kClassNames.size(); ++i) classNames[i] = kClassNames[i];
  classCount = kSPClassCount;
  reservedValue = 1;
  loadSPCommands();
  cKVMFirmwareVersion.clear();
  ipmiFruExists = false;
  cKVMExists = false;
  ipmiFruProbed = false;
}

void SPFirmwareVpd::DeInit() {}
