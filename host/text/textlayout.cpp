// SPDX-License-Identifier: Apache-2.0
#include "host/text/textlayout.h"

#include <algorithm>
#include <iterator>
#include <numeric>
#include <utility>

#include "host/text/displaywidth.h"

namespace velhost {
namespace {

constexpr std::size_t kIndent = 2;
constexpr std::size_t kGap = 2;

std::vector<std::size_t> columnWidths(const std::vector<TextRow>& rows) {
  std::vector<std::size_t> widths;
  for (const TextRow& row : rows) {
    widths.resize(std::max(widths.size(), row.size()), 0);
    for (std::size_t i = 0; i < row.size(); ++i) {
      widths[i] = std::max(widths[i], displayWidth(row[i]));
    }
  }
  return widths;
}

std::string line(std::string text) {
  text.erase(text.find_last_not_of(' ') + 1);
  return text += '\n';
}

std::string alignedLine(const TextRow& row, const std::vector<std::size_t>& widths) {
  std::string text(kIndent, ' ');
  for (std::size_t i = 0; i < row.size(); ++i) text += padded(row[i], widths[i] + kGap);
  return line(std::move(text));
}

// What the remarks are of, each in as much room as the widest one takes.
class Heads {
 public:
  explicit Heads(const std::vector<Remark>& list) {
    std::vector<TextRow> rows;
    for (const Remark& remark : list) {
      TextRow& row = rows.emplace_back();
      for (const StyledText& part : remark.what) row.push_back(part.text);
    }
    widths_ = columnWidths(rows);
  }

  std::size_t width() const {
    return std::accumulate(widths_.begin(), widths_.end(), kIndent + widths_.size() * kGap);
  }

  std::string head(const Remark& remark, const Screen& screen) const {
    std::string text(kIndent, ' ');
    for (std::size_t i = 0; i < remark.what.size(); ++i) {
      const auto& [part, style] = remark.what[i];
      text += styled(part, style, screen);
      text.append(widths_[i] - displayWidth(part) + kGap, ' ');
    }
    return text;
  }

 private:
  std::vector<std::size_t> widths_;
};

std::string inColumns(const Remark& remark, const Heads& heads, const Screen& screen) {
  std::string lead = heads.head(remark, screen);
  std::string text;
  for (const std::string& part : wrapped(remark.text, screen.width - heads.width())) {
    text += line(lead + part);
    lead.assign(heads.width(), ' ');
  }
  return text;
}

std::string inLines(const Remark& remark, const Screen& screen) {
  std::string what;
  for (const StyledText& part : remark.what) what += (what.empty() ? "" : " ") + part.text;
  std::string text = paragraph(what, kIndent, screen.width);
  if (!remark.text.empty()) text += paragraph(remark.text, 2 * kIndent, screen.width);
  return text;
}

std::vector<std::string> withCommas(std::vector<std::string> items) {
  for (std::size_t i = 0; i + 1 < items.size(); ++i) items[i] += ',';
  return items;
}

// Broken between items; one that is longer than a line is broken itself.
std::vector<std::string> listedLines(const std::vector<std::string>& items, std::size_t width) {
  std::vector<std::string> pieces;
  for (const std::string& item : items) {
    if (displayWidth(item) <= width) {
      pieces.push_back(item);
    } else {
      std::ranges::move(wrapped(item, width), std::back_inserter(pieces));
    }
  }
  return wrappedWords(std::vector<std::string_view>(pieces.begin(), pieces.end()), width);
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

std::string paragraph(std::string_view text, std::size_t indent, std::size_t width) {
  indent = std::min(indent, width / 4);
  std::string lines;
  for (const std::string& part : wrapped(text, width - indent)) {
    lines += line(std::string(indent, ' ') + part);
  }
  return lines;
}

std::string listLines(std::string_view lead, const std::vector<std::string>& items,
                      std::size_t width) {
  const std::size_t indent = std::min(displayWidth(lead), width / 4);
  std::string text;
  std::string before(lead);
  if (displayWidth(lead) > indent) {
    text = paragraph(lead, 0, width);
    before.assign(indent, ' ');
  }
  for (const std::string& part : listedLines(withCommas(items), width - indent)) {
    text += line(before + part);
    before.assign(indent, ' ');
  }
  return text;
}

std::string heading(std::string_view name, std::string_view rest, const Screen& screen) {
  std::string text = paragraph(std::string(name).append(rest), 0, screen.width);
  if (!text.starts_with(name)) return text;  // it is broken
  return text.replace(0, name.size(), styled(name, Style::kBold, screen));
}

std::string remarks(const std::vector<Remark>& list, const Screen& screen) {
  const Heads heads(list);
  const bool hasRoom = heads.width() + std::max<std::size_t>(screen.width / 3, 1) <= screen.width;
  std::string text;
  for (const Remark& remark : list) {
    text += hasRoom ? inColumns(remark, heads, screen) : inLines(remark, screen);
  }
  return text;
}

}  // namespace velhost
