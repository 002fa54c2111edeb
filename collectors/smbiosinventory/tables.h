// SPDX-License-Identifier: Apache-2.0
//
// The machine's SMBIOS structures, as the SMBIOS library reads them.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "collectors/smbiosinventory/structure.h"
#include "vel/smbios.h"

namespace smbiosinventory {

class Tables {
 public:
  // Opens the library. One that cannot be opened is logged and has no structures.
  Tables();
  ~Tables();

  Tables(const Tables&) = delete;
  Tables& operator=(const Tables&) = delete;

  // Hands over each structure of a type in the table's order; it lives for that call. A read that
  // fails is logged and ends the walk.
  void forEach(std::uint8_t type, const std::function<void(const Structure&)>& take);

 private:
  int readFirst(std::uint8_t type);
  int readNext();

  NKRXVEL20::TSmBiosHandle* handle_ = nullptr;
  std::vector<unsigned char> buffer_;
};

}  // namespace smbiosinventory
