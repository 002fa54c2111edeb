// SPDX-License-Identifier: Apache-2.0
//
// What a test takes from the spying core library besides the public headers.
#pragma once

#include <boost/shared_ptr.hpp>
#include <string>

#include "tests/spyplatform/recorder.h"
#include "vel/cim.h"

namespace spyplatform {

// The value as a line shows it: "text", uint16 3, date 20070315000000.000000+000, empty.
VEL_API std::string describe(const NKRXVEL20::TCIMValue& value);

// {} or {key: value, ...}
VEL_API std::string describe(const NKRXVEL20::TCIMValueMap& map);

VEL_API boost::shared_ptr<NKRXVEL20::ICIMNamespace> makeNamespace();

// A handle as a framework puts it into a request.
VEL_API boost::shared_ptr<NKRXVEL20::ICIMClass> makeClass(const std::string& name);

}  // namespace spyplatform
