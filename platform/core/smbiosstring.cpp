// SPDX-License-Identifier: Apache-2.0
#include "smbiosstring.h"

#include <algorithm>

namespace NKRXVEL20 {

std::string_view smbiosString(std::string_view window, int number) {
  if (number < 1) return {};
  // An empty string ends the set, so it also answers every number behind it.
  for (int i = 1;; ++i) {
    const std::string_view text = window.substr(0, window.find('\0'));
    if (i == number || text.empty()) return text;
    window.remove_prefix(std::min(text.size() + 1, window.size()));
  }
}

}  // namespace NKRXVEL20
