// SPDX-License-Identifier: Apache-2.0
//
// The one exception type that the framework raises, and the assertion handler that raises it.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

#include "vel/export.h"

namespace NKRXVEL20 {

enum EVELErrorCode : std::int32_t {
  kErrorAssertion = 1,          // a Boost assertion, as a null shared_ptr dereferenced
  kErrorClassNotServed = 2,     // a plug-in was asked for a class that it does not serve
  kErrorClassNotFound = 5,      // the namespace has no class of that name
  kErrorNotSupported = 7,       // an instance of an abstract class
  kErrorPropertyNotFound = 12,  // the class has no property of that name
  kErrorTypeMismatch = 13,      // the value is not of the type that the schema gives the property
};

class VEL_API TVELException : public std::runtime_error {
 public:
  explicit TVELException(std::int32_t code);
  TVELException(std::int32_t code, const std::string& what);
  ~TVELException() override;

  std::int32_t GetCode() const noexcept { return code_; }

 private:
  std::int32_t code_;
};

}  // namespace NKRXVEL20
