// SPDX-License-Identifier: Apache-2.0
#include "tests/fuzz/outputchecks.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "tests/fuzz/require.h"

namespace fuzz {
namespace {

using namespace std::string_view_literals;

constexpr std::uint32_t kNone = 0xFFFFFFFF;

// The character that stands there (RFC 3629), which is taken off; kNone for what is no UTF-8.
std::uint32_t takeCharacter(std::string_view& text) {
  static constexpr std::array<std::uint32_t, 5> kSmallest{0, 0, 0x80, 0x800, 0x10000};
  const auto first = static_cast<unsigned char>(text.front());
  const std::size_t size = first < 0x80 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
  if (size > text.size() || (first >= 0x80 && first < 0xC0) || first >= 0xF8) return kNone;
  std::uint32_t value = size == 1 ? first : first & (0xFFU >> (size + 1));
  for (const char c : text.substr(1, size - 1)) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >> 6U != 2) return kNone;
    value = value << 6U | (byte & 0x3FU);
  }
  text.remove_prefix(size);
  const bool isSurrogate = value >= 0xD800 && value <= 0xDFFF;
  return value < kSmallest.at(size) || value > 0x10FFFF || isSurrogate ? kNone : value;
}

// Controls, and those of Unicode's format characters that turn or hide the text around them.
bool isObeyed(std::uint32_t c) {
  return c < 0x20 || (c >= 0x7F && c < 0xA0) || c == 0xAD || c == 0x61C ||
         (c >= 0x200B && c <= 0x200F) || (c >= 0x2028 && c <= 0x202E) ||
         (c >= 0x2060 && c <= 0x206F) || c == 0xFEFF || (c >= 0xE0000 && c < 0xE0080);
}

void fail(std::string_view what, std::string_view text) {
  std::cerr << text << '\n';
  require(false, what);
}

template <class Read>
void eachLine(std::string_view text, Read read) {
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    read(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
}

// ---- comma-separated values

constexpr std::string_view kFormulaBegins = "=+-@\t\r";

// One cell with its quotes, which is taken off; nullopt for one that is no cell.
std::optional<std::string_view> takeCell(std::string_view& text) {
  std::size_t end = 0;
  if (text.starts_with('"')) {
    for (end = 1;; ++end) {
      end = text.find('"', end);
      if (end == std::string_view::npos) return std::nullopt;
      if (!text.substr(++end).starts_with('"')) break;
    }
  } else {
    end = std::min(text.find_first_of(",\r\n\""), text.size());
  }
  const std::string_view cell = text.substr(0, end);
  text.remove_prefix(end);
  return cell;
}

bool isFormula(std::string_view cell) {
  if (cell.starts_with('"')) cell.remove_prefix(1);
  return !cell.empty() && kFormulaBegins.find(cell.front()) != std::string_view::npos;
}

// How many cells the record has, which is taken off; 0 for one that is wrong.
std::size_t takeRecord(std::string_view& text) {
  for (std::size_t count = 1;; ++count) {
    const auto cell = takeCell(text);
    if (!cell || isFormula(*cell)) return 0;
    if (text.starts_with("\r\n")) {
      text.remove_prefix(2);
      return count;
    }
    if (!text.starts_with(',')) return 0;
    text.remove_prefix(1);
  }
}

// ---- OpenMetrics

constexpr std::string_view kNameCharacters =
    "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_:";

std::string_view takeName(std::string_view& text) {
  const auto name = text.substr(0, std::min(text.find_first_not_of(kNameCharacters), text.size()));
  text.remove_prefix(name.size());
  return name;
}

bool take(std::string_view& text, std::string_view what) {
  if (!text.starts_with(what)) return false;
  text.remove_prefix(what.size());
  return true;
}

// "VALUE" with the escapes of the format.
bool takeLabelValue(std::string_view& text) {
  if (!take(text, "\"")) return false;
  while (!text.empty() && text.front() != '"') {
    if (text.front() == '\\') {
      text.remove_prefix(1);
      if (text.empty() || "\\\"n"sv.find(text.front()) == std::string_view::npos) return false;
    }
    text.remove_prefix(1);
  }
  return take(text, "\"");
}

bool isSample(std::string_view line) {
  if (takeName(line).empty() || !take(line, "{")) return false;
  std::set<std::string_view> labels;
  do {
    const std::string_view label = takeName(line);
    if (label.empty() || !labels.insert(label).second) return false;
    if (!take(line, "=") || !takeLabelValue(line)) return false;
  } while (take(line, ","));
  return take(line, "} ") && !line.empty() &&
         line.find_first_not_of("0123456789.") == std::string_view::npos;
}

bool isComment(std::string_view line) {
  return std::ranges::any_of(std::array{"# TYPE krxsg_"sv, "# UNIT krxsg_"sv, "# HELP krxsg_"sv},
                             [line](std::string_view begin) { return line.starts_with(begin); });
}

// ---- HTML

const std::set<std::string_view> kTags = {
    "!DOCTYPE", "a",       "abbr",    "bdi",    "body",   "br",      "circle", "code", "col",
    "colgroup", "dd",      "details", "div",    "dl",     "dt",      "em",     "g",    "h1",
    "h2",       "h3",      "h4",      "head",   "header", "html",    "li",     "main", "meta",
    "nav",      "ol",      "p",       "path",   "rect",   "section", "small",  "span", "strong",
    "style",    "summary", "svg",     "symbol", "table",  "tbody",   "td",     "th",   "thead",
    "time",     "title",   "tr",      "ul",     "use"};
const std::set<std::string_view> kUnclosed = {"!DOCTYPE", "meta", "br", "col"};
constexpr std::string_view kEntities[] = {"&amp;", "&lt;", "&gt;", "&quot;", "&#39;", "&nbsp;"};

// Behind a tag's name: its attributes up to the end. False where they are no such; `closes` for "/>".
bool takeAttributes(std::string_view& text, bool& closes) {
  for (;;) {
    closes = take(text, "/>");
    if (closes || take(text, ">")) return true;
    if (!take(text, " ") && !take(text, "\n")) return false;
    const std::size_t name = text.find_first_of(" =\"<>&");
    if (name == std::string_view::npos || name == 0) return false;
    text.remove_prefix(name);
    if (!take(text, "=\"")) continue;
    const std::size_t end = text.find_first_of("\"<>");
    if (end == std::string_view::npos || text[end] != '"') return false;
    text.remove_prefix(end + 1);
  }
}

class Page {
 public:
  explicit Page(std::string_view text) : rest_(text) {}

  bool isGood() {
    while (!rest_.empty()) {
      const std::size_t begin = std::min(rest_.find_first_of("<>&"), rest_.size());
      rest_.remove_prefix(begin);
      if (!rest_.empty() && !takeMarkup()) return false;
    }
    return open_.empty();
  }
  std::string_view rest() const { return rest_.substr(0, 200); }

 private:
  bool takeMarkup() {
    if (take(rest_, "</")) return takeEnd();
    if (take(rest_, "<")) return takeTag();
    return std::ranges::any_of(kEntities,
                               [this](std::string_view entity) { return take(rest_, entity); });
  }

  bool takeEnd() {
    if (open_.empty() || !take(rest_, open_.back()) || !take(rest_, ">")) return false;
    open_.pop_back();
    return true;
  }

  bool takeTag() {
    const auto name = rest_.substr(0, rest_.find_first_of(" />\n"));
    if (!kTags.contains(name)) return false;
    rest_.remove_prefix(name.size());
    bool closes = false;
    if (!takeAttributes(rest_, closes)) return false;
    if (closes || kUnclosed.contains(name)) return true;
    open_.push_back(name);
    if (name == "style") rest_.remove_prefix(std::min(rest_.find("</style>"), rest_.size()));
    return true;
  }

  std::string_view rest_;
  std::vector<std::string_view> open_;
};

}  // namespace

bool isClean(std::string_view text, std::string_view controls) {
  while (!text.empty()) {
    const char byte = text.front();
    const std::uint32_t character = takeCharacter(text);
    const bool isAllowed = controls.find(byte) != std::string_view::npos;
    if (character == kNone || (isObeyed(character) && !isAllowed)) return false;
  }
  return true;
}

void requireClean(std::string_view what, std::string_view text) {
  if (!isClean(text)) fail(std::string(what) + " is clean", text);
}

void requireTable(std::string_view what, std::string_view text, std::size_t width) {
  requireClean(what, text);
  eachLine(text, [&](std::string_view line) {
    const bool isAscii = std::ranges::none_of(line, [](char c) { return (c & 0x80) != 0; });
    if (isAscii && line.size() > width) fail(std::string(what) + " fits the screen", line);
  });
}

void requireJson(std::string_view what, std::string_view text) {
  requireClean(what, text);
  if (!text.ends_with('\n') || !nlohmann::json::accept(text)) {
    fail(std::string(what) + " is JSON", text);
  }
}

void requireNdjson(std::string_view text) {
  requireClean("ndjson", text);
  eachLine(text, [](std::string_view line) {
    if (!nlohmann::json::accept(line)) fail("a line is JSON", line);
  });
}

void requireCsv(std::string_view text) {
  if (!isClean(text, "\r\n")) fail("csv is clean", text);
  const std::size_t columns = takeRecord(text);
  if (columns == 0) fail("csv has a head", text);
  while (!text.empty()) {
    const std::string_view record = text;
    if (takeRecord(text) != columns) fail("a record of csv has the columns of the head", record);
  }
}

void requireOpenMetrics(std::string_view text) {
  requireClean("openmetrics", text);
  constexpr std::string_view kEnd = "# EOF\n";
  if (!text.ends_with(kEnd)) fail("openmetrics has an end", text);
  text.remove_suffix(kEnd.size());
  eachLine(text, [](std::string_view line) {
    if (!isComment(line) && !isSample(line)) fail("a line of openmetrics is one", line);
  });
}

void requireHtml(std::string_view text) {
  requireClean("the page", text);
  Page page(text);
  if (!page.isGood()) fail("the page's tags are good", page.rest());
}

}  // namespace fuzz
