// SPDX-License-Identifier: Apache-2.0
#include "host/text/datetext.h"

#include <string_view>

namespace velhost {
namespace {

constexpr std::string_view kNoDate = "00000000000000.000000+000";

}  // namespace

std::string dateText(const std::string& cim) {
  constexpr std::size_t kDateDigits = 8;
  constexpr std::size_t kTimeDigits = 6;
  const std::string_view tail = std::string_view(cim).substr(kDateDigits + kTimeDigits);
  const std::string date = cim.substr(0, kDateDigits);
  if (cim == kNoDate) return "";
  if (tail != ".000000+000" || date == "00000000") return cim;
  const std::string time = cim.substr(kDateDigits, kTimeDigits);
  std::string day = date.substr(0, 4) + '-' + date.substr(4, 2) + '-' + date.substr(6, 2);
  if (time == "000000") return day;
  return day + ' ' + time.substr(0, 2) + ':' + time.substr(2, 2) + ':' + time.substr(4, 2);
}

}  // namespace velhost
