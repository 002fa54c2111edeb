// SPDX-License-Identifier: Apache-2.0
//
// One call that fails, and how.
#pragma once

#include <ostream>

#include "tests/sweep/trace.h"

namespace sweep {

enum class Failure {
  kVelException,  // the framework's own
  kRuntimeError,  // foreign ones
  kInteger,
  kRefused,      // a command that is not answered
  kLength,       // an answer whose length is told as Fault::number
  kReadNothing,  // a read with the status Fault::number that gives no bytes
  kReadWhole,    // the same, with the structure
};

struct Fault {
  Kind kind = Kind::kThrown;
  unsigned nth = 0;  // from 1; 0: none
  bool fromThenOn = false;
  Failure failure = Failure::kVelException;
  int number = 0;

  bool isDue(unsigned call) const { return nth != 0 && (fromThenOn ? call >= nth : call == nth); }
  bool throws() const { return failure <= Failure::kInteger; }
};

// What the exception is called in a trace.
const char* nameOf(Failure failure);

std::ostream& operator<<(std::ostream& out, const Fault& fault);

// Throws the failure's exception.
[[noreturn]] void raise(Failure failure);

}  // namespace sweep
