// SPDX-License-Identifier: Apache-2.0
#include "host/explanation/bmcdevices.h"

#include <algorithm>
#include <map>
#include <utility>

namespace velhost {
namespace {

constexpr unsigned char kStorage = 0x0A;
constexpr unsigned char kGetFruInventoryAreaInfo = 0x10;
constexpr unsigned char kReadFruData = 0x11;
constexpr unsigned char kGetSdr = 0x23;

// Of the reply record: the completion code, then the data.
constexpr std::size_t kCompletionCode = 4;
constexpr std::size_t kReplyData = 5;

constexpr std::size_t kMostBytes =
    std::size_t{65536} * 2;  // that offsets of 16 bits reach, in words

bool isGoodReply(const Reply& reply, unsigned char command, std::size_t dataSize) {
  return reply.source == Source::kIpmi && reply.command == Bytes{kStorage, command} &&
         reply.data.size() == dataSize && reply.bytes.size() > kReplyData &&
         reply.bytes[kCompletionCode] == 0;
}

std::size_t numberAt(const Bytes& bytes, std::size_t at) {
  return bytes[at] | std::size_t{bytes[at + 1]} << 8U;
}

void put(Bytes& whole, std::size_t offset, std::span<const unsigned char> piece) {
  if (offset > kMostBytes) return;
  if (whole.size() < offset + piece.size()) whole.resize(offset + piece.size());
  std::ranges::copy(piece, whole.begin() + static_cast<std::ptrdiff_t>(offset));
}

// A LUN's devices are numbered by themselves; the collectors ask those of a number at one LUN.
struct Readings {
  std::map<unsigned, std::size_t> words;  // bytes that offsets and counts are told in
  std::map<unsigned, Bytes> devices;
  std::vector<std::pair<std::size_t, Bytes>> records;  // by their ID in the request
};

Bytes& recordOf(Readings& readings, std::size_t id) {
  const auto found = std::ranges::find(readings.records, id, &std::pair<std::size_t, Bytes>::first);
  return found == readings.records.end() ? readings.records.emplace_back(id, Bytes()).second
                                         : found->second;
}

// IPMI 2.0, 34.1: the request has the device's number; the reply its size and how it is addressed.
void noteWord(const Reply& reply, Readings& readings) {
  constexpr std::size_t kAccess = kReplyData + 2;
  if (!isGoodReply(reply, kGetFruInventoryAreaInfo, 1) || reply.bytes.size() <= kAccess) return;
  readings.words[reply.data[0]] = (reply.bytes[kAccess] & 1U) + 1U;
}

// 34.2: number and offset in the request; how many bytes and these in the reply.
void noteRead(const Reply& reply, Readings& readings) {
  if (!isGoodReply(reply, kReadFruData, 4)) return;
  const unsigned number = reply.data[0];
  const auto known = readings.words.find(number);
  const std::size_t word = known == readings.words.end() ? 1 : known->second;
  const auto bytes = std::span(reply.bytes).subspan(kReplyData + 1);
  const std::size_t count = std::min(reply.bytes[kReplyData] * word, bytes.size());
  put(readings.devices[number], numberAt(reply.data, 1) * word, bytes.first(count));
}

// 33.12: reservation, record ID, offset and count in the request; the next ID and bytes in the reply.
void noteRecord(const Reply& reply, Readings& readings) {
  constexpr std::size_t kNextId = 2;
  if (!isGoodReply(reply, kGetSdr, 6) || reply.bytes.size() < kReplyData + kNextId) return;
  const std::size_t offset = reply.data[4];
  put(recordOf(readings, numberAt(reply.data, 2)), offset,
      std::span(reply.bytes).subspan(kReplyData + kNextId));
}

// 43.8 and 43.9: the type in byte 3, how many bytes follow in byte 4. A FRU device locator has the
// number in byte 6 and tells in byte 7 whether that is of a logical device; a controller's record
// stands for its device 0 where byte 8 says that it has one.
constexpr std::size_t kTypeOffset = 3;
constexpr std::size_t kSizeOffset = 4;
constexpr std::size_t kHeaderSize = 5;
constexpr std::size_t kAddressOffset = 5;
constexpr std::size_t kNumberOffset = 6;
constexpr std::size_t kNameOffset = 15;
constexpr unsigned char kFruLocator = 0x11;
constexpr unsigned char kControllerLocator = 0x12;
constexpr unsigned kBmcAddress = 0x20;

bool isLocator(const Bytes& record) {
  if (record.size() <= kNameOffset || (record[kAddressOffset] & 0xFEU) != kBmcAddress) return false;
  if (record[kTypeOffset] == kFruLocator) return (record[7] & 0x80U) != 0;
  return record[kTypeOffset] == kControllerLocator && (record[8] & 0x08U) != 0;
}

unsigned numberOf(const Bytes& record) {
  return record[kTypeOffset] == kFruLocator ? record[kNumberOffset] : 0;
}

FruDevice& deviceOf(std::vector<FruDevice>& devices, unsigned number) {
  const auto found = std::ranges::find(devices, number, &FruDevice::number);
  return found == devices.end() ? devices.emplace_back(FruDevice{number, {}, {}}) : *found;
}

}  // namespace

std::vector<FruDevice> fruDevices(const std::vector<Reply>& replies) {
  Readings readings;
  for (const Reply& reply : replies) {
    noteWord(reply, readings);
    noteRead(reply, readings);
    noteRecord(reply, readings);
  }
  std::vector<FruDevice> devices;
  for (auto& [id, record] : readings.records) {
    if (!isLocator(record)) continue;
    record.resize(std::min(record.size(), kHeaderSize + record[kSizeOffset]));
    FruDevice& device = deviceOf(devices, numberOf(record));
    if (device.record.empty()) device.record = std::move(record);
  }
  for (auto& [number, bytes] : readings.devices) deviceOf(devices, number).bytes = std::move(bytes);
  std::ranges::sort(devices, {}, &FruDevice::number);
  return devices;
}

}  // namespace velhost
