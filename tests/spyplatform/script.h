// SPDX-License-Identifier: Apache-2.0
//
// How a test describes a machine to the spying platform, and looks at the calls that came.
#pragma once

#include <functional>
#include <initializer_list>
#include <string>
#include <vector>

#include "tests/spyplatform/recorder.h"

namespace spyplatform {

// Pieces laid end to end.
Bytes joined(std::initializer_list<Bytes> pieces);
// The text's bytes, then zeros up to `size`.
Bytes text(const std::string& text, std::size_t size);
Bytes zeros(std::size_t size);

// The structures that the machines have. Their texts are those that expectedcalls.h knows.
Structure biosInformation();
Structure oemStrings(const std::vector<std::string>& strings);

// The records that the SPs reply with.
Bytes firmwareRecord(const std::string& fileName);    // SP main and boot-ROM firmware, 40 bytes
Bytes nodeRecord();                                   // POST/BIOS and diagnostics VPD, 69 bytes
Bytes componentRecord(const std::string& fruNumber);  // power supplies, backplanes, cards
Bytes dimmRecord();
Bytes planarRecord();

// Rules for the calls to come. Of several for a call the last one counts.
void when(const std::string& operation, const std::vector<std::string>& parts,
          const Outcome& outcome, int nth = 0);
void when(const std::string& operation, const Outcome& outcome, int nth = 0);
// The SP's answer to "04 03 05 01", or with data to "04 03 05 0B 01 / 00 00 7F 00".
void whenSent(const std::string& request, int spIndex, const Outcome& outcome, int nth = 0);
// What happens besides, when a call is made.
void whenever(const std::string& operation, const std::vector<std::string>& parts, int nth,
              const std::function<void()>& action);

// Where the calls differ first from the expected ones, with the lines before; empty when nowhere.
std::string difference(const Trace& calls, const Trace& expected);

// The lines that contain the text.
Trace linesWith(const Trace& calls, const std::string& part);

}  // namespace spyplatform
