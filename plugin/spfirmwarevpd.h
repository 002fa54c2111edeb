// SPDX-License-Identifier: Apache-2.0
//
// The plug-in object. Every collector is a member operation of this one class and adds the
// instances that it creates to the list of their class; GetData publishes the lists.
#pragma once

#include <array>
#include <boost/shared_ptr.hpp>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "vel/cim.h"
#include "vel/plugin.h"
#include "vel/splibrary.h"
#include "vel/status.h"

class SPFirmwareVpd : public NKRXVEL20::IPluginCallbacks,
                      public NKRXVEL20::IPluginBasicQueryCallbacks {
 public:
  using NamespaceHandle = boost::shared_ptr<NKRXVEL20::ICIMNamespace>;
  using InstanceHandle = boost::shared_ptr<NKRXVEL20::ICIMInstance>;
  using InstanceList = std::vector<InstanceHandle>;
  using PropertyMap = std::map<std::string, std::string>;
  using ClassRecord = std::map<std::string, PropertyMap>;  // one class name and its properties

  // Registers the object with the plug-in manager. Raises TVELException when there is none.
  SPFirmwareVpd();
  ~SPFirmwareVpd() override;

  SPFirmwareVpd(const SPFirmwareVpd&) = delete;
  SPFirmwareVpd& operator=(const SPFirmwareVpd&) = delete;

  // ---- plugin/lifecycle.cpp
  int GetType() override;
  std::string GetName() override;
  std::string GetVersion() override;
  std::string GetInterfaceVersion() override;
  void PrepareForUnload() override;  // deletes the object
  void Init() override;              // also makes the next GetData collect anew
  void DeInit() override;

  // ---- plugin/getdata.cpp
  // Collects on the first call after Init, then publishes each class's instances. Raises
  // TVELException with kErrorClassNotServed at the first class that is not served.
  void GetData(NamespaceHandle ns,
               std::vector<boost::shared_ptr<NKRXVEL20::ICIMClass>>& classes) override;
  void retrieveInstances(std::string className);

  // Null for the one class that has no list (index 8).
  InstanceList* instancesOf(std::size_t classIndex);

  // ---- plugin/gatherspdata.cpp
  // 0, the status of the collector that counts for the kind of machine, or 3.
  NKRXVEL20::TVELStatusCode gatherSPdata(NamespaceHandle ns);

  // ---- spcommand/loadspcommands.cpp
  void loadSPCommands();

  // ---- spcommand/parsevpd.cpp
  // Sends the commands of spCommandTable to every SP: one record for each class that answered.
  std::vector<ClassRecord> getParseVPD(NKRXVEL20::SPLibrary* spLibrary, NamespaceHandle ns);

  // ---- spcommand/spfirmwarevpdcollector.cpp
  // 3 when no class record could be read, otherwise 0.
  NKRXVEL20::TVELStatusCode getSPFirmwareVpd(NKRXVEL20::SPLibrary* spLibrary, NamespaceHandle ns);

  // ---- spcommand/spfirmware.cpp
  // 3 after a failure that was logged, otherwise 0; that SMBIOS names no SP is none.
  NKRXVEL20::TVELStatusCode getSPFirmware(NamespaceHandle ns);
  NKRXVEL20::TVELStatusCode createSPFirmwareInstance(NamespaceHandle ns, std::string oemString,
                                                     std::string versionText,
                                                     std::string elementId);

  // ---- smbios/machinetype.cpp
  NKRXVEL20::TVELStatusCode getMachineType(std::string* type);  // always 0
  bool IscKVMMachine(std::string type);

  // ---- smbios/oemstrings.cpp
  // Fills smbiosOemEntries. 3 when the SMBIOS library cannot be opened.
  NKRXVEL20::TVELStatusCode getType11();
  std::string getSpNameFromSmBios();

  // ---- smbios/systembios.cpp
  // 0 on a normal end, also when nothing was found; 3 when the SMBIOS library cannot be opened or
  // the framework refused an instance.
  NKRXVEL20::TVELStatusCode getBIOSstructure(NKRXVEL20::SPLibrary* spLibrary, NamespaceHandle ns);
  // `reply` holds 2048 bytes. 3 when the SP did not answer.
  NKRXVEL20::TVELStatusCode getPOSTBIOSInfo(NKRXVEL20::SPLibrary* spLibrary, unsigned char* reply,
                                            int spIndex);

  // ---- smbios/dotime.cpp
  // Converts a firmware date into `value` and, unless `noSet`, sets it as the named property. A
  // text that is no date of a known form does nothing and gives 0; otherwise the framework's status
  // for the date, 3 after a logged failure.
  NKRXVEL20::TVELStatusCode doTime(InstanceHandle instance, std::string propertyName,
                                   std::string date, NKRXVEL20::TCIMDateTime& value, bool noSet);

  // ---- smbios/diagnostics.cpp
  NKRXVEL20::TVELStatusCode getDiagsFirmware(NamespaceHandle ns,
                                             NKRXVEL20::SPLibrary* spLibrary);  // always 0
  NKRXVEL20::TVELStatusCode createDiagInstance(NamespaceHandle ns, std::string text);
  NKRXVEL20::TVELStatusCode createDiagInstanceBasedOnDotCommand(NamespaceHandle ns,
                                                                NKRXVEL20::SPLibrary* spLibrary);
  // `reply` holds 2048 bytes. 3 when the SP did not answer or its record is all zero.
  NKRXVEL20::TVELStatusCode getDiagVPDInfo(NKRXVEL20::SPLibrary* spLibrary, unsigned char* reply,
                                           int spIndex);

  // ---- vpd/componentvpd.cpp
  NKRXVEL20::TVELStatusCode getVPDdata(NKRXVEL20::SPLibrary* spLibrary,
                                       NamespaceHandle ns);  // always 0

  // ---- vpd/vpdrecords.cpp
  // Each decodes one 2048-byte reply. 0 when the instance was added or an IPMI FRU source makes it
  // needless, 3 after a logged failure.
  NKRXVEL20::TVELStatusCode printVpdData(char* componentName, const char* nodeLabel,
                                         unsigned char* record, NamespaceHandle ns);
  NKRXVEL20::TVELStatusCode printMemoryVpdData(char* componentName, const char* nodeLabel,
                                               unsigned char* record, int dimmNumber,
                                               NamespaceHandle ns);
  NKRXVEL20::TVELStatusCode printPlanarVpd(char* componentName, const char* nodeLabel,
                                           unsigned char* record, NamespaceHandle ns);
  // Names the maker of a JEDEC JEP106 identity of 8 bytes; empty when it is not known.
  std::string getMDManufacturer(unsigned char* jedecId);

  // ---- vpd/tamber.cpp
  // 0 when the instance was added, otherwise 3.
  NKRXVEL20::TVELStatusCode gettamberFirmware(NKRXVEL20::SPLibrary* spLibrary, NamespaceHandle ns);
  // Dumps one record for people who debug; no collector calls it. Always 0.
  NKRXVEL20::TVELStatusCode gettamberVPD(NKRXVEL20::SPLibrary* spLibrary, NamespaceHandle ns);

  // ---- peripheral/ckvm.cpp
  void DeterminecKVMExist(NamespaceHandle ns);
  NKRXVEL20::TVELStatusCode GetcKVMFirmwareVersion(NamespaceHandle ns);
  NKRXVEL20::TVELStatusCode CreatecKVMInstance(NamespaceHandle ns);

  // ---- peripheral/ipmifru.cpp
  void DetermineIPMIFRUExist(NamespaceHandle ns);

  // ---- peripheral/usbtape.cpp
  // Publishes at once instead of filling a list; the collection does not call it.
  void getUsbTapeFirmware(NamespaceHandle ns);

  // The state that the collectors share. What only Init gives a meaning starts as false or 0.
  std::array<std::string, 10> classNames;
  std::uint32_t classCount = 0;     // how many leading class names take SP firmware records
  std::uint32_t reservedValue = 0;  // set by Init and read by nobody
  bool dataGathered = false;        // the collection has run since Init
  std::string machineType;
  std::string cKVMFirmwareVersion;
  bool ipmiFruExists = false;  // an IPMI FRU source publishes the component VPD instead
  bool cKVMExists = false;
  bool ipmiFruProbed = false;  // the IPMI FRU probe has run since Init

  // Created instances by class, in the order of classNames; Init leaves them alone.
  InstanceList diagnosticVpdInstances;
  InstanceList postBiosVpdInstances;
  InstanceList systemBiosElementInstances;
  InstanceList hardwareRevisionInstances;
  InstanceList vpdInstances;
  InstanceList spromMainInstances;
  InstanceList spromBootRomInstances;
  InstanceList deviceDriverInstances;
  InstanceList cKVMInstances;

  std::map<std::string, std::string>
      smbiosOemEntries;                       // normalised OEM string: its letters and digits
  std::vector<ClassRecord> parsedVpdRecords;  // what the SPs answered, read once
  std::vector<std::string> spCommandTable;    // SP command descriptor lines

 private:
  // ---- plugin/getdata.cpp
  void collect(NamespaceHandle ns);
  void collectcKVM(NamespaceHandle ns);
  void publish(std::string className);
};
