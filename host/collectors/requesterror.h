// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "host/collectors/queryresult.h"

namespace velhost {

// Describes the exception that is being handled. To be called in a catch block only. Keeps nothing
// of the exception itself, whose type may go with the plug-in.
RequestError describeCurrentException();

// "TVELException code 2: its text", or the text alone where nobody was asked.
std::string errorText(const RequestError& error);

}  // namespace velhost
