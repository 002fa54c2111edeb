// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <array>
#include <optional>

#include "collectors/support/ciminstance.h"
#include "collectors/support/contains.h"
#include "collectors/support/corelog.h"
#include "plugin/classnames.h"
#include "plugin/softwareelement.h"
#include "plugin/spfirmwarevpd.h"
#include "vel/exception.h"

using namespace NKRXVEL20;
using namespace collector;
using namespace spfirmwarevpd;

namespace {

constexpr int kRecordSize = 256;
using IpmiRecord = std::array<unsigned char, kRecordSize>;

// IPMI 2.0, 22.11 Master Write-Read: interface, responder address (the BMC's), network function
// (application), LUN, command, data length (4 bytes), then the data that reads the device's level.
constexpr std::array<unsigned char, 14> kLevelRequest = {0x01, 0x20, 0x06, 0x00, 0x52, 0x06, 0x00,
                                                         0x00, 0x00, 0xF5, 0x68, 0x10, 0x1D, 0x01};

// The first 15 bytes of the request record.
constexpr char kLevelRequestText[] =
    "cKVM - 0x01, 0x20, 0x06, 0x00, 0x52, 0x06, 0x00, 0x00, 0x00, 0xF5, 0x68, 0x10, 0x1D, 0x01, "
    "0x00";

constexpr std::size_t kIpmiCompletionOffset = 4;
constexpr std::size_t kDeviceCompletionOffset = 8;
constexpr std::size_t kLevelOffset = 9;

bool isPrintable(unsigned char byte) { return byte >= 0x20 && byte <= 0x7E; }

// ASCII, whatever the locale.
bool isLevelCharacter(unsigned char byte) {
  return (byte >= '0' && byte <= '9') || (byte >= 'a' && byte <= 'z') ||
         (byte >= 'A' && byte <= 'Z') || contains(".()[]", static_cast<char>(byte));
}

// What is wrong with a reply; null for a good one.
const char* replyFault(const IpmiRecord& reply, int length) {
  if (length == 0) return "cKVM - Incorrect IPMI response length.";
  if (reply[kDeviceCompletionOffset] != 0) return "cKVM - Incorrect completion code.";
  if (reply[kIpmiCompletionOffset] != 0) return "cKVM - Bad IPMI completion code.";
  if (!isPrintable(reply[kLevelOffset])) return "cKVM - Ineffective response data.";
  return nullptr;
}

// The level's characters, wherever they stand: blanks, control and zero bytes between them are
// skipped. The length counts the whole record and the level starts behind its head, so bytes behind
// the record are looked at as well, up to the buffer's end.
std::string levelText(const IpmiRecord& reply, int length) {
  const auto bytes = std::span(reply).subspan(kLevelOffset);
  const auto count = std::min(bytes.size(), static_cast<std::size_t>(std::max(length, 0)));
  std::string level;
  std::ranges::copy_if(bytes.first(count), std::back_inserter(level), isLevelCharacter);
  return level;
}

using PropertyHandle = boost::shared_ptr<ICIMProperty>;

// nullopt when the device has no such property, which is logged.
std::optional<PropertyHandle> findDescription(const InstanceHandle& usbDevice) {
  try {
    return usbDevice->GetProperty("Description", {});
  } catch (const TVELException&) {
    logProgress(
        "spfirmwarevpd: No Description property in the current instance of KRXSG_USBDevice");
    return std::nullopt;
  }
}

// Only the look-up may fail: what a null property or its value throws passes.
bool iscKVM(const InstanceHandle& usbDevice) {
  const auto description = findDescription(usbDevice);
  return description && contains((*description)->GetValueAsString(), "cKVM");
}

std::optional<std::vector<InstanceHandle>> readUsbDevices(const NamespaceHandle& ns) {
  try {
    return enumerateInstances(ns, kUsbDeviceClass, {});
  } catch (const TVELException&) {
    logProgress("spfirmwarevpd: Can't get any instance of KRXSG_USBDevice");
    return std::nullopt;
  }
}

}  // namespace

void SPFirmwareVpd::DeterminecKVMExist(NamespaceHandle ns) {
  const auto usbDevices = readUsbDevices(ns);
  if (!usbDevices) return;
  if (usbDevices->empty()) {
    cKVMExists = false;
    logProgress("spfirmwarevpd: There is no cKVM.");
    return;
  }
  if (std::ranges::none_of(*usbDevices, iscKVM))
    return;  // says nothing, and keeps what an earlier look found
  cKVMExists = true;
  logProgress("spfirmwarevpd: There is cKVM.");
}

TVELStatusCode SPFirmwareVpd::GetcKVMFirmwareVersion(NamespaceHandle ns) {
  cKVMFirmwareVersion.clear();
  logProgress(kLevelRequestText);
  IpmiRecord record{};
  std::ranges::copy(kLevelRequest, record.begin());
  int length = kRecordSize;
  if (!SPLibrary::GetSplibraryInstance(0)->sendIPMICommand(record.data(), &length, kRecordSize,
                                                           true)) {
    logProgress("cKVM - IPMI command failed to send successfully.");
    return {kStatusFailure};
  }
  logProgress("cKVM - IPMI command was sent successfully.");
  if (const char* const fault = replyFault(record, length)) {
    logFailure(fault);
    return {kStatusFailure};
  }
  cKVMFirmwareVersion = levelText(record, length);
  return CreatecKVMInstance(ns);
}

TVELStatusCode SPFirmwareVpd::CreatecKVMInstance(NamespaceHandle ns) {
  const auto instance = createInstance(ns, kcKVMClass, "cKVM - Cannot create KRXSG_cKVM instance.");
  if (!instance) return {kStatusFailure};
  constexpr char kRefused[] = "cKVM - Cannot set property value for KRXSG_cKVM instance.";
  const PropertyRow rows[] = {
      {"SoftwareElementID", TCIMValue("cKVM"), kRefused},
      {"SoftwareElementState", TCIMValue(kStateRunning), kRefused},
      {"TargetOperatingSystem", TCIMValue(kSystemNotApplicable), kRefused},
      {"Version", TCIMValue(cKVMFirmwareVersion), kRefused},
      {"FirmwareVersion", TCIMValue(cKVMFirmwareVersion), kRefused},
  };
  if (!setProperties(*instance, rows)) return {kStatusFailure};
  cKVMInstances.push_back(*instance);
  return {kStatusSuccess};
}
