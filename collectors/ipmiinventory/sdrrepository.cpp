// SPDX-License-Identifier: Apache-2.0
#include "collectors/ipmiinventory/sdrrepository.h"

#include <algorithm>
#include <set>

namespace ipmiinventory {
namespace {

constexpr std::uint16_t kFirstRecord = 0x0000;
constexpr std::uint16_t kNoMoreRecords = 0xFFFF;
constexpr std::size_t kMostRecords = 4096;  // repositories of large servers have some hundreds

constexpr std::uint8_t kWholeRecord = 0xFF;
constexpr std::size_t kFirstPiece = 16;  // what a BMC sends in a message of 32 bytes, at least
constexpr std::size_t kSmallestPiece = 4;

// One that is taken anew for ever would mean that the repository changes all the time.
constexpr int kMostReservations = 8;

std::uint8_t lowByte(std::uint16_t number) { return static_cast<std::uint8_t>(number & 0xFFU); }
std::uint8_t highByte(std::uint16_t number) { return static_cast<std::uint8_t>(number >> 8U); }
std::uint16_t number16(ByteSpan bytes) {
  return static_cast<std::uint16_t>(bytes[0] | bytes[1] << 8U);
}

// A record or a part of one.
struct Part {
  std::uint8_t code = kUnspecifiedError;  // completion code
  std::uint16_t next = kNoMoreRecords;
  Bytes bytes;

  bool isGood() const { return code == kCompleted; }
};

class SdrRepository {
 public:
  explicit SdrRepository(Bmc& bmc) : bmc_(bmc) {}

  // A lost reservation is taken anew and the record read from its start.
  Part record(std::uint16_t id) {
    Part part = inPieces_ ? readInPieces(id) : readWhole(id);
    while (part.code == kReservationLost && reserve()) {
      part = inPieces_ ? readInPieces(id) : readWhole(id);
    }
    return part;
  }

 private:
  Part read(std::uint16_t id, std::size_t offset, std::size_t count);
  Part readWhole(std::uint16_t id);
  Part readInPieces(std::uint16_t id);
  Part readPiece(std::uint16_t id, const Part& before, std::size_t length);
  bool reserve();

  Bmc& bmc_;
  std::uint16_t reservation_ = 0;  // whole records are read without
  int reservations_ = 0;
  bool inPieces_ = false;
  std::size_t piece_ = kFirstPiece;
};

bool SdrRepository::reserve() {
  if (++reservations_ > kMostReservations) return false;
  const auto reply = bmc_.ask({Command::kReserveSdrRepository, {}});
  if (!reply || reply->completionCode != kCompleted || reply->data.size() < 2) return false;
  reservation_ = number16(reply->data);
  return true;
}

Part SdrRepository::read(std::uint16_t id, std::size_t offset, std::size_t count) {
  const auto reply =
      bmc_.ask({Command::kGetSdr,
                {lowByte(reservation_), highByte(reservation_), lowByte(id), highByte(id),
                 static_cast<std::uint8_t>(offset), static_cast<std::uint8_t>(count)}});
  Part part;
  if (!reply) return part;
  part.code = reply->completionCode;
  if (!part.isGood()) return part;
  if (reply->data.size() < 2) return {};
  part.next = number16(reply->data);
  part.bytes.assign(reply->data.begin() + 2, reply->data.end());
  return part;
}

Part SdrRepository::readWhole(std::uint16_t id) {
  Part part = read(id, 0, kWholeRecord);
  if (!isTooMuch(part.code)) return part;
  inPieces_ = true;
  return reserve() ? readInPieces(id) : part;
}

// What cannot be had of a locator behind its start is left out.
Part SdrRepository::readInPieces(std::uint16_t id) {
  Part record = read(id, 0, kSdrHeaderSize);
  const auto header = parseSdrHeader(record.bytes);
  if (!record.isGood() || !header || !header->isLocator) return record;
  while (record.bytes.size() < std::min<std::size_t>(header->length, kWholeRecord)) {
    Part piece = readPiece(id, record, header->length);
    if (piece.code == kReservationLost) return piece;
    if (!piece.isGood() || piece.bytes.empty()) break;
    record.bytes.insert(record.bytes.end(), piece.bytes.begin(), piece.bytes.end());
  }
  return record;
}

Part SdrRepository::readPiece(std::uint16_t id, const Part& before, std::size_t length) {
  const std::size_t offset = before.bytes.size();
  Part piece = read(id, offset, std::min(piece_, length - offset));
  while (isTooMuch(piece.code) && piece_ > kSmallestPiece) {
    piece_ /= 2;
    piece = read(id, offset, std::min(piece_, length - offset));
  }
  return piece;
}

void add(const Bytes& record, std::vector<FruLocator>& locators) {
  const auto found = parseFruLocator(record);
  if (!found) return;
  const auto place =
      std::ranges::lower_bound(locators, found->fruDeviceId, {}, &FruLocator::fruDeviceId);
  if (place == locators.end() || place->fruDeviceId != found->fruDeviceId) {
    locators.insert(place, *found);
  }
}

// An empty repository has no first record.
std::string readFault(std::uint16_t id, const Part& record) {
  return id == kFirstRecord && record.code == kNotPresent ? "" : "a record cannot be read";
}

}  // namespace

FruLocators readFruLocators(Bmc& bmc) {
  FruLocators found;
  SdrRepository repository(bmc);
  std::set<std::uint16_t> known;
  for (std::uint16_t id = kFirstRecord; id != kNoMoreRecords;) {
    const bool isNew = known.insert(id).second;
    if (!isNew || known.size() > kMostRecords) {
      found.fault = isNew ? "there are too many records" : "a record leads back";
      break;
    }
    const Part record = repository.record(id);
    if (!record.isGood()) {
      found.fault = readFault(id, record);
      break;
    }
    const auto header = parseSdrHeader(record.bytes);
    if (header && id == kFirstRecord) known.insert(header->recordId);
    add(record.bytes, found.locators);
    id = record.next;
  }
  return found;
}

}  // namespace ipmiinventory
