// SPDX-License-Identifier: Apache-2.0
#include "vel/cim.h"

namespace NKRXVEL20 {

// Here, so that each interface has one identity across shared objects.
ICIMProperty::~ICIMProperty() = default;
ICIMInstance::~ICIMInstance() = default;
ICIMClass::~ICIMClass() = default;
ICIMNamespace::~ICIMNamespace() = default;

const char* const TCIMSchemaHelper::kContextName = "ContextName";
const char* const TCIMSchemaHelper::kPluginNSPName = "plugin.nsp";

}  // namespace NKRXVEL20
