// SPDX-License-Identifier: Apache-2.0
#include "host/formats/csv.h"

#include <algorithm>
#include <string_view>

#include "host/formats/classentries.h"
#include "host/formats/element.h"
#include "host/text/cimjson.h"
#include "host/text/datetext.h"
#include "host/text/utf8.h"

namespace velhost {
namespace {

using NKRXVEL20::ECIMType;
using NKRXVEL20::TCIMValue;
using NKRXVEL20::host::PublishedInstance;

struct Record {
  std::string machine;
  std::string className;
  std::string node;
  std::string instance;  // its number in its class, from 1
  std::string name;
  std::string property;
  std::string value;
  std::string state;
  std::string reason;
};

struct Column {
  std::string_view name;
  std::string Record::*cell;
};

constexpr Column kColumns[] = {
    {"machine", &Record::machine},   {"class", &Record::className}, {"node", &Record::node},
    {"instance", &Record::instance}, {"name", &Record::name},       {"property", &Record::property},
    {"value", &Record::value},       {"state", &Record::state},     {"reason", &Record::reason},
};

// Line feeds stay line feeds: a quoted cell may have them, and spreadsheets show them as they are.
std::string seenLines(std::string_view text) {
  std::string seen;
  for (;;) {
    const std::size_t end = text.find('\n');
    seen += visible(text.substr(0, end));
    if (end == std::string_view::npos) return seen;
    seen += '\n';
    text.remove_prefix(end + 1);
  }
}

// Blanks in front do not keep every spreadsheet from it. East Asian ones take the wide forms of the
// signs too (U+FF0B, U+FF0D, U+FF1D, U+FF20).
bool looksLikeFormula(std::string_view text) {
  constexpr std::string_view kSigns[] = {
      "=", "+", "-", "@", "'", "\xEF\xBC\x8B", "\xEF\xBC\x8D", "\xEF\xBC\x9D", "\xEF\xBC\xA0"};
  text.remove_prefix(std::min(text.find_first_not_of(" \n"), text.size()));
  return std::ranges::any_of(kSigns, [&](std::string_view sign) { return text.starts_with(sign); });
}

std::string inQuotes(std::string_view text) {
  std::string result = "\"";
  for (const char c : text) {
    if (c == '"') result += '"';
    result += c;
  }
  return result += '"';
}

std::string cellText(const std::string& text) {
  std::string cell = seenLines(toUtf8(text));
  if (looksLikeFormula(cell)) cell.insert(0, 1, '\'');
  return cell.find_first_of("\",\n") == std::string::npos ? cell : inQuotes(cell);
}

std::string valueText(const TCIMValue& value) {
  const std::string text = value.ToString();
  return value.GetType() == ECIMType::kDateTime ? dateText(text) : text;
}

template <class CellOf>
std::string line(CellOf cellOf) {
  std::string text;
  for (const Column& column : kColumns) {
    if (&column != kColumns) text += ',';
    text += cellOf(column);
  }
  return text += "\r\n";
}

std::string recordLine(const Record& record) {
  return line([&](const Column& column) { return cellText(record.*column.cell); });
}

std::string instanceLines(Record record, const PublishedInstance& instance) {
  const auto node = nodeOf(instance);
  if (node) record.node = std::to_string(*node);
  record.name = nameOf(instance);
  if (instance.properties.empty()) return recordLine(record);
  std::string text;
  for (const auto& [property, value] : instance.properties) {
    record.property = property;
    record.value = valueText(value);
    text += recordLine(record);
  }
  return text;
}

}  // namespace

std::string csvText(const QueryContext& context, const QueryResult& result) {
  std::string text = line([](const Column& column) { return column.name; });
  for (const ClassEntry& entry : classEntries(result)) {
    const ClassState& state = *entry.state;
    Record record{context.machineName, state.className, {}, {}, {}, {}, {}, {}, state.reason};
    record.state = stateName(state.state);
    if (entry.instances.empty()) text += recordLine(record);
    std::size_t number = 0;
    for (const auto* const instance : entry.instances) {
      record.instance = std::to_string(++number);
      text += instanceLines(record, *instance);
    }
  }
  return text;
}

}  // namespace velhost
