// SPDX-License-Identifier: Apache-2.0
#include "host/formats/instancecolumns.h"

#include <algorithm>
#include <functional>
#include <initializer_list>
#include <iterator>
#include <set>
#include <string_view>

#include "host/formats/element.h"
#include "host/formats/shownvalue.h"
#include "host/text/utf8.h"
#include "velhost/schema.h"

namespace velhost {
namespace {

using NKRXVEL20::host::ClassSchema;
using NKRXVEL20::host::findProperty;
using NKRXVEL20::host::PropertySchema;
using NKRXVEL20::host::PublishedInstance;

constexpr std::size_t kLongestText = 1000;
constexpr std::string_view kNodeProperty = "SourceNode";

// What a property is of an instance, by how much that says.
enum class Role { kName, kKey, kLevel, kBuild, kPart, kSerial, kMaker, kDate, kOther, kFixed };

// By the end of its name: other makers' classes have "BoardPartNumber" and the like.
struct RoleRow {
  std::string_view ending;
  Role role;
  bool isWholeName = false;
};

constexpr RoleRow kRoles[] = {
    {"Version", Role::kLevel, true}, {"FirmwareVersion", Role::kLevel, true},
    {"BuildNumber", Role::kBuild},   {"PartNumber", Role::kPart},
    {"SerialNumber", Role::kSerial}, {"Manufacturer", Role::kMaker},
    {"Vendor", Role::kMaker},        {"Date", Role::kDate},
};

struct RankedColumn {
  PropertyColumn column;
  Role role = Role::kOther;
};

using RankedColumns = std::vector<RankedColumn>;

// Of a template that has nothing but the node in it: "Node {SourceNode} : ".
bool isOfNodeAlone(std::string_view line) {
  static constexpr std::string_view kOfNode[] = {"{SourceNode}", "{node}", "{sp}", "{label}"};
  if (!line.starts_with("Derived.VEL|")) return false;
  line.remove_prefix(line.find('|') + 1);
  line = line.substr(0, line.find('|'));
  while (line.find('{') != std::string_view::npos) {
    line.remove_prefix(line.find('{'));
    const auto* const found = std::ranges::find_if(
        kOfNode, [&](std::string_view name) { return line.starts_with(name); });
    if (found == std::end(kOfNode)) return false;
    line.remove_prefix(found->size());
  }
  return true;
}

// Says the same on every machine, or the node's number again, by what the schema says of its origin.
bool isFixed(const PropertySchema* property) {
  return property != nullptr && !property->mappingStrings.empty() &&
         std::ranges::all_of(property->mappingStrings, [](std::string_view line) {
           return line.starts_with("Constant.VEL|") || isOfNodeAlone(line);
         });
}

Role roleByName(std::string_view name) {
  const auto* const row = std::ranges::find_if(kRoles, [name](const RoleRow& r) {
    return r.isWholeName ? name == r.ending : name.ends_with(r.ending);
  });
  return row == std::end(kRoles) ? Role::kOther : row->role;
}

// Of a class that has no name the keys are one.
Role roleOf(const ClassSchema* cimClass, std::string_view name) {
  if (name == "Name" || name == "ElementName") return Role::kName;
  const PropertySchema* const property =
      cimClass != nullptr ? findProperty(*cimClass, name) : nullptr;
  if (name == kNodeProperty || isFixed(property)) return Role::kFixed;
  if (property == nullptr || !property->isKey) return roleByName(name);
  const bool isNamed = findProperty(*cimClass, "Name") != nullptr ||
                       findProperty(*cimClass, "ElementName") != nullptr;
  return isNamed ? Role::kKey : Role::kName;
}

std::vector<std::string> namesIn(const InstanceList& instances) {
  std::vector<std::string> names;
  std::set<std::string_view> seen;
  for (const PublishedInstance* const instance : instances) {
    for (const auto& [name, value] : instance->properties) {
      if (seen.insert(name).second) names.push_back(name);
    }
  }
  return names;
}

PropertyColumn columnOf(const ClassSchema* cimClass, const std::string& name,
                        const InstanceList& instances) {
  PropertyColumn column{name, {}};
  for (const PublishedInstance* const instance : instances) {
    const auto found =
        std::ranges::find_if(instance->properties, [&](const auto& p) { return p.first == name; });
    column.cells.push_back(
        found == instance->properties.end()
            ? ""
            : shortened(shownValue(cimClass, name, found->second), kLongestText));
  }
  return column;
}

std::size_t filledCells(const PropertyColumn& column) {
  return column.cells.size() - static_cast<std::size_t>(std::ranges::count(column.cells, ""));
}

void eraseBlank(RankedColumns& columns) {
  std::erase_if(columns, [](const RankedColumn& c) { return filledCells(c.column) == 0; });
}

RankedColumns columnsOf(const std::string& className, const InstanceList& instances) {
  const ClassSchema* const cimClass = NKRXVEL20::host::findClass(className);
  RankedColumns columns;
  for (const std::string& name : namesIn(instances)) {
    columns.push_back({columnOf(cimClass, name, instances), roleOf(cimClass, name)});
  }
  eraseBlank(columns);
  return columns;
}

// Of several part numbers, say, the one that most instances have; the others come behind all that.
void keepBestOfEachRole(RankedColumns& columns) {
  for (const Role role : {Role::kBuild, Role::kPart, Role::kSerial, Role::kMaker, Role::kDate}) {
    const auto filled = [role](const RankedColumn& c) {
      return c.role == role ? filledCells(c.column) + 1 : 0;
    };
    const auto best = std::ranges::max_element(columns, {}, filled);
    for (RankedColumn& column : columns) {
      if (column.role == role && &column != &*best) column.role = Role::kOther;
    }
  }
}

void putInOrder(RankedColumns& columns) {
  keepBestOfEachRole(columns);
  std::ranges::stable_sort(columns, {}, [](const RankedColumn& c) {
    const std::size_t filled = c.role == Role::kOther ? filledCells(c.column) : 0;
    return std::pair(c.role, c.column.cells.size() - filled);
  });
}

// "Node 2: DIMM 1", "Node 2 : " and "Node 2" of an instance of node 2.
std::string withoutLabel(const std::string& text, const std::string& node) {
  const std::string label = "Node " + node;
  if (node.empty() || !text.starts_with(label)) return text;
  std::string_view rest = std::string_view(text).substr(label.size());
  if (rest.empty()) return "";
  rest.remove_prefix(std::min(rest.find_first_not_of(' '), rest.size()));
  if (!rest.starts_with(':')) return text;
  rest.remove_prefix(1);
  rest.remove_prefix(std::min(rest.find_first_not_of(' '), rest.size()));
  return std::string(rest);
}

void takeLabelsOff(RankedColumns& columns, const std::vector<std::string>& nodes) {
  for (RankedColumn& ranked : columns) {
    for (std::size_t i = 0; i < nodes.size(); ++i) {
      std::string& cell = ranked.column.cells[i];
      cell = withoutLabel(cell, nodes[i]);
    }
  }
  eraseBlank(columns);
}

// Whether the node and the properties with one of these roles tell the instances apart.
bool tellApart(std::initializer_list<Role> roles, const RankedColumns& columns,
               const std::vector<std::string>& nodes) {
  std::set<std::vector<std::string_view>> seen;
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    std::vector<std::string_view> identity{nodes[i]};
    for (const RankedColumn& ranked : columns) {
      if (std::ranges::find(roles, ranked.role) == roles.end()) continue;
      identity.push_back(ranked.column.cells[i]);
    }
    if (!seen.insert(std::move(identity)).second) return false;
  }
  return true;
}

// Keys say something where the names do not tell the instances apart, and they do.
bool needsKeys(const RankedColumns& columns, const std::vector<std::string>& nodes) {
  return !tellApart({Role::kName}, columns, nodes) &&
         tellApart({Role::kName, Role::kKey}, columns, nodes);
}

bool isSameInAll(const PropertyColumn& column) {
  return std::ranges::adjacent_find(column.cells, std::not_equal_to<>()) == column.cells.end();
}

// Says nothing that the other one does not.
bool repeats(const PropertyColumn& column, const std::vector<std::string>& other) {
  if (isSameInAll(column)) return false;  // that is no more than chance
  return std::ranges::equal(column.cells, other, [](const std::string& cell, const std::string& o) {
    return cell.empty() || cell == o;
  });
}

bool repeatsAny(const PropertyColumn& column, const InstanceDigest& digest) {
  return repeats(column, digest.nodes) ||
         std::ranges::any_of(digest.columns, [&](const PropertyColumn& earlier) {
           return repeats(column, earlier.cells);
         });
}

// What all have is told once; but a level, and the name of instances that nothing else tells apart.
bool isCommon(const RankedColumn& ranked, const InstanceDigest& digest) {
  if (digest.nodes.size() < 2 || !isSameInAll(ranked.column)) return false;
  if (ranked.role == Role::kName) return digest.nodes.front() != digest.nodes.back();
  return ranked.role != Role::kLevel && ranked.role != Role::kBuild;
}

void add(RankedColumn& ranked, InstanceDigest& digest) {
  PropertyColumn& column = ranked.column;
  if (isCommon(ranked, digest)) {
    digest.common.emplace_back(column.name, column.cells.front());
  } else if (ranked.role != Role::kOther || !repeatsAny(column, digest)) {
    digest.columns.push_back(std::move(column));
  }
}

std::string nodeText(const PublishedInstance* instance) {
  const auto node = nodeOf(*instance);
  return node ? std::to_string(*node) : "";
}

}  // namespace

std::vector<PropertyColumn> allColumns(const std::string& className,
                                       const InstanceList& instances) {
  RankedColumns ranked = columnsOf(className, instances);
  putInOrder(ranked);
  std::vector<PropertyColumn> columns;
  for (RankedColumn& column : ranked) columns.push_back(std::move(column.column));
  return columns;
}

InstanceDigest digestOf(const std::string& className, const InstanceList& instances) {
  InstanceDigest digest;
  std::ranges::transform(instances, std::back_inserter(digest.nodes), nodeText);
  RankedColumns ranked = columnsOf(className, instances);
  std::erase_if(ranked, [](const RankedColumn& c) { return c.role == Role::kFixed; });
  takeLabelsOff(ranked, digest.nodes);
  if (!needsKeys(ranked, digest.nodes)) {
    for (RankedColumn& c : ranked) c.role = c.role == Role::kKey ? Role::kOther : c.role;
  }
  putInOrder(ranked);
  for (RankedColumn& column : ranked) add(column, digest);
  return digest;
}

}  // namespace velhost
