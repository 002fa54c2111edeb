// SPDX-License-Identifier: Apache-2.0
//
// CIM date-time values: the 25-character timestamp of DMTF DSP0004, "yyyymmddhhmmss.mmmmmmsutc".
#pragma once

#include <string>

#include "vel/export.h"

namespace NKRXVEL20 {

class VEL_API TCIMDateTime {
 public:
  // 00000000000000.000000+000
  TCIMDateTime();

  // Takes a well-formed timestamp over; any other text gives the default value.
  explicit TCIMDateTime(const std::string& text);

  const std::string& ToString() const noexcept { return text_; }

  friend bool operator==(const TCIMDateTime& a, const TCIMDateTime& b) {
    return a.text_ == b.text_;
  }

 private:
  std::string text_;
};

// Sets the value and returns 0 for a real Gregorian date (years 1 to 9999), a real time of day,
// microseconds 0 to 999999 and a UTC offset of -999 to 999 minutes. Otherwise returns 3 and leaves
// the value as it was.
VEL_API int fdrSetDateTime(TCIMDateTime* value, int year, int month, int day, int hour, int minute,
                           int second, int microseconds, int utcOffset);

}  // namespace NKRXVEL20
