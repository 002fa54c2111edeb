// SPDX-License-Identifier: Apache-2.0
#include "smbios/firmwaredate.h"

#include <cstdlib>

namespace spfirmwarevpd {

namespace {

int number(const std::string& text, std::size_t position, std::size_t length) {
  return static_cast<int>(std::strtol(text.substr(position, length).c_str(), nullptr, 10));
}

int fullYear(int yy) { return yy > 50 ? 1900 + yy : 2000 + yy; }

}  // namespace

DateForm dateForm(const std::string& text) {
  if (text.size() == 8) return DateForm::kMonthDayYY;
  if (text.size() != 10) return DateForm::kNone;
  switch (text.find('-')) {
    case std::string::npos:
    case 2:
      return DateForm::kMonthDayYear;
    case 4:
      return DateForm::kYearMonthDay;
    default:
      return DateForm::kUndated;
  }
}

std::optional<FirmwareDate> parseFirmwareDate(const std::string& text) {
  switch (dateForm(text)) {
    case DateForm::kMonthDayYY:
      return FirmwareDate{fullYear(number(text, 6, 2)), number(text, 0, 2), number(text, 3, 2)};
    case DateForm::kMonthDayYear:
      return FirmwareDate{number(text, 6, 4), number(text, 0, 2), number(text, 3, 2)};
    case DateForm::kYearMonthDay:
      return FirmwareDate{number(text, 0, 4), number(text, 5, 2), number(text, 8, 2)};
    case DateForm::kNone:
    case DateForm::kUndated:
      break;
  }
  return std::nullopt;
}

}  // namespace spfirmwarevpd
