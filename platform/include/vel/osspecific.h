// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "vel/export.h"

namespace NKRXVEL20 {

// Helpers that know the machine and its firmware's texts.
class VEL_API TOSSpecific {
 public:
  // The machine type, four characters on the maker's servers; empty when it cannot be told.
  // Taken from the Product Name of the first System Information structure (SMBIOS type 1): the
  // first four characters of a seven-character machine type-model such as 5010AC1, or a run of
  // four digits that stands by itself.
  static std::string GetMachineTypeFromID();

  // Copies string number `number` (from 1) of the SMBIOS string set at `source`, `length` bytes of
  // which may be read, to `destination`, which holds 100 bytes. Number 0, a number past the last
  // string and an empty set give the empty text; a string that the window cuts off gives the part
  // inside the window; a longer string is cut to 99 characters. Always NUL-terminated.
  static void getBIDString(char* source, char* destination, int length, int number);

  // Keeps ASCII letters and digits, whatever the locale.
  static void removeNonAlpaNumeric(std::string& text);

  // Splits a firmware version text (letters and digits): `version` comes in as the text and holds
  // the version part afterwards, `build` receives the build part. 108ABC123 gives 108 and ABC123,
  // ABC123A120 gives 120 and ABC123A, DIA789C gives an empty version and DIA789C.
  static void breakApartVersion(std::string& version, std::string& build);
};

}  // namespace NKRXVEL20
