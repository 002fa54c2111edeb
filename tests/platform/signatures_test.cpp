// SPDX-License-Identifier: Apache-2.0
//
// The framework's interfaces as plug-ins know them. A platform that declares one of them otherwise
// takes no plug-in that was built before; nothing here needs to run, it needs to compile.
#include <gtest/gtest.h>

#include <boost/function.hpp>
#include <map>
#include <string>
#include <type_traits>
#include <vector>

#include "vel/cim.h"
#include "vel/exception.h"
#include "vel/log.h"
#include "vel/osspecific.h"
#include "vel/plugin.h"
#include "vel/pluginmanager.h"
#include "vel/rootobject.h"
#include "vel/smbios.h"
#include "vel/splibrary.h"
#include "vel/status.h"

namespace NKRXVEL20 {
namespace {

// The member or function has exactly this type.
template <class Expected, class Given>
constexpr bool is(Given /*given*/) {
  return std::is_same_v<Expected, Given>;
}

using Handle = boost::shared_ptr<ICIMInstance>;
using ClassHandle = boost::shared_ptr<ICIMClass>;
using Text = const std::string&;
using Bytes = unsigned char*;
using ReadBytes = const unsigned char*;

// ---- values
static_assert(std::is_same_v<TCIMValueMap, std::map<std::string, TCIMValue>>);
static_assert(std::is_constructible_v<TCIMValue, const char*>);
static_assert(std::is_constructible_v<TCIMValue, Text>);
static_assert(std::is_constructible_v<TCIMValue, bool>);
static_assert(std::is_constructible_v<TCIMValue, unsigned char>);
static_assert(std::is_constructible_v<TCIMValue, unsigned short>);
static_assert(std::is_constructible_v<TCIMValue, std::uint64_t>);
static_assert(std::is_constructible_v<TCIMValue, TCIMDateTime>);
static_assert(is<std::string (TCIMValue::*)(int) const>(&TCIMValue::ToString));
static_assert(std::is_default_constructible_v<TCIMDateTime>);
static_assert(std::is_constructible_v<TCIMDateTime, Text>);
static_assert(is<Text (TCIMDateTime::*)() const noexcept>(&TCIMDateTime::ToString));
static_assert(is<int (*)(TCIMDateTime*, int, int, int, int, int, int, int, int)>(&fdrSetDateTime));
static_assert(is<std::int32_t TVELStatusCode::*>(&TVELStatusCode::status));
static_assert(std::is_constructible_v<TVELException, std::int32_t>);
static_assert(std::is_base_of_v<std::exception, TVELException>);

// ---- CIM objects
static_assert(is<ClassHandle (ICIMNamespace::*)(Text, TCIMValueMap)>(&ICIMNamespace::GetClass));
static_assert(is<Text (ICIMClass::*)(const TCIMValueMap&) const>(&ICIMClass::GetName));
static_assert(is<void (ICIMClass::*)(const boost::function<bool(Handle)>&, bool,
                                     const TCIMValueMap&)>(&ICIMClass::GetInstances));
static_assert(is<Handle (ICIMClass::*)()>(&ICIMClass::CreateInstance));
static_assert(is<boost::shared_ptr<ICIMProperty> (ICIMInstance::*)(Text, const TCIMValueMap&)>(
    &ICIMInstance::GetProperty));
static_assert(is<void (ICIMInstance::*)(Text, const TCIMValue&, const TCIMValueMap&)>(
    &ICIMInstance::SetProperty));
static_assert(is<void (ICIMInstance::*)(TCIMValueMap)>(&ICIMInstance::AddToClass));
static_assert(is<std::string (ICIMProperty::*)() const>(&ICIMProperty::GetValueAsString));
static_assert(is<const TCIMValue& (ICIMProperty::*)() const>(&ICIMProperty::GetValue));
static_assert(
    std::is_constructible_v<boost::function<bool(Handle)>, TAddToVectorCallback<ICIMInstance>>);

// ---- plug-ins
static_assert(is<int (IPluginCallbacks::*)()>(&IPluginCallbacks::GetType));
static_assert(is<std::string (IPluginCallbacks::*)()>(&IPluginCallbacks::GetName));
static_assert(is<std::string (IPluginCallbacks::*)()>(&IPluginCallbacks::GetVersion));
static_assert(is<std::string (IPluginCallbacks::*)()>(&IPluginCallbacks::GetInterfaceVersion));
static_assert(is<void (IPluginCallbacks::*)()>(&IPluginCallbacks::PrepareForUnload));
static_assert(is<void (IPluginCallbacks::*)()>(&IPluginCallbacks::Init));
static_assert(is<void (IPluginCallbacks::*)()>(&IPluginCallbacks::DeInit));
static_assert(is<void (IPluginBasicQueryCallbacks::*)(boost::shared_ptr<ICIMNamespace>,
                                                      std::vector<ClassHandle>&)>(
    &IPluginBasicQueryCallbacks::GetData));
static_assert(std::has_virtual_destructor_v<IPluginCallbacks>);
static_assert(std::has_virtual_destructor_v<IPluginBasicQueryCallbacks>);
static_assert(std::is_base_of_v<ICIMNamespace, TPluginManagerNamespace>);
static_assert(is<void (TPluginManagerNamespace::*)(IPluginCallbacks*)>(
    &TPluginManagerNamespace::RegisterPlugin));
static_assert(is<boost::shared_ptr<ICIMNamespace> (*)()>(&TRootObject::GetPluginManager));

// ---- logs
static_assert(is<void (ICoreLogger::*)(EVELLogSeverity, Text)>(&ICoreLogger::Log));
static_assert(is<ICoreLogger& (*)()>(&TRootObject::GetCoreLogger));
static_assert(is<void (*)(EVELLogSeverity, const char*)>(&fdrWriteLog));

// ---- machine helpers
static_assert(is<std::string (*)()>(&TOSSpecific::GetMachineTypeFromID));
static_assert(is<void (*)(char*, char*, int, int)>(&TOSSpecific::getBIDString));
static_assert(is<void (*)(std::string&)>(&TOSSpecific::removeNonAlpaNumeric));
static_assert(is<void (*)(std::string&, std::string&)>(&TOSSpecific::breakApartVersion));

// ---- SMBIOS
static_assert(is<int (*)(TPluginManagerProvider*, TSmBiosHandle**)>(&smBiosLoad));
static_assert(is<int (*)(TSmBiosHandle*, int, Bytes, int*)>(&smBiosGetFirst));
static_assert(is<int (*)(TSmBiosHandle*, Bytes, int*)>(&smBiosGetNext));
static_assert(is<int (*)(TSmBiosHandle**)>(&smBiosClose));

// ---- the SP driver
static_assert(std::is_constructible_v<dotCmd, unsigned char, int, int, ReadBytes, ReadBytes>);
static_assert(!std::is_trivially_destructible_v<dotCmd>);
static_assert(std::is_constructible_v<TamberCmd, unsigned char, unsigned char, unsigned char,
                                      unsigned char, Bytes, int, bool, bool>);
static_assert(is<SPLibrary* (*)(int)>(&SPLibrary::GetSplibraryInstance));
static_assert(is<int (SPLibrary::*)()>(&SPLibrary::discoverSPs));
static_assert(is<int (SPLibrary::*)()>(&SPLibrary::GetNumberBMCNode));
static_assert(is<bool (SPLibrary::*)()>(&SPLibrary::checkSPComm));
static_assert(is<bool (SPLibrary::*)()>(&SPLibrary::isDotcommand));
static_assert(is<bool (SPLibrary::*)()>(&SPLibrary::isTamber));
static_assert(is<bool (SPLibrary::*)()>(&SPLibrary::isTwgStop));
static_assert(is<bool (SPLibrary::*)()>(&SPLibrary::isTvmlibrary));
static_assert(is<bool (SPLibrary::*)()>(&SPLibrary::IsBMCMachine));
static_assert(is<bool (SPLibrary::*)()>(&SPLibrary::IsIPMIDriversPresent));
static_assert(is<bool (SPLibrary::*)()>(&SPLibrary::IsIntegratedBMC));
static_assert(is<bool (SPLibrary::*)(Bytes, Bytes, Bytes)>(&SPLibrary::buildDotCommandList));
static_assert(
    is<int (SPLibrary::*)(Bytes, int, Bytes, Bytes, Bytes)>(&SPLibrary::getComponentdotCmdList));
static_assert(is<bool (SPLibrary::*)(dotCmd*, Bytes, int*, int, int)>(&SPLibrary::sendDotCommand));
static_assert(is<bool (SPLibrary::*)(TamberCmd*, int*, Bytes)>(&SPLibrary::sendTamberCommand));
static_assert(is<bool (SPLibrary::*)(Bytes, int*, int, bool)>(&SPLibrary::sendIPMICommand));
static_assert(is<void (SPLibrary::*)(ReadBytes, int)>(&SPLibrary::printMatrix));

// ---- the numbers that plug-ins of other builds were compiled with
static_assert(kSmBiosRead == 0 && kSmBiosReadFailed == 3 && kSmBiosNoMore == 5);
static_assert(kSeverityFailure == 0 && kSeverityPrevented == 1 && kSeverityProgress == 3);

}  // namespace
}  // namespace NKRXVEL20
