// SPDX-License-Identifier: Apache-2.0
#include "host/explanation/datesof.h"

#include <charconv>
#include <chrono>
#include <string_view>

#include "host/explanation/rules.h"
#include "vel/cimdatetime.h"

namespace velhost {
namespace {

using NKRXVEL20::TCIMDateTime;
using Value = std::optional<std::string>;

struct Date {
  int year = 0;
  int month = 0;
  int day = 0;
};

// Where the fields of a date stand in its text.
struct Form {
  std::string_view shape;  // a digit for 0, any other character for itself
  std::size_t year;
  std::size_t month;
  std::size_t day;
};

constexpr Form kForms[] = {
    {"00/00/00", 6, 0, 3},
    {"00/00/0000", 6, 0, 3},
    {"00-00-0000", 6, 0, 3},
    {"0000-00-00", 0, 5, 8},
};

bool hasShape(std::string_view text, std::string_view shape) {
  if (text.size() != shape.size()) return false;
  for (std::size_t i = 0; i < shape.size(); ++i) {
    const bool isDigit = text[i] >= '0' && text[i] <= '9';
    if (shape[i] == '0' ? !isDigit : text[i] != shape[i]) return false;
  }
  return true;
}

// As many digits as there are.
int numberAt(std::string_view text, std::size_t at) {
  int number = 0;
  std::from_chars(text.data() + at, text.data() + text.size(), number);
  return number;
}

// DSP0134 7.1: what a year of two digits means.
int wholeYear(int year) { return year + (year > 50 ? 1900 : 2000); }

std::optional<Date> readDate(std::string_view text) {
  for (const Form& form : kForms) {
    if (!hasShape(text, form.shape)) continue;
    const int year = numberAt(text, form.year);
    return Date{text.size() == kForms[0].shape.size() ? wholeYear(year) : year,
                numberAt(text, form.month), numberAt(text, form.day)};
  }
  return std::nullopt;
}

// Empty for a day that there is not.
std::string timestamp(const Date& date, int hour = 0, int minute = 0) {
  TCIMDateTime value;
  const int status = fdrSetDateTime(&value, date.year, date.month, date.day, hour, minute, 0, 0, 0);
  return status == 0 ? value.ToString() : "";
}

}  // namespace

// A text of a date's length that is none is read in part, as far as its collector can.
Value dateOf(std::span<const unsigned char> bytes) {
  const std::string text = textOf(bytes);
  if (text.size() != 8 && text.size() != 10) return TCIMDateTime().ToString();
  const auto date = readDate(text);
  if (!date) return std::nullopt;
  const std::string stamp = timestamp(*date);
  return stamp.empty() ? TCIMDateTime().ToString() : stamp;
}

Value monthDayYear(std::span<const unsigned char> bytes) {
  std::string text = textOf(bytes);
  text.erase(text.find_last_not_of(' ') + 1);
  if (text.find('-') != std::string::npos) return "";
  const auto date = readDate(text);
  return date ? timestamp(*date) : "";
}

Value minutesSince1996(std::span<const unsigned char> bytes) {
  using namespace std::chrono;
  const int count = bytes[0] | bytes[1] << 8 | bytes[2] << 16;
  if (count == 0) return "";
  const minutes since(count);
  const sys_days start = year{1996} / January / 1;
  const year_month_day day(start + floor<days>(since));
  const hh_mm_ss time(since - floor<days>(since));
  return timestamp(
      {static_cast<int>(day.year()), static_cast<int>(static_cast<unsigned>(day.month())),
       static_cast<int>(static_cast<unsigned>(day.day()))},
      static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()));
}

}  // namespace velhost
