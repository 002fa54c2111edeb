// SPDX-License-Identifier: Apache-2.0
#include "smbios/firmwaredate.h"

#include <gtest/gtest.h>

namespace spfirmwarevpd::test {
namespace {

TEST(FirmwareDateTest, FormIsToldByLengthAndFirstHyphen) {
  const struct {
    const char* text;
    DateForm form;
  } cases[] = {
      {"", DateForm::kNone},
      {"03/15/7", DateForm::kNone},
      {"03/15/07", DateForm::kMonthDayYY},
      {"03-15-07", DateForm::kMonthDayYY},
      {"03/15/207", DateForm::kNone},
      {"07/14/2009", DateForm::kMonthDayYear},
      {"07-14-2009", DateForm::kMonthDayYear},
      {"2009-07-14", DateForm::kYearMonthDay},
      {"2009.07-14", DateForm::kUndated},
      {"-009.07.14", DateForm::kUndated},
      {"07/14/2009 ", DateForm::kNone},
  };
  for (const auto& c : cases) EXPECT_EQ(dateForm(c.text), c.form) << c.text;
}

TEST(FirmwareDateTest, NumbersAreReadAsStrtolReadsThem) {
  const struct {
    const char* text;
    FirmwareDate date;
  } cases[] = {
      {"03/15/07", {2007, 3, 15}},   {"12/31/51", {1951, 12, 31}},  {"01/01/50", {2050, 1, 1}},
      {"01x02x99", {1999, 1, 2}},    {"07/14/2009", {2009, 7, 14}}, {"07-14-2009", {2009, 7, 14}},
      {"2009-07-14", {2009, 7, 14}}, {"2009/07/14", {7, 20, 9}},    {" 3/ 5/07", {2007, 3, 5}},
      {"abcdefgh", {2000, 0, 0}},
  };
  for (const auto& c : cases) EXPECT_EQ(parseFirmwareDate(c.text), c.date) << c.text;
  for (const char* text : {"", "2009.07-14", "03/15/207"}) {
    EXPECT_EQ(parseFirmwareDate(text), std::nullopt) << text;
  }
}

}  // namespace
}  // namespace spfirmwarevpd::test
