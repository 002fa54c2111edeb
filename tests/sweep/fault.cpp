// SPDX-License-Identifier: Apache-2.0
#include "tests/sweep/fault.h"

#include <stdexcept>

#include "vel/exception.h"

namespace sweep {
namespace {

constexpr int kOurCode = 77;  // none of the framework's

constexpr const char* kFailures[] = {
    "TVELException 77", "runtime_error a fault", "int 42",   "refused",
    "length",           "reads nothing",         "reads all"};

}  // namespace

const char* nameOf(Failure failure) { return kFailures[static_cast<std::size_t>(failure)]; }

std::ostream& operator<<(std::ostream& out, const Fault& fault) {
  out << Event{fault.kind, std::to_string(fault.nth), {}, {}} << ": " << nameOf(fault.failure);
  if (!fault.throws()) out << ' ' << fault.number;
  return out << (fault.fromThenOn ? ", and all behind it" : "");
}

void raise(Failure failure) {
  if (failure == Failure::kVelException) throw NKRXVEL20::TVELException(kOurCode);
  if (failure == Failure::kRuntimeError) throw std::runtime_error("a fault");
  throw 42;  // NOLINT(hicpp-exception-baseclass): any type may come
}

}  // namespace sweep
