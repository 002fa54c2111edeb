// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cstdlib>

#include "collectors/support/ciminstance.h"
#include "collectors/support/contains.h"
#include "collectors/support/corelog.h"
#include "plugin/classnames.h"
#include "plugin/nodelabel.h"
#include "plugin/softwareelement.h"
#include "plugin/spfirmwarevpd.h"
#include "vel/exception.h"

using namespace NKRXVEL20;
using namespace collector;
using namespace spfirmwarevpd;

namespace {

using SPNames = std::map<int, std::string>;

// The SPs' descriptions by node number, as another plug-in publishes them.
SPNames readSPNames(const NamespaceHandle& ns) {
  SPNames names;
  for (const auto& instance : enumerateInstances(ns, kSPComputerSystemClass, {})) {
    const int node = instance->GetProperty("SourceNode", {})->GetValue().ToUint8();
    names.try_emplace(node, instance->GetProperty("Description", {})->GetValueAsString());
  }
  return names;
}

bool hasBuildNumber(const SPFirmwareVpd::PropertyMap& properties) {
  return std::ranges::any_of(properties, [](const auto& property) {
    return contains(property.first, "BuildNumber") && !property.second.empty();
  });
}

// nullopt for a class whose instances are not named after the SP.
std::optional<std::string> firmwareName(SPFirmwareVpd& plugin, const SPNames& spNames,
                                        const std::string& className) {
  const bool isMain = contains(className, kMainFirmwareClass);
  if (!isMain && !contains(className, kBootRomFirmwareClass)) return std::nullopt;
  const std::string spName =
      spNames.empty() ? plugin.getSpNameFromSmBios() : spNames.begin()->second;
  return spName + (isMain ? " Main VPD" : " BootROM VPD");
}

TCIMValue propertyValue(const std::string& name, const std::string& text) {
  if (contains(name, "SoftwareElementState")) return TCIMValue(kStateRunning);
  if (contains(name, "TargetOperatingSystem")) return TCIMValue(kSystemNotApplicable);
  if (contains(name, "BuildDate")) return TCIMValue(TCIMDateTime(text));
  return TCIMValue(text);
}

// Puts the node before the instance's name, then sets the node itself.
void setSourceNode(const InstanceHandle& instance, const std::string& name,
                   const std::string& node) {
  const std::string ownName = instance->GetProperty("Name", {})->GetValueAsString();
  instance->SetProperty("Name", TCIMValue(nodeElementName(node, ownName)), {});
  const auto number = static_cast<std::uint8_t>(std::strtol(node.c_str(), nullptr, 10));
  instance->SetProperty(name, TCIMValue(number), {});
}

// False after a refusal, which is logged.
bool setRecordProperty(const InstanceHandle& instance, const std::string& name,
                       const std::string& text) {
  const FailureText failure("Error adding Property ", name);
  if (!contains(name, "SourceNode")) {
    return setProperty(instance, name, propertyValue(name, text), failure);
  }
  try {
    setSourceNode(instance, name, text);
    return true;
  } catch (const TVELException&) {
    logRefusal(failure);
    return false;
  }
}

// The instance of one record; nullopt after a refusal.
std::optional<InstanceHandle> recordInstance(const NamespaceHandle& ns,
                                             const std::string& className,
                                             const SPFirmwareVpd::PropertyMap& properties,
                                             const std::optional<std::string>& name) {
  auto instance = createInstance(ns, className, {"Error adding Class ", className});
  if (!instance) return std::nullopt;
  if (name && !setProperty(*instance, "Name", TCIMValue(*name), "Error adding SP Name property")) {
    return std::nullopt;
  }
  for (const auto& [property, text] : properties) {
    // The one property without a name is the text of the Signature line, which has no closing bar.
    if (property.empty()) continue;
    if (!setRecordProperty(*instance, property, text)) return std::nullopt;
  }
  return instance;
}

// Adds the record's instance to each class that its own contains the name of.
void addRecord(SPFirmwareVpd& plugin, const NamespaceHandle& ns, const SPNames& spNames,
               const std::string& className, const SPFirmwareVpd::PropertyMap& properties) {
  for (std::size_t k = 0; k < plugin.classCount; ++k) {
    logProgress("IN getSPFirmwareVpd:: Current Class = " + plugin.classNames.at(k) +
                ". Current Iter = " + className);
    if (!contains(className, plugin.classNames.at(k))) continue;
    const auto name = firmwareName(plugin, spNames, className);
    const auto instance = recordInstance(ns, className, properties, name);
    if (instance) plugin.instancesOf(k)->push_back(*instance);
  }
}

}  // namespace

TVELStatusCode SPFirmwareVpd::getSPFirmwareVpd(SPLibrary* spLibrary, NamespaceHandle ns) {
  if (parsedVpdRecords.empty()) parsedVpdRecords = getParseVPD(spLibrary, ns);
  const SPNames spNames = readSPNames(ns);
  bool diagnosticsFound = false;  // by any SP so far: later records are then taken even when empty
  for (const ClassRecord& record : parsedVpdRecords) {
    const auto& [className, properties] = *record.begin();
    if (contains(className, kDiagnosticClass)) {
      diagnosticsFound = diagnosticsFound || hasBuildNumber(properties);
      if (!diagnosticsFound) {
        getDiagsFirmware(ns, spLibrary);  // always 0
        continue;
      }
    }
    addRecord(*this, ns, spNames, className, properties);
  }
  if (parsedVpdRecords.empty()) return {kStatusFailure};
  return {kStatusSuccess};
}
