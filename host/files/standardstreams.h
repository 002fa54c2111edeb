// SPDX-License-Identifier: Apache-2.0
//
// Standard input, output and error.
#pragma once

#include <string_view>

#include "host/files/filecalls.h"

namespace velhost {

// Takes the place of each of the three that the program was started without, so that no file that is
// opened later gets its number and what is meant for people. Reading and writing it fails with EBADF
// as before. To be called before anything is opened; throws InputError.
void occupyStandardStreams(FileCalls& calls = kernelFiles());

// Throws InputError when not all of it could be written.
void writeStandardOutput(std::string_view text, FileCalls& calls = kernelFiles());

// What cannot be written there has no other place to go.
void writeStandardError(std::string_view text, FileCalls& calls = kernelFiles());

}  // namespace velhost
