// SPDX-License-Identifier: Apache-2.0
#include "collectors/support/contains.h"
#include "collectors/support/corelog.h"
#include "plugin/spfirmwarevpd.h"
#include "smbios/machinetypes.h"
#include "vel/osspecific.h"

using namespace NKRXVEL20;
using namespace collector;
using namespace spfirmwarevpd;

TVELStatusCode SPFirmwareVpd::getMachineType(std::string* type) {
  logProgress("getMachineType() entered.");
  *type = TOSSpecific::GetMachineTypeFromID();
  logProgress("getMachineType() completed.");
  return {kStatusSuccess};
}

// A substring search: a longer type matches by a listed code anywhere in it.
bool SPFirmwareVpd::IscKVMMachine(std::string type) {
  return std::ranges::any_of(kcKVMMachines,
                             [&](std::string_view code) { return contains(type, code); });
}
