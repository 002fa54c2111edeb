// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace velhost {

// A CIM timestamp for people: 20090714123000.000000+000 is shown as 2009-07-14 12:30:00, without a
// time that is midnight. The offset and the fraction are left out when they are zero, anything
// unusual is shown as it is. A date-time of zeros, which stands for a date that nobody told, is empty.
std::string dateText(const std::string& cim);

}  // namespace velhost
