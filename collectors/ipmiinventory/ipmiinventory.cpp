// SPDX-License-Identifier: Apache-2.0
#include "collectors/ipmiinventory/ipmiinventory.h"

#include "collectors/ipmiinventory/fruinventory.h"
#include "collectors/ipmiinventory/sdrrepository.h"
#include "collectors/support/corelog.h"

using namespace NKRXVEL20;

namespace ipmiinventory {
namespace {

using Instances = std::vector<collector::InstanceHandle>;

void set(ICIMInstance& instance, const char* property, const TCIMValue& value) {
  instance.SetProperty(property, value, {});
}

void setText(ICIMInstance& instance, const char* property, const std::string& text) {
  if (!text.empty()) set(instance, property, TCIMValue(text));
}

template <class Number>
void setKnown(ICIMInstance& instance, const char* property, const std::optional<Number>& number) {
  if (number) set(instance, property, TCIMValue(*number));
}

void setDeviceId(ICIMInstance& controller, const DeviceId& id) {
  set(controller, "Name", TCIMValue("BMC"));
  set(controller, "DeviceID", TCIMValue(id.deviceId));
  set(controller, "DeviceRevision", TCIMValue(id.deviceRevision));
  set(controller, "FirmwareVersion", TCIMValue(id.firmwareVersion));
  setText(controller, "AuxiliaryFirmwareRevision", id.auxiliaryFirmwareRevision);
  set(controller, "IPMIVersion", TCIMValue(id.ipmiVersion));
  setKnown(controller, "ManufacturerID", id.manufacturerId);
  setKnown(controller, "ProductID", id.productId);
}

std::string guidOf(Bmc& bmc) {
  const auto reply = bmc.ask({Command::kGetDeviceGuid, {}});
  const bool completed = reply && reply->completionCode == kCompleted;
  return completed ? guidText(reply->data) : std::string();
}

Instances controllers(BmcSession& session, const collector::CreateInstance& create) {
  const auto& id = session.deviceId();
  if (!id) {
    collector::logProgress("IPMIInventory: no BMC says what it is.");
    return {};
  }
  const collector::InstanceHandle controller = create();
  setDeviceId(*controller, *id);
  setText(*controller, "GUID", guidOf(session));
  return {controller};
}

bool isDate(const FruProperty& property) {
  return std::string_view(property.name) == "BoardManufactureDate";
}

collector::InstanceHandle instanceOf(const Fru& fru, const collector::CreateInstance& create) {
  const FruLocator& locator = fru.locator;
  collector::InstanceHandle instance = create();
  set(*instance, "FRUDeviceID", TCIMValue(locator.fruDeviceId));
  setText(*instance, "Name", locator.name);
  setText(*instance, "Description", entityName(locator.entityId.value_or(0)));
  setKnown(*instance, "EntityID", locator.entityId);
  setKnown(*instance, "EntityInstance", locator.entityInstance);
  for (const FruProperty& property : fru.properties) {
    set(*instance, property.name,
        isDate(property) ? TCIMValue(TCIMDateTime(property.text)) : TCIMValue(property.text));
  }
  setText(*instance, "Notes", fru.notes);
  return instance;
}

// Without an answer to Get Device ID nothing else is asked. A BMC that refuses it, or has no room to
// say what it supports, may have a repository.
FruLocators locatorsOf(BmcSession& session) {
  const auto& id = session.deviceId();
  if (session.isSilent() || (id && !id->hasSdrRepository)) return {};
  return readFruLocators(session);
}

Instances frus(BmcSession& session, const collector::CreateInstance& create) {
  const FruLocators found = locatorsOf(session);
  if (!found.fault.empty()) {
    collector::logPrevented(
        "IPMIInventory: there may be more FRU devices: in the BMC's SDR repository " + found.fault);
  }
  Instances instances;
  for (const Fru& fru : readFrus(session, found.locators)) {
    instances.push_back(instanceOf(fru, create));
  }
  return instances;
}

std::map<std::string, collector::Collect> servedClasses(
    const std::shared_ptr<BmcSession>& session) {
  return {
      {"KRXSG_ManagementController",
       [session](const auto& create) { return controllers(*session, create); }},
      {"KRXSG_IPMIFRU", [session](const auto& create) { return frus(*session, create); }},
  };
}

}  // namespace

IpmiInventory::IpmiInventory(std::unique_ptr<Bmc> bmc)
    : IpmiInventory(std::make_shared<BmcSession>(std::move(bmc))) {}

IpmiInventory::IpmiInventory(const std::shared_ptr<BmcSession>& session)
    : Companion(kName, kVersion, servedClasses(session)), session_(session) {}

void IpmiInventory::Init() {
  session_->restart();
  Companion::Init();
}

}  // namespace ipmiinventory
