// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <boost/shared_ptr.hpp>
#include <optional>
#include <string>

#include "vel/cim.h"
#include "vel/export.h"

namespace NKRXVEL20::host {

// What TRootObject::GetPluginManager() hands out; null takes it away.
VEL_API void setPluginManager(boost::shared_ptr<ICIMNamespace> manager);

// What TOSSpecific::GetMachineTypeFromID() answers; nullopt: what SMBIOS type 1 says.
VEL_API void setMachineType(std::optional<std::string> machineType);

}  // namespace NKRXVEL20::host
