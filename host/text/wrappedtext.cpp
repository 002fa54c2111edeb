// SPDX-License-Identifier: Apache-2.0
#include "host/text/wrappedtext.h"

#include <algorithm>

#include "host/text/utf8.h"

namespace velhost {
namespace {

constexpr std::size_t kMostPairs = 8;  // that stay together
constexpr std::size_t kLeastRoom = 8;  // behind a lead

bool isHexDigit(char c) { return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F'); }

// A mark may stand behind it.
bool isPair(std::string_view word) {
  return word.size() >= 2 && word.size() <= 3 && isHexDigit(word[0]) && isHexDigit(word[1]) &&
         (word.size() == 2 || !isHexDigit(word[2]));
}

std::string_view untilBlank(std::string_view text) { return text.substr(0, text.find(' ')); }

// A word, with the pairs of hexadecimal digits that follow one.
std::string_view firstWord(std::string_view text) {
  std::string_view last = untilBlank(text);
  std::size_t end = last.size();
  for (std::size_t count = 1; count < kMostPairs && isPair(last) && last.size() == 2; ++count) {
    last = untilBlank(text.substr(std::min(end + 1, text.size())));
    if (!isPair(last)) break;
    end += 1 + last.size();
  }
  return text.substr(0, end);
}

// Its first characters, up to a blank where that is among them.
std::string_view beginning(std::string_view word, std::size_t most) {
  std::size_t end = 0;
  for (std::size_t count = 0; end < word.size() && count < most; ++count) {
    end += std::max<std::size_t>(sequenceLength(word.substr(end)), 1);
  }
  const std::size_t blank =
      end < word.size() ? word.substr(0, end).rfind(' ') : std::string_view::npos;
  return word.substr(0, blank == std::string_view::npos ? end : blank);
}

}  // namespace

std::string wrappedText(std::string_view text, std::size_t width, std::size_t indent,
                        std::size_t hang) {
  std::string lines;
  std::string line(indent, ' ');
  bool isEmpty = true;
  while (!text.empty()) {
    const std::size_t used = characterCount(line) + (isEmpty ? 0 : 1);
    const std::string_view word = firstWord(text);
    if (!isEmpty && used + characterCount(word) > width) {
      lines += line + '\n';
      line.assign(hang, ' ');
      isEmpty = true;
      continue;
    }
    const std::string_view piece = beginning(word, width > used ? width - used : 1);
    line += (isEmpty ? "" : " ") + std::string(piece);
    isEmpty = false;
    text.remove_prefix(piece.size());
    if (text.starts_with(' ')) text.remove_prefix(1);
  }
  return isEmpty ? lines : lines + line + '\n';
}

std::string wrappedText(std::string_view lead, std::string_view text, std::size_t width) {
  const std::size_t indent = characterCount(lead);
  const std::string lines = wrappedText(text, std::max(width, indent + kLeastRoom), indent, indent);
  if (!lines.empty()) return std::string(lead).append(lines, indent);
  return std::string(lead.substr(0, lead.find_last_not_of(' ') + 1)) + '\n';
}

}  // namespace velhost
