// SPDX-License-Identifier: Apache-2.0
#include "host/machine/bytesfield.h"

#include <cstdint>
#include <optional>

namespace velhost {
namespace {

struct Piece {
  std::optional<std::string> text;
  std::optional<std::uint32_t> size;
  std::optional<std::uint32_t> zeros;
};

std::uint32_t readSize(const Cursor& at) { return at.integer<std::uint32_t>(0, kLargestPiece); }

constexpr Member<Piece> kPieceMembers[] = {
    {"text", [](const Cursor& at, Piece& piece) { piece.text = at.text(); }},
    {"size", [](const Cursor& at, Piece& piece) { piece.size = readSize(at); }},
    {"zeros", [](const Cursor& at, Piece& piece) { piece.zeros = readSize(at); }},
};

Bytes paddedText(const Cursor& at, const Piece& piece) {
  Bytes bytes(piece.text->begin(), piece.text->end());
  const std::size_t size = piece.size.value_or(static_cast<std::uint32_t>(bytes.size()));
  if (bytes.size() > size) {
    at.failAt("text", "has " + std::to_string(bytes.size()) + " bytes, more than its size of " +
                          std::to_string(size));
  }
  at.spendBytes(size);
  bytes.resize(size, 0);
  return bytes;
}

Bytes zeroBytes(const Cursor& at, std::uint32_t count) {
  at.spendBytes(count);
  Bytes zeros(count, 0);
  return zeros;
}

Bytes hexBytes(const Cursor& at) {
  Bytes bytes = readHex(at, at.text());
  at.spendBytes(bytes.size());
  return bytes;
}

Bytes readPiece(const Cursor& at) {
  if (at.isText()) return hexBytes(at);
  if (!at.isObject()) at.fail("must be hex pairs, a text with its size, or zeros");
  Piece piece;
  readMembers(at, kPieceMembers, piece);
  if (piece.text.has_value() == piece.zeros.has_value()) {
    at.fail(R"(must have either "text" or "zeros")");
  }
  if (piece.text) return paddedText(at, piece);
  if (piece.size) at.failAt("size", "goes with \"text\" only");
  return zeroBytes(at, *piece.zeros);
}

}  // namespace

Bytes readHex(const Cursor& at, std::string_view text) {
  try {
    return bytesOfHex(text);
  } catch (const HexTextError& error) {
    at.fail(error.what());
  }
}

Bytes readBytes(const Cursor& at) {
  if (at.isText()) return hexBytes(at);
  if (!at.isArray()) at.fail("must be hex pairs or a list of pieces");
  Bytes bytes;
  at.eachElement([&](const Cursor& element) {
    const Bytes piece = readPiece(element);
    bytes.insert(bytes.end(), piece.begin(), piece.end());
  });
  return bytes;
}

}  // namespace velhost
