// SPDX-License-Identifier: Apache-2.0
#include "collectors/support/ciminstance.h"
#include "peripheral/usbstoragepath.h"
#include "plugin/classnames.h"
#include "plugin/softwareelement.h"
#include "plugin/spfirmwarevpd.h"

using namespace NKRXVEL20;
using namespace collector;
using namespace spfirmwarevpd;

namespace {

void publishTape(const NamespaceHandle& ns, const std::string& deviceId) {
  const auto instance = ns->GetClass(kUsbTapeClass, pluginContext())->CreateInstance();
  const UsbStorageDevice tape = parseUsbStoragePath(deviceId);
  if (tape.revision.empty()) return;
  const std::pair<const char*, TCIMValue> properties[] = {
      {"Version", TCIMValue(tape.revision)},
      {"TargetOperatingSystem", TCIMValue(kSystemOther)},
      {"SoftwareElementState", TCIMValue(kStateExecutable)},
      {"Name", TCIMValue(" USB TAPE " + tape.product)},  // begins with a blank, on purpose
      {"Manufacturer", TCIMValue(tape.vendor)},
      {"SoftwareElementID", TCIMValue("VEL USB Tape Device")},
  };
  for (const auto& [name, value] : properties) instance->SetProperty(name, value, {});
  instance->AddToClass(pluginContext());
}

}  // namespace

// Whatever the framework throws ends the call and passes to the caller.
void SPFirmwareVpd::getUsbTapeFirmware(NamespaceHandle ns) {
  for (const auto& drive : enumerateInstances(ns, kTapeDriveClass, pluginContext())) {
    const auto property = drive->GetProperty("DeviceID", pluginContext());
    const std::string deviceId = property->GetValue().ToString(10);
    if (isUsbStoragePath(deviceId)) publishTape(ns, deviceId);
  }
}
