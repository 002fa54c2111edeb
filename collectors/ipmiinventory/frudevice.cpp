// SPDX-License-Identifier: Apache-2.0
#include "collectors/ipmiinventory/frudevice.h"

#include <bit>

#include "collectors/ipmiinventory/frucommonheader.h"

namespace ipmiinventory {
namespace {

constexpr std::uint8_t kDeviceBusy = 0x81;
constexpr std::uint8_t kWordAccess = 0x01;
constexpr std::size_t kAreaInfoSize = 3;

std::string refusal(std::uint8_t code) {
  const char* const words = code == kNotPresent   ? "not there"
                            : code == kDeviceBusy ? "busy"
                                                  : "cannot be read";
  return std::string(words) + " (" + completionText(code) + ')';
}

std::string replyFault(const std::optional<Reply>& reply, std::size_t shortest) {
  if (!reply) return "the BMC does not answer";
  if (reply->completionCode != kCompleted) return refusal(reply->completionCode);
  return reply->data.size() < shortest ? "the BMC's answer is too short" : "";
}

}  // namespace

bool ReadLimit::lower(std::size_t refused) {
  if (refused <= kFruUnit) return false;
  bytes_ = std::bit_floor(refused - 1);
  return true;
}

std::string FruDevice::open() {
  const auto reply = bmc_.ask({Command::kGetFruInventoryAreaInfo, {id_}, lun_});
  std::string fault = replyFault(reply, kAreaInfoSize);
  absent_ = !fault.empty();
  if (absent_) return fault;
  const std::size_t told = reply->data[0] | static_cast<std::size_t>(reply->data[1]) << 8U;
  size_ = told - told % kFruUnit;
  word_ = (reply->data[2] & kWordAccess) != 0 ? 2 : 1;
  return size_ < kCommonHeaderSize ? "the device has no room for FRU areas" : "";
}

std::optional<Reply> FruDevice::ask(std::size_t offset, std::size_t count) {
  const std::size_t at = offset / word_;
  return bmc_.ask({Command::kReadFruData,
                   {id_, static_cast<std::uint8_t>(at & 0xFFU), static_cast<std::uint8_t>(at >> 8U),
                    static_cast<std::uint8_t>(count / word_)},
                   lun_});
}

// One command, or more while the BMC finds the piece too large.
FruBytes FruDevice::readPiece(std::size_t offset, std::size_t count) {
  count = std::min(count, limit_.bytes());
  auto reply = ask(offset, count);
  while (reply && isTooMuch(reply->completionCode) && limit_.lower(count)) {
    count = limit_.bytes();
    reply = ask(offset, count);
  }
  FruBytes piece{{}, replyFault(reply, 1)};
  if (!piece.fault.empty()) return piece;
  std::size_t given =
      std::min({reply->data.front() * std::size_t{word_}, reply->data.size() - 1, count});
  given -= given % word_;  // so that the next piece begins where this one ends
  piece.bytes.assign(reply->data.begin() + 1,
                     reply->data.begin() + 1 + static_cast<std::ptrdiff_t>(given));
  // So that a BMC which gives a byte at a time does not keep its reader busy for good.
  if (given < std::min(count, kFruUnit)) piece.fault = "the BMC's answer is too short";
  return piece;
}

FruBytes FruDevice::read(std::size_t offset, std::size_t count) {
  FruBytes read;
  while (read.bytes.size() < count) {
    const std::size_t done = read.bytes.size();
    FruBytes piece = readPiece(offset + done, count - done);
    if (!piece.fault.empty()) return {{}, piece.fault};
    read.bytes.insert(read.bytes.end(), piece.bytes.begin(), piece.bytes.end());
  }
  return read;
}

FruBytes FruDevice::readStart(std::size_t offset, std::size_t end) {
  const std::size_t room = end - offset;
  return read(offset, room <= limit_.bytes() ? room : kFruUnit);
}

}  // namespace ipmiinventory
