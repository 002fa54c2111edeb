// SPDX-License-Identifier: Apache-2.0
//
// How Ctrl-C and the like end the program.
#pragma once

namespace velhost {

// From now on SIGINT and SIGTERM end the program with one line on standard error, and by the signal
// itself, as shells and service managers look at that. One that was ignored when the program started
// stays so.
void tellInterruptions();

// Something of the answer has been written: an interruption does not say otherwise any more.
void noteWritten() noexcept;

}  // namespace velhost
