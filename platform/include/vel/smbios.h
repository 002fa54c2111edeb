// SPDX-License-Identifier: Apache-2.0
//
// The SMBIOS structure reader. Structures come as the SMBIOS standard (DSP0134) lays them out: the
// formatted area, then the string set.
#pragma once

#include "vel/export.h"

namespace NKRXVEL20 {

class TPluginManagerProvider;  // never defined here: plug-ins pass null
struct TSmBiosHandle;          // an open table; owned by the library until smBiosClose

enum ESmBiosStatus : int {
  kSmBiosRead = 0,        // a structure was read
  kSmBiosReadFailed = 3,  // the read failed
  kSmBiosNoMore = 5,      // no more structures of that type
};

// Opens the machine's table. Returns 0 and sets the handle, or returns an error code.
VEL_API int smBiosLoad(TPluginManagerProvider* provider, TSmBiosHandle** handle);

// Reads the first structure of a type. `size` is the buffer's capacity and is left as it is; a
// longer structure is cut to it, and nothing is written behind a shorter one. Returns one of
// ESmBiosStatus or a machine's own code; with kSmBiosNoMore the buffer is left as it was.
VEL_API int smBiosGetFirst(TSmBiosHandle* handle, int type, unsigned char* buffer, int* size);

// The same for the next structure of the type that the last smBiosGetFirst asked for.
VEL_API int smBiosGetNext(TSmBiosHandle* handle, unsigned char* buffer, int* size);

// Closes the table and nulls the handle; a null handle is allowed.
VEL_API int smBiosClose(TSmBiosHandle** handle);

}  // namespace NKRXVEL20
