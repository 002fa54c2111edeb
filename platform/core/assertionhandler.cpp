// SPDX-License-Identifier: Apache-2.0
//
// Boost's assertion hooks. Everything that is built against the framework finds them here, so that
// a null handle dereferenced anywhere arrives as the framework's exception.
#include <boost/assert.hpp>

#include "vel/exception.h"
#include "vel/export.h"

namespace boost {

VEL_API void assertion_failed(const char* expression, const char* /*function*/,
                              const char* /*file*/, long /*line*/) {
  throw NKRXVEL20::TVELException(NKRXVEL20::kErrorAssertion, expression);
}

VEL_API void assertion_failed_msg(const char* expression, const char* /*message*/,
                                  const char* /*function*/, const char* /*file*/, long /*line*/) {
  throw NKRXVEL20::TVELException(NKRXVEL20::kErrorAssertion, expression);
}

}  // namespace boost
