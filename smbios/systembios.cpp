// SPDX-License-Identifier: Apache-2.0
#include "collectors/support/ciminstance.h"
#include "collectors/support/corelog.h"
#include "plugin/classnames.h"
#include "plugin/dotcommand.h"
#include "plugin/nodelabel.h"
#include "plugin/softwareelement.h"
#include "plugin/spfirmwarevpd.h"
#include "plugin/textfields.h"
#include "smbios/biosinformation.h"
#include "smbios/firmwareversion.h"
#include "smbios/machinetypes.h"
#include "smbios/smbioswalk.h"

using namespace NKRXVEL20;
using namespace collector;
using namespace spfirmwarevpd;

namespace {

constexpr int kBiosInformationType = 0;

constexpr std::array<unsigned char, 4> kPostBiosPath = {0x04, 0x03, 0x05, 0x01};

constexpr TextField kPostBiosRecord[] = {
    // property         offset  length  logged when refused
    {"FileName", 56, 12, "Error adding FileName"},
    {"UniqueID", 29, 11, "Error adding UniqueID"},
    {"MachineTypeModel", 40, 7, "Error adding MachineTypeModel"},
    {"SerialNumber", 22, 7, "Error adding SerialNumber"},
};
static_assert(allWithin(kPostBiosRecord, kReplySize), "a row reads past the reply");

std::string biosElementName(int nodeNumber, int nodeCount, bool isUefi) {
  const std::string firmware = isUefi ? "UEFI" : "System BIOS";
  return nodeCount > 1 ? nodeElementName(nodeNumber, firmware) : firmware;
}

bool setIdentity(const InstanceHandle& instance, int nodeNumber, const std::string& name,
                 const BiosInformation& bios) {
  const PropertyRow rows[] = {
      // The first row names Name when it fails, and stays so.
      {"SourceNode", TCIMValue(static_cast<std::uint8_t>(nodeNumber)), "Error adding Name"},
      {"Name", TCIMValue(name), "Error adding Name"},
      {"SoftwareElementState", TCIMValue(kStateRunning), "Error adding SoftwareElementState"},
      {"SoftwareElementID", TCIMValue("SP Firmware VPD Collector"),
       "Error adding SoftwareElementID"},
      {"TargetOperatingSystem", TCIMValue(kSystemNotApplicable),
       "Error adding TargetOperatingSystem"},
      {"PrimaryBIOS", TCIMValue(true), "Error adding PrimaryBIOS"},
      {"LoadedStartingAddress", TCIMValue(bios.loadedStartingAddress),
       "Error adding LoadedStartingAddress"},
      {"LoadedEndingAddress", TCIMValue(bios.loadedEndingAddress),
       "Error adding LoadedEndingAddress"},
  };
  return setProperties(instance, rows);
}

// An element whose date cannot be set is completed without it.
void setReleaseDate(SPFirmwareVpd& plugin, const InstanceHandle& instance, BiosInformation& bios) {
  const std::string date = smbiosString(bios.strings, bios.releaseDate);
  TCIMDateTime released;
  const TVELStatusCode result = plugin.doTime(instance, "ReleaseDate", date, released, false);
  if (result.status == kStatusFailure) logFailure("failed to create CIMDateTime");
}

// Each text is fetched when its property is due, and none behind a refusal.
bool setVersions(const InstanceHandle& instance, BiosInformation& bios) {
  const std::string vendor = smbiosString(bios.strings, bios.vendor);
  if (!setProperty(instance, "Manufacturer", TCIMValue(vendor), "Error adding Manufacturer")) {
    return false;
  }
  const FirmwareVersion split = splitVersion(smbiosString(bios.strings, bios.version));
  const PropertyRow rows[] = {
      {"Version", TCIMValue(split.version), "Error adding Version"},
      {"BuildNumber", TCIMValue(split.build), "Error adding Build Number"},
  };
  return setProperties(instance, rows);
}

// True: the walk ends, as only the first structure of such a machine counts.
bool countsFirstStructureOnly(const std::string& machineType) {
  if (isOneOf(machineType, kCallowayMachines)) {
    logProgress(
        "This machine is a Calloway. Finished collecting first SMBIOS record for 'System BIOS'.");
    return true;
  }
  if (isOneOf(machineType, kDurnikMachines)) {
    logProgress(
        "This machine is a Durnik. Finished collecting first SMBIOS record for 'System BIOS'.");
    return true;
  }
  return false;
}

// What the node's SP knows of its BIOS. False after a refusal; an SP that does not answer is none.
bool setPostBiosProperties(SPFirmwareVpd& plugin, SPLibrary& spLibrary,
                           const InstanceHandle& instance, int nodeIndex) {
  if (!spLibrary.isDotcommand() || !spLibrary.checkSPComm()) return true;
  ReplyBuffer reply{};
  if (plugin.getPOSTBIOSInfo(&spLibrary, reply.data(), nodeIndex).status != kStatusSuccess) {
    return true;
  }
  return setTextFields(instance, kPostBiosRecord, reply);
}

// False after a refusal. Each node has a copy of the strings of its own.
bool addBiosElement(SPFirmwareVpd& plugin, SPLibrary& spLibrary, const NamespaceHandle& ns,
                    BiosInformation bios, int nodeIndex, int nodeCount) {
  const auto instance =
      createInstance(ns, kSystemBiosElementClass, "Error adding KRXSG_SystemBIOSElement class");
  if (!instance) return false;
  const int nodeNumber = nodeIndex + 1;
  const std::string name = biosElementName(nodeNumber, nodeCount, spLibrary.IsIntegratedBMC());
  if (!setIdentity(*instance, nodeNumber, name, bios)) return false;
  setReleaseDate(plugin, *instance, bios);
  if (!setVersions(*instance, bios)) return false;
  if (!setPostBiosProperties(plugin, spLibrary, *instance, nodeIndex)) return false;
  plugin.systemBiosElementInstances.push_back(*instance);
  return true;
}

// One element for each node. False after a refusal.
bool addBiosElements(SPFirmwareVpd& plugin, SPLibrary& spLibrary, const NamespaceHandle& ns,
                     const SmbiosBuffer& structure) {
  const BiosInformation bios = decodeBiosInformation(structure);
  const int nodes = spLibrary.GetNumberBMCNode();
  const int nodeCount = nodes == 0 ? 1 : nodes;
  // The counter is 8 bits wide; machines have far fewer nodes.
  for (std::uint8_t i = 0; i < nodeCount; ++i) {  // NOLINT(bugprone-too-small-loop-variable)
    if (!addBiosElement(plugin, spLibrary, ns, bios, i, nodeCount)) return false;
  }
  return true;
}

}  // namespace

TVELStatusCode SPFirmwareVpd::getBIOSstructure(SPLibrary* spLibrary, NamespaceHandle ns) {
  logProgress("Entering SPFirmwareVpd::getBIOSstructure()");
  std::string type;
  if (getMachineType(&type).status != kStatusSuccess) {
    logProgress("Could not obtain Machine Type via SMBIOS.");
    type = "No machine type found.";
  }
  const TVELStatusCode result = walkSmbios(
      {.type = kBiosInformationType,
       .openFailedText = "getBIOSstructure: Unable to open SMBIOS lib error = ",
       .process = [&](const SmbiosBuffer& s) { return addBiosElements(*this, *spLibrary, ns, s); },
       .isComplete = [&] { return countsFirstStructureOnly(type); }});
  if (result.status != kStatusSuccess) return result;
  logProgress("Exiting SPFirmwareVpd::getBIOSstructure()");
  return result;
}

TVELStatusCode SPFirmwareVpd::getPOSTBIOSInfo(SPLibrary* spLibrary, unsigned char* reply,
                                              int spIndex) {
  if (!sendDotCommand(*spLibrary, kPostBiosPath, reply, spIndex)) return {kStatusFailure};
  return {kStatusSuccess};
}
