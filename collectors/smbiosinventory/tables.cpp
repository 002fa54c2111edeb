// SPDX-License-Identifier: Apache-2.0
#include "collectors/smbiosinventory/tables.h"

#include <algorithm>
#include <string>

#include "vel/log.h"

using namespace NKRXVEL20;

namespace smbiosinventory {
namespace {

// As large as the table of a 32-bit entry point can be (DSP0134 5.2.1), and so any structure.
constexpr int kBufferSize = 0x10000;

void logFailure(const std::string& text) { fdrWriteLog(kSeverityFailure, text.c_str()); }

}  // namespace

Tables::Tables() : buffer_(kBufferSize) {
  const int error = smBiosLoad(nullptr, &handle_);
  if (error == 0 && handle_ != nullptr) return;
  handle_ = nullptr;
  logFailure("SMBIOSInventory: the SMBIOS library cannot be opened, error " +
             std::to_string(error));
}

Tables::~Tables() { smBiosClose(&handle_); }

void Tables::forEach(std::uint8_t type, const std::function<void(const Structure&)>& take) {
  if (handle_ == nullptr) return;
  int status = readFirst(type);
  for (; status == kSmBiosRead; status = readNext()) take(Structure(buffer_));
  if (status == kSmBiosNoMore) return;
  logFailure("SMBIOSInventory: reading SMBIOS structures of type " + std::to_string(type) +
             " failed, status " + std::to_string(status));
}

// The library writes nothing behind a structure, so that zeros end it.
int Tables::readFirst(std::uint8_t type) {
  std::ranges::fill(buffer_, static_cast<unsigned char>(0));
  int size = kBufferSize;
  return smBiosGetFirst(handle_, type, buffer_.data(), &size);
}

int Tables::readNext() {
  std::ranges::fill(buffer_, static_cast<unsigned char>(0));
  int size = kBufferSize;
  return smBiosGetNext(handle_, buffer_.data(), &size);
}

}  // namespace smbiosinventory
