// SPDX-License-Identifier: Apache-2.0
//
// A FRU device of any bytes, read in pieces of a size that the first byte gives. Its areas and fields
// lie within it, a field that is read and put back stays as it is, and an area whose checksum is good
// has a good one after a byte of it has changed.
#include <algorithm>
#include <cstdint>

#include "host/recording/fruareas.h"
#include "host/recording/fruimage.h"
#include "host/recording/packedtext.h"
#include "tests/fuzz/require.h"

using namespace velhost;

namespace {

using fuzz::require;

using NKRXVEL20::host::SimulatedSP;

SimulatedSP readsOf(const Bytes& device, std::size_t piece) {
  SimulatedSP sp;
  for (std::size_t at = 0; at < device.size(); at += piece) {
    const std::size_t count = std::min(piece, device.size() - at);
    const auto number = [](std::size_t value) { return static_cast<unsigned char>(value & 0xFFU); };
    Bytes reply{1, 0x20, 0x0E, 0, 0, number(count)};
    const auto from = device.begin() + static_cast<std::ptrdiff_t>(at);
    reply.insert(reply.end(), from, from + static_cast<std::ptrdiff_t>(count));
    sp.ipmiCommands.push_back(
        {{1, 0x20, 0x0A, 0, 0x11, 4, 0, 0, 0, 7, number(at), number(at >> 8U), number(count)},
         {{false, reply, {}}}});
  }
  return sp;
}

Bytes deviceOf(SimulatedSP& sp) {
  auto images = fruImages(sp);
  return images.empty() ? Bytes() : images.front().bytes();
}

void checkPacking(const Bytes& field) {
  Bytes again = field;
  writeWide(readWide(field), again);
  writeBcdPlus(readBcdPlus(field), again);
  writeSixBit(readSixBit(field), again);
  require(again == field);
}

void checkFields(const Bytes& device, const FruArea& area) {
  for (const FruField& field : fruFields(device, area)) {
    require(field.offset > area.offset && field.offset + field.size <= area.offset + area.size);
    const auto from = device.begin() + static_cast<std::ptrdiff_t>(field.offset);
    checkPacking({from, from + static_cast<std::ptrdiff_t>(field.size)});
  }
}

// Where areas overlap the one that is mended last may spoil another.
void checkMending(const Bytes& device, SimulatedSP& sp, const std::vector<FruArea>& areas) {
  if (areas.size() != 1 || !hasGoodChecksum(device, areas.front())) return;
  auto images = fruImages(sp);
  images.front().bytes()[areas.front().offset + 2] ^= 0x55U;
  images.front().writeBack();
  require(hasGoodChecksum(deviceOf(sp), areas.front()));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  const Bytes device(data + 1, data + size);
  SimulatedSP sp = readsOf(device, data[0] % 250U + 1U);
  require(deviceOf(sp) == device);
  const auto areas = fruAreas(device);
  for (const FruArea& area : areas) {
    require(area.offset >= 8 && area.offset + area.size <= device.size());
    checkFields(device, area);
  }
  checkMending(device, sp, areas);
  return 0;
}
