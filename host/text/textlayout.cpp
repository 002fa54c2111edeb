// SPDX-License-Identifier: Apache-2.0
#include "host/text/textlayout.h"

#include <algorithm>
#include <numeric>

#include "host/text/utf8.h"

namespace velhost {
namespace {

constexpr std::size_t kIndent = 2;
constexpr std::size_t kGap = 2;

std::vector<std::size_t> columnWidths(const std::vector<TextRow>& rows) {
  std::vector<std::size_t> widths;
  for (const TextRow& row : rows) {
    widths.resize(std::max(widths.size(), row.size()), 0);
    for (std::size_t i = 0; i < row.size(); ++i) {
      widths[i] = std::max(widths[i], characterCount(row[i]));
    }
  }
  return widths;
}

std::string alignedLine(const TextRow& row, const std::vector<std::size_t>& widths) {
  std::string line(kIndent, ' ');
  for (std::size_t i = 0; i < row.size(); ++i) {
    line += row[i];
    line.append(widths[i] - characterCount(row[i]) + kGap, ' ');
  }
  line.erase(line.find_last_not_of(' ') + 1);
  return line + '\n';
}

}  // namespace

std::size_t columnsWidth(const std::vector<TextRow>& rows) {
  const std::vector<std::size_t> widths = columnWidths(rows);
  const std::size_t gaps = widths.empty() ? 0 : (widths.size() - 1) * kGap;
  return std::accumulate(widths.begin(), widths.end(), kIndent + gaps);
}

std::string alignedColumns(const std::vector<TextRow>& rows) {
  const std::vector<std::size_t> widths = columnWidths(rows);
  std::string text;
  for (const TextRow& row : rows) text += alignedLine(row, widths);
  return text;
}

std::string wrappedList(std::string_view lead, const std::vector<std::string>& words,
                        std::size_t indent) {
  std::string text;
  std::string line(lead);
  for (std::size_t i = 0; i < words.size(); ++i) {
    const std::string word = words[i] + (i + 1 < words.size() ? "," : "");
    if (line.size() + 1 + word.size() > kLineWidth) {
      text += line + '\n';
      line.assign(indent - 1, ' ');
    }
    line += ' ' + word;
  }
  return text + line + '\n';
}

}  // namespace velhost
