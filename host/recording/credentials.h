// SPDX-License-Identifier: Apache-2.0
//
// Virtual machines are handed secrets in their SMBIOS tables: OEM strings (type 11) that begin with
// "io.systemd.credential:" or "io.systemd.credential.binary:" (systemd's system and service
// credentials). They belong in no file that leaves the machine.
#pragma once

#include <cstddef>

#include "velhost/smbios.h"

namespace velhost {

// Puts a blank in the place of every text of the table that holds a credential, so that the numbers
// of the strings behind it stay. All types are looked at, and structures that are cut short or
// malformed too. Returns how many texts that were.
std::size_t blankCredentials(NKRXVEL20::host::SmbiosTable& table);

}  // namespace velhost
