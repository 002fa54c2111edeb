// SPDX-License-Identifier: Apache-2.0
#include "host/results/documentreading.h"

#include <algorithm>
#include <array>
#include <optional>
#include <set>
#include <utility>

#include "host/collectors/requesterror.h"
#include "host/machine/cimvaluefield.h"
#include "host/text/hextext.h"
#include "velhost/schema.h"

namespace velhost {
namespace {

using NKRXVEL20::ECIMType;
using NKRXVEL20::TCIMValue;
using NKRXVEL20::host::ClassSchema;
using NKRXVEL20::host::PropertyList;
using NKRXVEL20::host::PublishedInstance;

// As readMembers, but for keys that the table does not have: others may add to a document.
template <class T, std::size_t N>
void readKnown(const Cursor& object, const Member<T> (&members)[N], T& into) {
  object.eachMember([&](const std::string& key, const Cursor& value) {
    const auto member = std::ranges::find(members, key, &Member<T>::key);
    if (member != std::end(members)) member->read(value, into);
  });
  for (const Member<T>& member : members) {
    if (member.required && !object.has(member.key)) object.failAt(member.key, "is missing");
  }
}

// A text, or null for none.
void readText(const Cursor& at, std::string& text) {
  if (!at.isNull()) text = at.text();
}

// Values.

TCIMValue untypedValue(const Cursor& at) {
  const Json& value = at.json();
  if (value.is_string()) return TCIMValue(at.text());
  if (value.is_boolean()) return TCIMValue(at.boolean());
  if (value.is_number_unsigned()) return TCIMValue(value.get<std::uint64_t>());
  if (value.is_number()) return TCIMValue(value.dump());
  at.fail("must be a text, a number, true, false or null");
}

TCIMValue plainValueAt(const Cursor& at, const ClassSchema* cimClass, const std::string& name) {
  if (at.isNull()) return TCIMValue();
  const auto* const property =
      cimClass == nullptr ? nullptr : NKRXVEL20::host::findProperty(*cimClass, name);
  return property == nullptr ? untypedValue(at) : cimValue(at, property->type);
}

PublishedInstance plainInstance(const Cursor& at, const std::string& className) {
  const ClassSchema* const cimClass = NKRXVEL20::host::findClass(className);
  PublishedInstance instance{className, {}};
  at.eachMember([&](const std::string& name, const Cursor& value) {
    instance.properties.emplace_back(name, plainValueAt(value, cimClass, name));
  });
  return instance;
}

ECIMType typeNamed(const Cursor& at) {
  for (auto type = ECIMType::kEmpty; type <= ECIMType::kDateTime;
       type = static_cast<ECIMType>(static_cast<int>(type) + 1)) {
    if (NKRXVEL20::host::typeName(type) == at.text()) return type;
  }
  at.fail("is no type of CIM");
}

// A value of the result document: { "type": T, "value": V, "bytes": HEX }.
struct TypedValue {
  ECIMType type = ECIMType::kEmpty;
  TCIMValue value;
  std::optional<std::string> bytes;  // of a text that is no UTF-8
};

std::string bytesAt(const Cursor& at) {
  try {
    const Bytes bytes = bytesOfHex(at.text());
    return {bytes.begin(), bytes.end()};
  } catch (const HexTextError& error) {
    at.fail(error.what());
  }
}

constexpr Member<TypedValue> kTypeMember[] = {
    {"type", [](const Cursor& at, TypedValue& v) { v.type = typeNamed(at); }, true},
};

constexpr Member<TypedValue> kValueMembers[] = {
    {"value",
     [](const Cursor& at, TypedValue& v) {
       if (!at.isNull()) v.value = cimValue(at, v.type);
     },
     true},
    {"bytes", [](const Cursor& at, TypedValue& v) { v.bytes = bytesAt(at); }},
};

TCIMValue typedValue(const Cursor& at) {
  TypedValue typed;
  readKnown(at, kTypeMember, typed);
  readKnown(at, kValueMembers, typed);
  return typed.bytes ? TCIMValue(*typed.bytes) : typed.value;
}

// The machine, in documents that name it.

constexpr Member<QueryContext> kMachineMembers[] = {
    {"source", [](const Cursor& at, QueryContext& c) { c.machineSource = at.text(); }, true},
    {"name", [](const Cursor& at, QueryContext& c) { c.machineName = at.text(); }, true},
};

void readMachine(const Cursor& at, Findings& findings) {
  readKnown(at, kMachineMembers, findings.context);
}

// Inventories.

struct ClassReading {
  ClassState state;
  std::vector<PublishedInstance> instances;
};

State stateAt(const Cursor& at) {
  for (State state = State::kPresent; state <= State::kFailed;
       state = static_cast<State>(static_cast<int>(state) + 1)) {
    if (stateName(state) == at.text()) return state;
  }
  at.fail("is no state of a class");
}

// Behind the class's name, which tells the types of its values.
constexpr Member<ClassReading> kClassMembers[] = {
    {"collector", [](const Cursor& at, ClassReading& c) { readText(at, c.state.collector); }},
    {"state", [](const Cursor& at, ClassReading& c) { c.state.state = stateAt(at); }, true},
    {"reason", [](const Cursor& at, ClassReading& c) { readText(at, c.state.reason); }},
    {"instances",
     [](const Cursor& at, ClassReading& c) {
       at.eachElement([&](const Cursor& item) {
         c.instances.push_back(plainInstance(item, c.state.className));
       });
     },
     true},
};

constexpr Member<ClassReading> kClassName[] = {
    {"class", [](const Cursor& at, ClassReading& c) { c.state.className = at.text(); }, true},
};

void addClass(const Cursor& at, ClassReading reading, std::set<std::string>& names,
              QueryResult& result) {
  const std::string& name = reading.state.className;
  if (!names.insert(name).second) at.failAt("class", "stands in the document already");
  result.requested.push_back(name);
  result.states.push_back(std::move(reading.state));
  std::ranges::move(reading.instances, std::back_inserter(result.instances));
}

void readClasses(const Cursor& at, Findings& findings) {
  std::set<std::string> names;
  at.eachElement([&](const Cursor& item) {
    ClassReading reading;
    readKnown(item, kClassName, reading);
    readKnown(item, kClassMembers, reading);
    addClass(item, std::move(reading), names, findings.result);
  });
}

constexpr Member<CollectorState> kCollectorMembers[] = {
    {"name", [](const Cursor& at, CollectorState& c) { c.name = at.text(); }, true},
    {"version", [](const Cursor& at, CollectorState& c) { c.version = at.text(); }},
    {"state", [](const Cursor& at, CollectorState& c) { c.hasAnswered = at.text() != "failed"; }},
    {"reason", [](const Cursor& at, CollectorState& c) { readText(at, c.reason); }},
};

void readCollectorStates(const Cursor& at, Findings& findings) {
  at.eachElement([&](const Cursor& item) {
    CollectorState collector;
    readKnown(item, kCollectorMembers, collector);
    findings.result.collectors.push_back(std::move(collector));
  });
}

constexpr Member<Findings> kInventoryMembers[] = {
    {"machine", readMachine, true},
    {"collectors", readCollectorStates},
    {"classes", readClasses, true},
};

// Result documents.

constexpr Member<PublishedInstance> kInstanceMembers[] = {
    {"class", [](const Cursor& at, PublishedInstance& i) { i.className = at.text(); }, true},
    {"properties",
     [](const Cursor& at, PublishedInstance& i) {
       at.eachMember([&](const std::string& name, const Cursor& value) {
         i.properties.emplace_back(name, typedValue(value));
       });
     },
     true},
};

constexpr Member<RequestError> kErrorMembers[] = {
    {"exception", [](const Cursor& at, RequestError& e) { e.exception = at.text(); }, true},
    {"code", [](const Cursor& at, RequestError& e) { e.code = at.integer<std::int32_t>(); }},
    {"what", [](const Cursor& at, RequestError& e) { readText(at, e.what); }},
};

constexpr Member<QueryResult> kQueryMembers[] = {
    {"requested",
     [](const Cursor& at, QueryResult& r) {
       at.eachElement([&](const Cursor& item) { r.requested.push_back(item.text()); });
     },
     true},
    {"instances",
     [](const Cursor& at, QueryResult& r) {
       at.eachElement([&](const Cursor& item) {
         readKnown(item, kInstanceMembers, r.instances.emplace_back());
       });
     },
     true},
    {"error",
     [](const Cursor& at, QueryResult& r) {
       if (!at.isNull()) readKnown(at, kErrorMembers, r.error.emplace());
     }},
};

constexpr Member<PluginIdentity> kPluginMembers[] = {
    {"name", [](const Cursor& at, PluginIdentity& p) { p.name = at.text(); }},
    {"version", [](const Cursor& at, PluginIdentity& p) { p.version = at.text(); }},
    {"interface_version",
     [](const Cursor& at, PluginIdentity& p) { p.interfaceVersion = at.text(); }},
    {"type", [](const Cursor& at, PluginIdentity& p) { p.type = at.integer<int>(); }},
};

void readLastQuery(const Cursor& at, Findings& findings) {
  const std::size_t count = at.array().size();
  if (count == 0) at.fail("has no query");
  at.eachElement([&](const Cursor& query) {
    if (query.index() + 1 == count) readKnown(query, kQueryMembers, findings.result);
  });
}

constexpr Member<Findings> kResultMembers[] = {
    {"machine", readMachine, true},
    {"plugin",
     [](const Cursor& at, Findings& f) { readKnown(at, kPluginMembers, f.context.plugin); }},
    {"queries", readLastQuery, true},
};

// States in place of those that a document does not have. Which class it was that ended the request
// is not told either.
ClassState guessedState(const std::string& name, const QueryResult& result, bool hasInstances) {
  if (hasInstances) return {name, "", State::kPresent, ""};
  if (!result.error) return {name, "", State::kAbsent, "the file does not tell why"};
  return {name, "", State::kFailed, "the request ended in " + errorText(*result.error)};
}

void guessStates(Findings& findings) {
  QueryResult& result = findings.result;
  findings.tellsStates = false;
  std::set<std::string> published;
  for (const auto& instance : result.instances) published.insert(instance.className);
  for (const std::string& name : result.requested) {
    result.states.push_back(guessedState(name, result, published.contains(name)));
  }
}

}  // namespace

Findings inventoryFindings(const Json& document) {
  Findings findings;
  readKnown(Cursor(document), kInventoryMembers, findings);
  if (!findings.result.collectors.empty()) {
    const CollectorState& first = findings.result.collectors.front();
    findings.context.plugin = {first.name, first.version, "", 0};
  }
  return findings;
}

Findings resultFindings(const Json& document) {
  Findings findings;
  readKnown(Cursor(document), kResultMembers, findings);
  guessStates(findings);
  return findings;
}

Findings plainFindings(const Json& document, const std::string& machineName) {
  Findings findings;
  findings.context.machineSource = "file";
  findings.context.machineName = machineName;
  Cursor(document).eachMember([&](const std::string& className, const Cursor& list) {
    findings.result.requested.push_back(className);
    list.eachElement([&](const Cursor& item) {
      findings.result.instances.push_back(plainInstance(item, className));
    });
  });
  guessStates(findings);
  return findings;
}

}  // namespace velhost
