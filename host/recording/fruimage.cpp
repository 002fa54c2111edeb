// SPDX-License-Identifier: Apache-2.0
#include "host/recording/fruimage.h"

#include <algorithm>
#include <map>
#include <numeric>
#include <span>
#include <utility>

#include "host/recording/fruareas.h"

namespace velhost {
namespace {

using NKRXVEL20::host::IpmiCommandEntry;
using NKRXVEL20::host::SimulatedReply;
using NKRXVEL20::host::SimulatedSP;

// Request record: network function, LUN, command; data from byte 9 on. Reply record: completion code,
// data.
constexpr std::size_t kNetworkFunction = 2;
constexpr std::size_t kLun = 3;
constexpr std::size_t kCommand = 4;
constexpr std::size_t kRequestData = 9;
constexpr std::size_t kCompletionCode = 4;
constexpr std::size_t kReplyData = 5;

constexpr unsigned char kStorage = 0x0A;
constexpr unsigned char kGetFruInventoryAreaInfo = 0x10;
constexpr unsigned char kReadFruData = 0x11;

using DeviceKey = std::pair<unsigned char, unsigned char>;  // LUN, FRU device ID

bool isCommand(const IpmiCommandEntry& entry, unsigned char command, std::size_t dataSize) {
  const Bytes& request = entry.request;
  return request.size() == kRequestData + dataSize && request[kNetworkFunction] == kStorage &&
         request[kCommand] == command;
}

DeviceKey deviceOf(const IpmiCommandEntry& entry) {
  return {entry.request[kLun], entry.request[kRequestData]};
}

// Null: none is complete.
template <class Entry>
auto firstComplete(Entry& entry) -> decltype(entry.replies.data()) {
  const auto reply = std::ranges::find_if(entry.replies, [](const SimulatedReply& candidate) {
    return !candidate.fails && candidate.bytes.size() > kReplyData &&
           candidate.bytes[kCompletionCode] == 0;
  });
  return reply == entry.replies.end() ? nullptr : &*reply;
}

// The bytes that offsets and counts are told in, of devices that count in words.
std::map<DeviceKey, std::size_t> wordsOf(const SimulatedSP& sp) {
  std::map<DeviceKey, std::size_t> words;
  for (const IpmiCommandEntry& entry : sp.ipmiCommands) {
    if (!isCommand(entry, kGetFruInventoryAreaInfo, 1)) continue;
    const SimulatedReply* const reply = firstComplete(entry);
    const std::size_t access = kReplyData + 2;
    if (reply == nullptr || reply->bytes.size() <= access) continue;
    words[deviceOf(entry)] = (reply->bytes[access] & 1U) + 1U;
  }
  return words;
}

// Nothing behind what the reply has.
FruImage::Piece pieceOf(IpmiCommandEntry& entry, std::size_t word) {
  Bytes& reply = firstComplete(entry)->bytes;
  const std::size_t from = kReplyData + 1;
  const std::size_t offset =
      entry.request[kRequestData + 1] | std::size_t{entry.request[kRequestData + 2]} << 8U;
  return {&reply, from, offset * word, std::min(reply[kReplyData] * word, reply.size() - from)};
}

}  // namespace

void FruImage::add(const Piece& piece) {
  if (bytes_.size() < piece.to + piece.count) bytes_.resize(piece.to + piece.count);
  const auto from = piece.reply->begin() + static_cast<std::ptrdiff_t>(piece.from);
  std::copy_n(from, piece.count, bytes_.begin() + static_cast<std::ptrdiff_t>(piece.to));
  pieces_.push_back(piece);
}

void FruImage::writeBack() {
  FruImage before;
  for (const Piece& piece : pieces_) before.add(piece);
  for (const FruArea& area : fruAreas(before.bytes_)) {
    if (!hasGoodChecksum(before.bytes_, area)) continue;
    const auto bytes = std::span(bytes_).subspan(area.offset, area.size);
    bytes.back() = 0;
    bytes.back() = static_cast<unsigned char>(0U - std::accumulate(bytes.begin(), bytes.end(), 0U));
  }
  for (const Piece& piece : pieces_) {
    std::copy_n(bytes_.begin() + static_cast<std::ptrdiff_t>(piece.to), piece.count,
                piece.reply->begin() + static_cast<std::ptrdiff_t>(piece.from));
  }
}

bool isReadOfFru(const IpmiCommandEntry& entry) {
  return isCommand(entry, kReadFruData, 4) && firstComplete(entry) != nullptr;
}

std::vector<FruImage> fruImages(SimulatedSP& sp) {
  const auto words = wordsOf(sp);
  std::map<DeviceKey, FruImage> images;
  for (IpmiCommandEntry& entry : sp.ipmiCommands) {
    if (!isReadOfFru(entry)) continue;
    const auto word = words.find(deviceOf(entry));
    images[deviceOf(entry)].add(pieceOf(entry, word == words.end() ? 1 : word->second));
  }
  std::vector<FruImage> list;
  list.reserve(images.size());
  for (auto& image : images) list.push_back(std::move(image.second));
  return list;
}

}  // namespace velhost
