// SPDX-License-Identifier: Apache-2.0
//
// The plug-in's operations as its documents give them; nothing here needs to run, it needs to
// compile.
#include <gtest/gtest.h>

#include <type_traits>

#include "plugin/spfirmwarevpd.h"
#include "smbios/allnumeric.h"

using namespace NKRXVEL20;

namespace {

template <class Expected, class Given>
constexpr bool is(Given /*given*/) {
  return std::is_same_v<Expected, Given>;
}

using Plugin = SPFirmwareVpd;
using Namespace = boost::shared_ptr<ICIMNamespace>;
using Instance = boost::shared_ptr<ICIMInstance>;
using Classes = std::vector<boost::shared_ptr<ICIMClass>>;
using Status = TVELStatusCode;
using Text = std::string;
using Bytes = unsigned char*;

// ---- lifecycle and query
static_assert(std::is_default_constructible_v<Plugin>);
static_assert(std::has_virtual_destructor_v<Plugin>);
static_assert(is<int (Plugin::*)()>(&Plugin::GetType));
static_assert(is<Text (Plugin::*)()>(&Plugin::GetName));
static_assert(is<Text (Plugin::*)()>(&Plugin::GetVersion));
static_assert(is<Text (Plugin::*)()>(&Plugin::GetInterfaceVersion));
static_assert(is<void (Plugin::*)()>(&Plugin::PrepareForUnload));
static_assert(is<void (Plugin::*)()>(&Plugin::Init));
static_assert(is<void (Plugin::*)()>(&Plugin::DeInit));
static_assert(is<void (Plugin::*)(Namespace, Classes&)>(&Plugin::GetData));
static_assert(is<void (Plugin::*)(Text)>(&Plugin::retrieveInstances));
static_assert(is<Status (Plugin::*)(Namespace)>(&Plugin::gatherSPdata));

// ---- SP commands
static_assert(is<void (Plugin::*)()>(&Plugin::loadSPCommands));
static_assert(
    is<std::vector<Plugin::ClassRecord> (Plugin::*)(SPLibrary*, Namespace)>(&Plugin::getParseVPD));
static_assert(is<Status (Plugin::*)(SPLibrary*, Namespace)>(&Plugin::getSPFirmwareVpd));
static_assert(is<Status (Plugin::*)(Namespace)>(&Plugin::getSPFirmware));
static_assert(
    is<Status (Plugin::*)(Namespace, Text, Text, Text)>(&Plugin::createSPFirmwareInstance));

// ---- SMBIOS
static_assert(is<Status (Plugin::*)(Text*)>(&Plugin::getMachineType));
static_assert(is<bool (Plugin::*)(Text)>(&Plugin::IscKVMMachine));
static_assert(is<Status (Plugin::*)()>(&Plugin::getType11));
static_assert(is<Text (Plugin::*)()>(&Plugin::getSpNameFromSmBios));
static_assert(is<Status (Plugin::*)(SPLibrary*, Namespace)>(&Plugin::getBIOSstructure));
static_assert(is<Status (Plugin::*)(SPLibrary*, Bytes, int)>(&Plugin::getPOSTBIOSInfo));
static_assert(is<Status (Plugin::*)(Instance, Text, Text, TCIMDateTime&, bool)>(&Plugin::doTime));
static_assert(is<Status (Plugin::*)(Namespace, SPLibrary*)>(&Plugin::getDiagsFirmware));
static_assert(is<Status (Plugin::*)(Namespace, Text)>(&Plugin::createDiagInstance));
static_assert(
    is<Status (Plugin::*)(Namespace, SPLibrary*)>(&Plugin::createDiagInstanceBasedOnDotCommand));
static_assert(is<Status (Plugin::*)(SPLibrary*, Bytes, int)>(&Plugin::getDiagVPDInfo));
static_assert(is<bool (*)(const char*, int)>(&isAllNumeric));

// ---- component VPD
static_assert(is<Status (Plugin::*)(SPLibrary*, Namespace)>(&Plugin::getVPDdata));
static_assert(is<Status (Plugin::*)(char*, const char*, Bytes, Namespace)>(&Plugin::printVpdData));
static_assert(
    is<Status (Plugin::*)(char*, const char*, Bytes, int, Namespace)>(&Plugin::printMemoryVpdData));
static_assert(
    is<Status (Plugin::*)(char*, const char*, Bytes, Namespace)>(&Plugin::printPlanarVpd));
static_assert(is<Text (Plugin::*)(Bytes)>(&Plugin::getMDManufacturer));
static_assert(is<Status (Plugin::*)(SPLibrary*, Namespace)>(&Plugin::gettamberFirmware));
static_assert(is<Status (Plugin::*)(SPLibrary*, Namespace)>(&Plugin::gettamberVPD));

// ---- peripherals
static_assert(is<void (Plugin::*)(Namespace)>(&Plugin::DeterminecKVMExist));
static_assert(is<Status (Plugin::*)(Namespace)>(&Plugin::GetcKVMFirmwareVersion));
static_assert(is<Status (Plugin::*)(Namespace)>(&Plugin::CreatecKVMInstance));
static_assert(is<void (Plugin::*)(Namespace)>(&Plugin::DetermineIPMIFRUExist));
static_assert(is<void (Plugin::*)(Namespace)>(&Plugin::getUsbTapeFirmware));

}  // namespace
