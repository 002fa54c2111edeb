// SPDX-License-Identifier: Apache-2.0
#include "vel/cimdatetime.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <string_view>

#include "vel/status.h"

namespace NKRXVEL20 {
namespace {

// DSP0004, 5.2.4: d a digit, s the sign of the UTC offset.
constexpr std::string_view kTimestampForm = "dddddddddddddd.ddddddsddd";
constexpr std::string_view kDefaultTimestamp = "00000000000000.000000+000";
static_assert(kTimestampForm.size() == kDefaultTimestamp.size());

bool within(int value, int lowest, int highest) { return value >= lowest && value <= highest; }

bool fits(char c, char form) {
  switch (form) {
    case 'd':
      return c >= '0' && c <= '9';
    case 's':
      return c == '+' || c == '-';
    default:
      return c == form;
  }
}

bool isTimestamp(std::string_view text) {
  return std::equal(text.begin(), text.end(), kTimestampForm.begin(), kTimestampForm.end(), fits);
}

bool isRealDate(int year, int month, int day) {
  // The calendar types keep a month and a day in a byte each, so what is far out goes first.
  if (!within(year, 1, 9999) || !within(month, 1, 12) || !within(day, 1, 31)) return false;
  return std::chrono::year_month_day{std::chrono::year{year},
                                     std::chrono::month{static_cast<unsigned>(month)},
                                     std::chrono::day{static_cast<unsigned>(day)}}
      .ok();
}

bool isRealTime(int hour, int minute, int second, int microseconds) {
  return within(hour, 0, 23) && within(minute, 0, 59) && within(second, 0, 59) &&
         within(microseconds, 0, 999999);
}

std::string padded(int number, std::size_t width) {
  const std::string digits = std::to_string(number);
  return std::string(width - digits.size(), '0') + digits;
}

}  // namespace

TCIMDateTime::TCIMDateTime() : text_(kDefaultTimestamp) {}

TCIMDateTime::TCIMDateTime(const std::string& text)
    : text_(isTimestamp(text) ? std::string_view(text) : kDefaultTimestamp) {}

int fdrSetDateTime(TCIMDateTime* value, int year, int month, int day, int hour, int minute,
                   int second, int microseconds, int utcOffset) {
  if (!isRealDate(year, month, day) || !isRealTime(hour, minute, second, microseconds) ||
      !within(utcOffset, -999, 999)) {
    return kStatusFailure;
  }
  *value = TCIMDateTime(padded(year, 4) + padded(month, 2) + padded(day, 2) + padded(hour, 2) +
                        padded(minute, 2) + padded(second, 2) + '.' + padded(microseconds, 6) +
                        (utcOffset < 0 ? '-' : '+') + padded(std::abs(utcOffset), 3));
  return kStatusSuccess;
}

}  // namespace NKRXVEL20
