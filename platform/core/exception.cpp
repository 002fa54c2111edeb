// SPDX-License-Identifier: Apache-2.0
#include "vel/exception.h"

namespace NKRXVEL20 {

TVELException::TVELException(std::int32_t code)
    : TVELException(code, "TVELException, code " + std::to_string(code)) {}

TVELException::TVELException(std::int32_t code, const std::string& what)
    : std::runtime_error(what), code_(code) {}

// Here, so that the type's identity lives in this library alone and is caught across all others.
TVELException::~TVELException() = default;

}  // namespace NKRXVEL20
