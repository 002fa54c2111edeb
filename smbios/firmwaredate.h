// SPDX-License-Identifier: Apache-2.0
//
// The forms in which firmware writes its dates.
#pragma once

#include <optional>
#include <string>

namespace spfirmwarevpd {

struct FirmwareDate {
  int year;
  int month;
  int day;

  friend bool operator==(const FirmwareDate&, const FirmwareDate&) = default;
};

// What a date text is taken for by its length and its first "-".
enum class DateForm {
  kNone,          // nothing to do with it
  kUndated,       // ten characters with a "-" in no known place: a value, but no date
  kMonthDayYY,    // 03/15/07; years above 50 are of the 20th century
  kMonthDayYear,  // 03/15/2007, 03-15-2007
  kYearMonthDay,  // 2007-03-15
};

DateForm dateForm(const std::string& text);

// Numbers as strtol reads them, so 2009/07/14, taken as month/day/year, gives month 20, day 9 and
// year 7. nullopt for kNone and kUndated.
std::optional<FirmwareDate> parseFirmwareDate(const std::string& text);

}  // namespace spfirmwarevpd
