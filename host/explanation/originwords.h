// SPDX-License-Identifier: Apache-2.0
//
// Lines of origin for people.
#pragma once

#include <string>

#include "host/explanation/view.h"

namespace velhost {

// A sentence about a line, without a point at its end: "bytes 73 to 90 of the reply to dot command
// 04 03 05 0B n with data 00 00 7F 00 (n is the component's number): the text up to the first zero
// byte; where Name has "DIMM"". Of a notation that is not known the line as it stands.
std::string originInWords(const Origin& origin);

// Where a value comes from, in a few words: "dot command 04 03 05 0B n".
std::string sourceInWords(const Origin& origin);

// The same of what was really asked and read: "SP 1, dot command 04 03 05 0B 01, data 00 00 7F 00".
std::string evidenceInWords(const Origin& origin, const View& view);

}  // namespace velhost
