// SPDX-License-Identifier: Apache-2.0
#include "host/formats/csv.h"

#include <string_view>

#include "host/formats/classentries.h"
#include "host/formats/csvcell.h"
#include "host/formats/element.h"
#include "host/text/cimjson.h"
#include "host/text/datetext.h"

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
  return line([&](const Column& column) { return csvCell(record.*column.cell); });
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
