// SPDX-License-Identifier: Apache-2.0
#include "smbios/allnumeric.h"

bool isAllNumeric(const char* text, int length) {
  for (int i = 0; i < length && text[i] != '\0'; ++i) {
    const bool isDigit = text[i] >= '0' && text[i] <= '9';
    if (!isDigit && text[i] != '.') return false;
  }
  return true;
}
