// SPDX-License-Identifier: Apache-2.0
#include "host/text/displaywidth.h"

#include <algorithm>
#include <clocale>
#include <cwchar>
#include <utility>

#include "host/text/utf8.h"

namespace velhost {
namespace {

constexpr std::string_view kEllipsis = "...";

// No script puts more marks on a letter; further ones are counted, so that a text of nothing else
// has an end.
constexpr unsigned kMostMarks = 4;

// The C library knows the widths of characters in a locale that knows the characters. A program that
// has its own one in force for a moment says the same whatever the user's is.
class UnicodeLocale {
 public:
  UnicodeLocale() : before_(uselocale(unicode())) {}
  ~UnicodeLocale() { uselocale(before_); }
  UnicodeLocale(const UnicodeLocale&) = delete;
  UnicodeLocale& operator=(const UnicodeLocale&) = delete;

 private:
  static locale_t unicode() {
    static const locale_t locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    return locale;  // null where the system lacks it: the one in force stays
  }

  locale_t before_;
};

// What the C library does not know may be wide.
unsigned characterWidth(std::string_view sequence) {
  constexpr int kUnknown = -1;
  if (sequence.size() == 1) return 1;
  const UnicodeLocale inForce;
  const int width = wcwidth(static_cast<wchar_t>(codePoint(sequence)));
  return width == kUnknown ? 2U : static_cast<unsigned>(width);
}

// A character with the marks on it.
struct Glyph {
  std::string_view bytes;
  unsigned width = 0;
};

class Glyphs {
 public:
  explicit Glyphs(std::string_view text) : rest_(text) {}

  bool atEnd() const { return rest_.empty(); }

  // A mark that is on nothing takes a column: more than it needs.
  Glyph next() {
    Glyph glyph{rest_.substr(0, nextLength()), std::max(nextWidth(), 1U)};
    rest_.remove_prefix(glyph.bytes.size());
    for (unsigned marks = 0; marks < kMostMarks && !atEnd() && nextWidth() == 0; ++marks) {
      glyph.bytes = {glyph.bytes.data(), glyph.bytes.size() + nextLength()};
      rest_.remove_prefix(nextLength());
    }
    return glyph;
  }

 private:
  std::size_t nextLength() const { return std::max<std::size_t>(sequenceLength(rest_), 1); }
  unsigned nextWidth() const { return characterWidth(rest_.substr(0, nextLength())); }

  std::string_view rest_;
};

// As many glyphs as fit in so many columns.
std::string_view headOf(std::string_view text, std::size_t width) {
  std::size_t size = 0;
  for (Glyphs glyphs(text); !glyphs.atEnd();) {
    const Glyph glyph = glyphs.next();
    if (glyph.width > width) break;
    width -= glyph.width;
    size += glyph.bytes.size();
  }
  return text.substr(0, size);
}

// The same from the end. Glyphs are read forwards, so it looks no further back than they can reach.
std::string_view tailOf(std::string_view text, std::size_t width) {
  constexpr std::size_t kMostBytes = std::size_t{4} * (1 + kMostMarks);
  std::size_t begin = text.size() - std::min(text.size(), width * kMostBytes);
  while (begin < text.size() && isContinuation(text[begin])) ++begin;
  text.remove_prefix(begin);
  std::size_t excess = displayWidth(text);
  for (Glyphs glyphs(text); excess > width;) {
    const Glyph glyph = glyphs.next();
    excess -= glyph.width;
    text.remove_prefix(glyph.bytes.size());
  }
  return text;
}

// Lines of at most so many columns, in the making.
class Lines {
 public:
  explicit Lines(std::size_t width) : width_(width) {}

  void addWord(std::string_view word) {
    const std::size_t size = displayWidth(word);
    if (!isFirst_ && used_ + 1 + size > width_) {
      newLine();
    } else if (!isFirst_) {
      add({" ", 1});
    }
    isFirst_ = false;
    for (Glyphs glyphs(word); !glyphs.atEnd();) addGlyph(glyphs.next());
  }

  std::vector<std::string> take() { return std::move(lines_); }

 private:
  void newLine() {
    lines_.emplace_back();
    used_ = 0;
  }
  void add(const Glyph& glyph) {
    lines_.back() += glyph.bytes;
    used_ += glyph.width;
  }
  // One that is wider than a line is shown as dots.
  void addGlyph(Glyph glyph) {
    if (glyph.width > width_) {
      glyph = {kEllipsis.substr(0, width_), static_cast<unsigned>(width_)};
    }
    if (used_ + glyph.width > width_) newLine();
    add(glyph);
  }

  std::size_t width_;
  std::size_t used_ = 0;
  bool isFirst_ = true;
  std::vector<std::string> lines_ = {""};
};

}  // namespace

std::size_t displayWidth(std::string_view text) {
  const auto isAscii = [](char c) { return static_cast<unsigned char>(c) < 0x80; };
  if (std::ranges::all_of(text, isAscii)) return text.size();
  std::size_t width = 0;
  for (Glyphs glyphs(text); !glyphs.atEnd();) width += glyphs.next().width;
  return width;
}

std::string cutToWidth(std::string_view text, std::size_t width) {
  if (displayWidth(text) <= width) return std::string(text);
  if (width <= kEllipsis.size()) return std::string(kEllipsis.substr(0, width));
  const std::size_t kept = width - kEllipsis.size();
  std::string result(headOf(text, kept - kept / 2));
  result += kEllipsis;
  return result += tailOf(text, kept / 2);
}

std::vector<std::string> wrappedWords(const std::vector<std::string_view>& words,
                                      std::size_t width) {
  Lines lines(width);
  for (const std::string_view word : words) lines.addWord(word);
  return lines.take();
}

std::vector<std::string> wrapped(std::string_view text, std::size_t width) {
  std::vector<std::string_view> words;
  for (;;) {
    const std::size_t end = text.find(' ');
    words.push_back(text.substr(0, end));
    if (end == std::string_view::npos) return wrappedWords(words, width);
    text.remove_prefix(end + 1);
  }
}

std::string padded(std::string_view text, std::size_t width) {
  std::string result(text);
  return result.append(width - std::min(width, displayWidth(text)), ' ');
}

}  // namespace velhost
