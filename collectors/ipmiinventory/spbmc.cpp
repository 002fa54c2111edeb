// SPDX-License-Identifier: Apache-2.0
#include "collectors/ipmiinventory/spbmc.h"

#include <algorithm>
#include <array>

#include "vel/splibrary.h"

namespace ipmiinventory {
namespace {

constexpr int kCapacity = 256;
using Record = std::array<unsigned char, kCapacity>;

// Interface, responder address (the BMC's), network function, LUN, command, data length (4 bytes, the
// lowest first), data.
constexpr std::uint8_t kInterface = 0x01;
constexpr std::uint8_t kBmcAddress = 0x20;
constexpr std::size_t kRequestDataOffset = 9;

// The first four bytes as in the request, completion code, data.
constexpr std::size_t kCompletionCodeOffset = 4;
constexpr std::size_t kReplyDataOffset = 5;

Record requestRecord(const Request& request) {
  const auto code = static_cast<std::uint16_t>(request.command);
  Record record{kInterface,
                kBmcAddress,
                static_cast<unsigned char>(code >> 8U),
                request.lun,
                static_cast<unsigned char>(code & 0xFFU),
                static_cast<unsigned char>(request.data.size())};
  std::ranges::copy(request.data, record.begin() + kRequestDataOffset);
  return record;
}

Reply replyOf(const Record& record, int length) {
  const auto size = static_cast<std::size_t>(std::clamp(length, 0, kCapacity));
  if (size < kReplyDataOffset) return {kUnspecifiedError, {}};
  return {record[kCompletionCodeOffset],
          {record.begin() + kReplyDataOffset, record.begin() + static_cast<std::ptrdiff_t>(size)}};
}

class SpBmc : public Bmc {
 public:
  std::optional<Reply> ask(const Request& request) override {
    NKRXVEL20::SPLibrary* const library = NKRXVEL20::SPLibrary::GetSplibraryInstance(0);
    Record record = requestRecord(request);
    int length = kCapacity;
    if (library == nullptr || !library->sendIPMICommand(record.data(), &length, kCapacity, true)) {
      return std::nullopt;
    }
    return replyOf(record, length);
  }
};

}  // namespace

std::unique_ptr<Bmc> makeSpBmc() { return std::make_unique<SpBmc>(); }

}  // namespace ipmiinventory
