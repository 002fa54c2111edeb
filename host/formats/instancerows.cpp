// SPDX-License-Identifier: Apache-2.0
#include "host/formats/instancerows.h"

#include <algorithm>
#include <string_view>

#include "host/text/displaywidth.h"
#include "host/text/textlayout.h"

namespace velhost {
namespace {

constexpr std::size_t kGap = 2;
constexpr char kNodeHead[] = "Node";
constexpr char kNothing[] = "-";  // in the line of an instance of which nothing is shown

// A column that is shown.
struct Place {
  const PropertyColumn* column = nullptr;
  std::size_t wanted = 0;  // to show each cell whole
  std::size_t width = 0;   // that it has
};

std::size_t wantedWidth(const PropertyColumn& column) {
  std::size_t width = displayWidth(column.name);
  for (const std::string& cell : column.cells) width = std::max(width, displayWidth(cell));
  return width;
}

// A long text gets no more than leaves others their place, as long as its name is whole.
std::size_t modestWidth(const Place& place, std::size_t most) {
  return std::min(place.wanted, std::max(most, displayWidth(place.column->name)));
}

// The first column has always room; the one behind it takes what is left where its name fits there.
// 0: there is no room.
std::size_t widthOf(const Place& place, std::size_t before, std::size_t room, std::size_t left) {
  constexpr std::size_t kModest = 16;
  if (before == 0) return std::min(modestWidth(place, room / 2), room);
  left -= std::min(left, kGap);
  const std::size_t width = modestWidth(place, std::max(room / 4, kModest));
  if (width <= left) return width;
  return before == 1 && displayWidth(place.column->name) <= left ? left : 0;
}

// The columns that have room, in their order.
std::vector<Place> placesOf(const std::vector<PropertyColumn>& columns, std::size_t room) {
  std::vector<Place> places;
  std::size_t left = room;
  for (const PropertyColumn& column : columns) {
    Place place{&column, wantedWidth(column)};
    place.width = widthOf(place, places.size(), room, left);
    if (place.width == 0) continue;
    left -= place.width + (places.empty() ? 0 : kGap);
    places.push_back(place);
  }
  for (Place& place : places) {
    const std::size_t more = std::min(place.wanted - place.width, left);
    place.width += more;
    left -= more;
  }
  return places;
}

// The number of a node in front of the first of its instances.
PropertyColumn nodeColumn(const std::vector<std::string>& nodes) {
  PropertyColumn column{kNodeHead, nodes};
  const auto isRepeated = [&](std::size_t i) { return i > 0 && nodes[i] == nodes[i - 1]; };
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    if (isRepeated(i)) column.cells[i].clear();
  }
  return column;
}

std::size_t indentOn(const Screen& screen) { return std::min<std::size_t>(2, screen.width / 4); }

template <class TextOf>
std::string rowText(const std::vector<Place>& places, TextOf textOf) {
  std::string text;
  for (const Place& place : places) {
    text += padded(cutToWidth(textOf(*place.column), place.width), place.width + kGap);
  }
  text.erase(text.find_last_not_of(' ') + 1);
  return text;
}

std::string rowsText(const std::vector<Place>& places, std::size_t count, const Screen& screen) {
  const std::string indent(indentOn(screen), ' ');
  const std::string head = rowText(places, [](const PropertyColumn& c) { return c.name; });
  std::string text = head.empty() ? "" : indent + styled(head, Style::kBold, screen) + '\n';
  for (std::size_t i = 0; i < count; ++i) {
    const std::string row = rowText(places, [i](const PropertyColumn& c) { return c.cells[i]; });
    text += indent + (row.empty() ? kNothing : row) + '\n';
  }
  return text;
}

// "  all:  Vendor KRX, FileName ABC123A.UPD"
std::string commonText(const InstanceDigest& digest, const Screen& screen) {
  constexpr std::size_t kLongest = 60;
  if (digest.common.empty()) return "";
  std::vector<std::string> items;
  for (const auto& [name, value] : digest.common) {
    items.push_back(name + ' ' + cutToWidth(value, kLongest));
  }
  return listLines("  all:  ", items, screen.width);
}

DigestText linesText(const InstanceDigest& digest, bool showsNodes, const Screen& screen) {
  constexpr std::size_t kLeastBesideNodes = 4;
  const PropertyColumn nodes = nodeColumn(digest.nodes);
  const Place node{&nodes, wantedWidth(nodes), wantedWidth(nodes)};
  std::size_t room = screen.width - indentOn(screen);
  showsNodes = showsNodes && !digest.nodes.back().empty();  // the numbered ones are the last
  const bool hasNodes = showsNodes && node.width + kGap + kLeastBesideNodes <= room;
  if (hasNodes) room -= node.width + kGap;
  std::vector<Place> places = placesOf(digest.columns, room);
  const bool isWhole = places.size() == digest.columns.size();
  if (hasNodes) places.insert(places.begin(), node);
  return {rowsText(places, digest.nodes.size(), screen) + commonText(digest, screen), isWhole};
}

std::string nothingText(const Screen& screen) {
  return std::string(indentOn(screen), ' ') + kNothing + '\n';
}

Remark remarkOf(const std::string& name, const std::string& text) { return {{{name + ':'}}, text}; }

std::string cardText(const InstanceDigest& digest, bool showsNodes, const Screen& screen) {
  std::vector<Remark> lines;
  if (showsNodes && !digest.nodes.front().empty()) {
    lines.push_back(remarkOf(kNodeHead, digest.nodes.front()));
  }
  for (const PropertyColumn& column : digest.columns) {
    lines.push_back(remarkOf(column.name, column.cells.front()));
  }
  return lines.empty() ? nothingText(screen) : remarks(lines, screen);
}

// A line a property that one of these instances has.
std::vector<TextRow> propertyRows(const std::vector<PropertyColumn>& columns, std::size_t begin,
                                  std::size_t end) {
  std::vector<TextRow> rows;
  for (const PropertyColumn& column : columns) {
    const auto first = column.cells.begin();
    TextRow row(first + static_cast<std::ptrdiff_t>(begin),
                first + static_cast<std::ptrdiff_t>(end));
    if (std::ranges::count(row, "") == std::ssize(row)) continue;
    row.insert(row.begin(), column.name + ':');
    rows.push_back(std::move(row));
  }
  return rows;
}

std::string oneText(const std::vector<PropertyColumn>& columns, std::size_t i,
                    const Screen& screen) {
  std::vector<Remark> lines;
  for (const TextRow& row : propertyRows(columns, i, i + 1)) lines.push_back({{{row[0]}}, row[1]});
  return remarks(lines, screen);
}

// As many instances side by side as have room, then the next ones below them.
std::string sideBySide(const std::vector<PropertyColumn>& columns, std::size_t count,
                       const Screen& screen) {
  std::string text;
  for (std::size_t begin = 0, end = 0; begin < count; begin = end) {
    std::string block = oneText(columns, begin, screen);
    for (end = begin + 1; end < count; ++end) {
      const auto rows = propertyRows(columns, begin, end + 1);
      if (columnsWidth(rows) > screen.width) break;
      block = alignedColumns(rows);
    }
    text += (begin == 0 ? "" : "\n") + (block.empty() ? nothingText(screen) : block);
  }
  return text;
}

}  // namespace

DigestText digestText(const InstanceDigest& digest, bool showsNodes, const Screen& screen) {
  if (digest.nodes.size() > 1) return linesText(digest, showsNodes, screen);
  return {cardText(digest, showsNodes, screen), true};
}

std::string wholeText(const std::vector<PropertyColumn>& columns, std::size_t count,
                      const Screen& screen) {
  std::vector<Place> places;
  std::size_t width = indentOn(screen);
  for (const PropertyColumn& column : columns) {
    const std::size_t wanted = wantedWidth(column);
    places.push_back({&column, wanted, wanted});
    width += wanted + (places.size() > 1 ? kGap : 0);
  }
  const bool isOneLine = count > 1 && !columns.empty() && width <= screen.width;
  return isOneLine ? rowsText(places, count, screen) : sideBySide(columns, count, screen);
}

}  // namespace velhost
