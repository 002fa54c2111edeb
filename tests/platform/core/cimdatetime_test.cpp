// SPDX-License-Identifier: Apache-2.0
#include "vel/cimdatetime.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>

namespace NKRXVEL20 {
namespace {

constexpr char kDefault[] = "00000000000000.000000+000";

TEST(TCIMDateTime, IsAllZeroByDefault) { EXPECT_EQ(kDefault, TCIMDateTime().ToString()); }

TEST(TCIMDateTime, TakesATimestampOverAndNothingElse) {
  const struct {
    const char* what;
    const char* text;
    const char* result;
  } kCases[] = {
      {"a timestamp", "20090714000000.000000+000", "20090714000000.000000+000"},
      {"every field filled", "19991231235958.123456-300", "19991231235958.123456-300"},
      {"the default itself", kDefault, kDefault},
      {"empty", "", kDefault},
      {"one character short", "20090714000000.000000+00", kDefault},
      {"one character long", "20090714000000.000000+0000", kDefault},
      {"no point", "20090714000000,000000+000", kDefault},
      {"an interval's colon for the sign", "20090714000000.000000:000", kDefault},
      {"a letter in the date", "2009O714000000.000000+000", kDefault},
      {"unspecified microseconds", "20090714000000.******+000", kDefault},
      {"a letter in the offset", "20090714000000.000000+00x", kDefault},
      {"a date alone", "07/14/2009", kDefault},
  };
  for (const auto& c : kCases) EXPECT_EQ(c.result, TCIMDateTime(c.text).ToString()) << c.what;
}

TEST(TCIMDateTime, ComparesByText) {
  EXPECT_EQ(TCIMDateTime("20090714000000.000000+000"), TCIMDateTime("20090714000000.000000+000"));
  EXPECT_FALSE(TCIMDateTime("20090714000000.000000+000") == TCIMDateTime());
}

struct Fields {
  int year, month, day, hour, minute, second, microseconds, utcOffset;
};

int set(TCIMDateTime& value, const Fields& f) {
  return fdrSetDateTime(&value, f.year, f.month, f.day, f.hour, f.minute, f.second, f.microseconds,
                        f.utcOffset);
}

TEST(FdrSetDateTime, SetsARealDateAndTime) {
  const struct {
    const char* what;
    Fields fields;
    const char* result;
  } kCases[] = {
      {"a date alone", {2009, 7, 14, 0, 0, 0, 0, 0}, "20090714000000.000000+000"},
      {"every field", {1951, 12, 31, 23, 59, 58, 123456, 60}, "19511231235958.123456+060"},
      {"lowest", {1, 1, 1, 0, 0, 0, 0, -999}, "00010101000000.000000-999"},
      {"highest", {9999, 12, 31, 23, 59, 59, 999999, 999}, "99991231235959.999999+999"},
      {"short numbers are padded", {20, 1, 2, 3, 4, 5, 6, -7}, "00200102030405.000006-007"},
      {"29 February of a leap year", {2008, 2, 29, 0, 0, 0, 0, 0}, "20080229000000.000000+000"},
      {"29 February 2000", {2000, 2, 29, 0, 0, 0, 0, 0}, "20000229000000.000000+000"},
  };
  for (const auto& c : kCases) {
    TCIMDateTime value;
    EXPECT_EQ(0, set(value, c.fields)) << c.what;
    EXPECT_EQ(c.result, value.ToString()) << c.what;
  }
}

TEST(FdrSetDateTime, RefusesTheRestAndKeepsTheValue) {
  const struct {
    const char* what;
    Fields fields;
  } kCases[] = {
      {"year 0", {0, 1, 1, 0, 0, 0, 0, 0}},
      {"year 10000", {10000, 1, 1, 0, 0, 0, 0, 0}},
      {"month 0", {2009, 0, 1, 0, 0, 0, 0, 0}},
      {"month 13", {2009, 13, 1, 0, 0, 0, 0, 0}},
      {"month 257, 1 in a byte", {2009, 257, 1, 0, 0, 0, 0, 0}},
      {"month -255, 1 in a byte", {2009, -255, 1, 0, 0, 0, 0, 0}},
      {"day 0", {2009, 1, 0, 0, 0, 0, 0, 0}},
      {"day 32", {2009, 1, 32, 0, 0, 0, 0, 0}},
      {"day 257, 1 in a byte", {2009, 1, 257, 0, 0, 0, 0, 0}},
      {"31 April", {2009, 4, 31, 0, 0, 0, 0, 0}},
      {"29 February", {2009, 2, 29, 0, 0, 0, 0, 0}},
      {"29 February 1900", {1900, 2, 29, 0, 0, 0, 0, 0}},
      {"hour 24", {2009, 1, 1, 24, 0, 0, 0, 0}},
      {"hour -1", {2009, 1, 1, -1, 0, 0, 0, 0}},
      {"minute 60", {2009, 1, 1, 0, 60, 0, 0, 0}},
      {"minute -1", {2009, 1, 1, 0, -1, 0, 0, 0}},
      {"second 60", {2009, 1, 1, 0, 0, 60, 0, 0}},
      {"second -1", {2009, 1, 1, 0, 0, -1, 0, 0}},
      {"a million microseconds", {2009, 1, 1, 0, 0, 0, 1000000, 0}},
      {"microsecond -1", {2009, 1, 1, 0, 0, 0, -1, 0}},
      {"offset 1000", {2009, 1, 1, 0, 0, 0, 0, 1000}},
      {"offset -1000", {2009, 1, 1, 0, 0, 0, 0, -1000}},
      {"largest numbers", {INT_MAX, INT_MAX, INT_MAX, INT_MAX, INT_MAX, INT_MAX, INT_MAX, INT_MAX}},
      {"lowest numbers", {INT_MIN, INT_MIN, INT_MIN, INT_MIN, INT_MIN, INT_MIN, INT_MIN, INT_MIN}},
  };
  for (const auto& c : kCases) {
    TCIMDateTime value("20010203040506.000007+008");
    EXPECT_EQ(3, set(value, c.fields)) << c.what;
    EXPECT_EQ("20010203040506.000007+008", value.ToString()) << c.what;
  }
}

}  // namespace
}  // namespace NKRXVEL20
