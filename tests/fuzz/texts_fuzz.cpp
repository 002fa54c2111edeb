// SPDX-License-Identifier: Apache-2.0
//
// Any bytes as a text that goes to a terminal, a cell, a page or a JSON document: nothing comes out that a
// terminal obeys, nothing is wider than its room, and nothing is lost that has room. The first byte is the
// room, the rest the text.
#include <algorithm>
#include <cctype>
#include <nlohmann/json.hpp>

#include "host/formats/csvcell.h"
#include "host/report/html.h"
#include "host/text/displaywidth.h"
#include "host/text/hextext.h"
#include "host/text/textlayout.h"
#include "host/text/utf8.h"
#include "host/text/wrappedtext.h"
#include "tests/fuzz/outputchecks.h"
#include "tests/fuzz/require.h"

namespace {

using namespace velhost;
using fuzz::isClean;
using fuzz::require;

bool isAscii(std::string_view text) {
  return std::ranges::all_of(text, [](char c) { return c >= ' ' && c <= '~'; });
}

std::string withoutBlanks(std::string text) {
  std::erase_if(text, [](char c) { return c == ' ' || c == '\n'; });
  return text;
}

void checkEscapes(std::string_view text) {
  const std::string seen = visible(text);
  require(isClean(seen, ""), "what is visible is clean");
  require(visible(seen) == seen, "what is visible stays as it is");
  require(!isAscii(text) || seen == text, "ASCII stays as it is");
  const std::string utf8 = toUtf8(std::string(text));
  require(nlohmann::json(utf8).dump().size() >= utf8.size() + 2, "a text becomes UTF-8");
  require(!isClean(text, "") || utf8 == text, "UTF-8 stays as it is");
  const std::string json = nlohmann::json(utf8).dump();
  const std::string escaped = escapeUnseen(json);
  require(isClean(escaped), "JSON is clean");
  require(nlohmann::json::parse(escaped) == utf8, "escapes stand for what they stand for");
}

void checkRoom(const std::string& text, std::size_t room) {
  require(!isAscii(text) || displayWidth(text) == text.size(), "ASCII takes a column each");
  const std::string cut = cutToWidth(text, room);
  require(displayWidth(cut) <= room && isClean(cut, ""), "what is cut fits");
  require(displayWidth(text) > room || cut == text, "what fits is not cut");
  require(displayWidth(padded(text, room)) == std::max(displayWidth(text), room),
          "blanks fill the room");
  const std::string brief = shortened(text, room + 3);
  require(characterCount(brief) <= room + 3 && isClean(brief, ""), "what is shortened fits");
}

void checkLines(const std::string& text, std::size_t room) {
  std::string joined;
  for (const std::string& line : wrapped(text, room)) {
    require(displayWidth(line) <= room && isClean(line, ""), "a line fits");
    joined += line;
  }
  // A glyph of two columns has no room in one.
  if (room > 1) require(withoutBlanks(joined) == withoutBlanks(text), "no word is lost");
  const std::string lines = paragraph(text, room / 4, room);
  fuzz::requireTable("a paragraph", lines, room);
  const std::string laid = wrappedText(text, room, 0, 0);
  if (isAscii(text)) {
    fuzz::requireTable("wrapped text", laid, room);
    require(withoutBlanks(laid) == withoutBlanks(text), "no word of it is lost");
  }
}

void checkCells(std::string_view text) {
  fuzz::requireCsv(csvCell(std::string(text)) + "\r\n");
  const std::string markup = asText(text).markup();
  fuzz::requireHtml(markup);
  require(markup.find_first_of("<>\"'") == std::string::npos, "no character is markup");
}

void checkHex(std::string_view text) {
  const Bytes bytes(text.begin(), text.end());
  require(bytesOfHex(hexOfBytes(bytes)) == bytes, "bytes are read as they were written");
  require(bytesOfHex(hexPairs(bytes)) == bytes, "so they are with blanks");
  try {
    std::string digits = withoutBlanks(hexOfBytes(bytesOfHex(text)));
    std::string given = withoutBlanks(std::string(text));
    std::ranges::transform(given, given.begin(), [](unsigned char c) { return std::toupper(c); });
    require(digits == given, "pairs are what they say");
  } catch (const HexTextError& error) {
    require(isClean(error.what(), "") && *error.what() != 0, "a refusal has a reason");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::size_t room = data[0] % 100U + 1;
  const std::string_view text = fuzz::textOf(data + 1, size - 1);
  checkEscapes(text);
  const std::string seen = visible(text);
  checkRoom(seen, room);
  checkLines(seen, room);
  checkCells(text);
  checkHex(text);
  return 0;
}
