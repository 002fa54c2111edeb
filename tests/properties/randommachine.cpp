// SPDX-License-Identifier: Apache-2.0
#include "tests/properties/randommachine.h"

#include "tests/properties/randompieces.h"
#include "tests/properties/randomsmbios.h"
#include "tests/properties/randomsp.h"

namespace velhost::properties {
namespace {

namespace gen = rc::gen;

constexpr char kIpmiInventory[] = "IPMIInventory";

// Types that mean something to a collector, and one that means nothing.
std::string machineType() {
  return oneOf<std::string>({"7001", "5010", "5040", "4210", "4215", "4320", "4430", "3105", "3105",
                             "3455", "3670", "", "R\u00FC"});
}

Json describedInstance(const Identities& identities, const char* id, const char* prefix) {
  Json instance = Json::object();
  if (mostly(5)) instance["Description"] = oneIn(2) ? "KRX cKVM" : someText(identities);
  if (oneIn(2)) instance[id] = prefix + oneSerial(identities) + (oneIn(3) ? "&0" : "");
  return instance;
}

Json adapter(const Identities& identities) {
  Json instance = {{"Description", someText(identities)}};
  if (mostly(5)) instance["SourceNode"] = numberUpTo(4);
  return instance;
}

using MakeInstance = Json (*)(const Identities&);

struct Published {
  const char* className;
  MakeInstance make;
};

// What others publish; FRU devices only where no collector of this machine has them.
constexpr Published kPublished[] = {
    {"KRXSG_USBDevice",
     [](const Identities& identities) {
       return describedInstance(identities, "DeviceID", "USB\\VID_04B3&PID_4001\\");
     }},
    {"KRXSG_QLA_ComputerSystem", adapter},
    {"KRXSG_TapeDrive",
     [](const Identities& identities) {
       return describedInstance(identities, "DeviceID", "SCSI\\SEQUENTIAL&VEN_KRX\\");
     }},
    {"KRXSG_IPMIFRU",
     [](const Identities& identities) { return describedInstance(identities, "Name", ""); }},
};

Json instances(const Identities& identities, bool hasIpmiInventory) {
  Json published = Json::object();
  for (const Published& row : kPublished) {
    if (!oneIn(2) || (hasIpmiInventory && row.className == std::string("KRXSG_IPMIFRU"))) continue;
    published[row.className] =
        some<Json>(3, gen::exec([identities, make = row.make] { return make(identities); }));
  }
  return published;
}

std::string firmwareClass() {
  return oneOf<std::string>({"KRXSG_DiagnosticVPD", "KRXSG_SystemBIOSElement", "KRXSG_Vpd",
                             "KRXSG_cKVM", "KRXSG_HardwareRevisionLevel",
                             "KRXSG_SPROMFirmwareVPDMain", "KRXSG_SPROMFirmwareVPDBootROM",
                             "KRXSG_USBDevice", "KRXSG_QLA_ComputerSystem"});
}

Json fault() {
  Json found = {{"operation", oneOf({"get_class", "create_instance", "enumerate_instances",
                                     "get_property", "set_property", "add_to_class"})},
                {"class", firmwareClass()}};
  if (mostly(2)) found["nth"] = 1 + numberUpTo(5);
  if (oneIn(3)) found["throw"] = "runtime_error";
  return found;
}

void addFailures(Json& machine) {
  if (oneIn(8)) machine["missing_classes"] = Json::array({firmwareClass()});
  if (oneIn(4)) machine["faults"] = some<Json>(3, gen::exec(fault));
}

Json wholeMachine(Framework framework) {
  const Identities identities = apart(someIdentities);
  Json machine = {{"format", "vel-machine/1"}, {"name", "random"}};
  if (oneIn(3)) machine["name"] = someText(identities);
  if (oneIn(3)) machine["description"] = someText(identities);
  if (oneIn(2)) machine["machine_type"] = machineType();
  if (mostly(8)) machine["smbios"] = apart([=] { return someSmbios(identities); });
  if (mostly(5)) machine["sp"] = apart([=] { return someSP(identities); });
  const bool hasIpmiInventory = mostly(3);
  Json collectors = Json::array();
  if (hasIpmiInventory) collectors.push_back(kIpmiInventory);
  if (mostly(3)) collectors.push_back("SMBIOSInventory");
  if (!collectors.empty()) machine["collectors"] = std::move(collectors);
  if (oneIn(2)) {
    machine["instances"] = apart([=] { return instances(identities, hasIpmiInventory); });
  }
  if (framework == Framework::kSometimesFails) addFailures(machine);
  return machine;
}

}  // namespace

rc::Gen<MachineText> randomMachine(Framework framework) {
  const auto machine =
      gen::exec([framework] { return MachineText{wholeMachine(framework).dump(1)}; });
  return gen::resize(rc::kNominalSize, machine);  // what is rare is so from the first case on
}

}  // namespace velhost::properties
