// SPDX-License-Identifier: Apache-2.0
//
// The machine file's notation of bytes: hex pairs, or a list of pieces laid end to end.
#pragma once

#include "host/machine/jsondocument.h"
#include "host/text/hextext.h"

namespace velhost {

// A text of hex pairs, or a list of such texts and of {"text": T, "size": N} and {"zeros": N}.
// Its bytes count against what the document may have in sum. Throws DocumentError.
Bytes readBytes(const Cursor& at);

// A text of hex pairs. Throws DocumentError, which names the cursor's place.
Bytes readHex(const Cursor& at, std::string_view text);

}  // namespace velhost
