// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdexcept>

namespace velhost {

// Bad usage or bad input: the program ends with status 2. what() says where and what is wrong.
class InputError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace velhost
