// SPDX-License-Identifier: Apache-2.0
#include "host/recording/packedtext.h"

#include <string_view>

namespace velhost {
namespace {

constexpr std::string_view kBcdPlus = "0123456789 -.:,_";
constexpr unsigned kSixBitStart = 0x20;

unsigned char digitOf(unsigned char character) {
  return static_cast<unsigned char>(kBcdPlus.find(static_cast<char>(character)) & 0x0FU);
}

// The bit of a field, the lowest one of the first byte being 0.
bool bitAt(std::span<const unsigned char> field, std::size_t bit) {
  return (field[bit / 8] >> bit % 8 & 1U) != 0;
}

void setBit(std::span<unsigned char> field, std::size_t bit, bool value) {
  const auto mask = static_cast<unsigned char>(1U << bit % 8);
  unsigned char& byte = field[bit / 8];
  byte = static_cast<unsigned char>(value ? byte | mask : byte & ~mask);
}

}  // namespace

Bytes readWide(std::span<const unsigned char> field) {
  Bytes text;
  for (std::size_t i = 0; i < field.size(); i += 2) text.push_back(field[i]);
  return text;
}

void writeWide(const Bytes& text, std::span<unsigned char> field) {
  for (std::size_t i = 0; i < text.size(); ++i) field[2 * i] = text[i];
}

Bytes readBcdPlus(std::span<const unsigned char> field) {
  Bytes text;
  for (const unsigned char byte : field) {
    text.push_back(static_cast<unsigned char>(kBcdPlus[byte >> 4U]));
    text.push_back(static_cast<unsigned char>(kBcdPlus[byte & 0x0FU]));
  }
  return text;
}

void writeBcdPlus(const Bytes& text, std::span<unsigned char> field) {
  for (std::size_t i = 0; i < field.size(); ++i) {
    field[i] = static_cast<unsigned char>(digitOf(text[2 * i]) << 4U | digitOf(text[2 * i + 1]));
  }
}

Bytes readSixBit(std::span<const unsigned char> field) {
  Bytes text(field.size() * 8 / 6, kSixBitStart);
  for (std::size_t bit = 0; bit < text.size() * 6; ++bit) {
    const unsigned value = bitAt(field, bit) ? 1U << bit % 6 : 0U;
    text[bit / 6] = static_cast<unsigned char>(text[bit / 6] + value);
  }
  return text;
}

void writeSixBit(const Bytes& text, std::span<unsigned char> field) {
  for (std::size_t bit = 0; bit < text.size() * 6; ++bit) {
    setBit(field, bit, ((text[bit / 6] - kSixBitStart) >> bit % 6 & 1U) != 0);
  }
}

}  // namespace velhost
