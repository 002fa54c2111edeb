// SPDX-License-Identifier: Apache-2.0
#include "host/machine/machinewriter.h"

#include <algorithm>

#include "host/machine/machinenames.h"
#include "host/machine/smbiosparts.h"
#include "host/text/cimjson.h"
#include "host/text/utf8.h"

namespace velhost {
namespace {

using Json = nlohmann::ordered_json;
using NKRXVEL20::host::DotCommandEntry;
using NKRXVEL20::host::Fault;
using NKRXVEL20::host::IpmiCommandEntry;
using NKRXVEL20::host::SimulatedReply;
using NKRXVEL20::host::SimulatedSP;
using NKRXVEL20::host::SmbiosStructure;
using NKRXVEL20::host::SmbiosTable;
using NKRXVEL20::host::TamberCommandEntry;

struct FlagRow {
  const char* key;
  bool SimulatedSP::*flag;
};

constexpr FlagRow kFlags[] = {
    {"answers", &SimulatedSP::answers},          {"bmc", &SimulatedSP::bmc},
    {"ipmi_drivers", &SimulatedSP::ipmiDrivers}, {"integrated_bmc", &SimulatedSP::integratedBmc},
    {"twg_stop", &SimulatedSP::twgStop},         {"tvm_library", &SimulatedSP::tvmLibrary},
    {"command_list", &SimulatedSP::commandList},
};

template <class Value>
void putUnless(const Value& usual, Json& json, const char* key, const Value& value) {
  if (value != usual) json[key] = value;
}

void putList(Json& json, const char* key, Json list) {
  if (!list.empty()) json[key] = std::move(list);
}

template <class Items, class Format>
Json list(const Items& items, Format format) {
  Json json = Json::array();
  for (const auto& item : items) json.push_back(format(item));
  return json;
}

// Parts are easier on the eye than bytes, where they give the very same bytes.
std::optional<SmbiosParts> writableParts(const Bytes& structure) {
  auto parts = takeApart(structure);
  if (parts && !std::ranges::all_of(parts->strings, [](const auto& s) { return isUtf8(s); })) {
    return std::nullopt;
  }
  return parts;
}

Json structureJson(const SmbiosStructure& structure) {
  Json json;
  if (const auto parts = writableParts(structure.bytes)) {
    json["type"] = parts->type;
    json["handle"] = parts->handle;
    putUnless(std::string(), json, "data", hexPairs(parts->data));
    putList(json, "strings", parts->strings);
  } else {
    json["raw"] = hexPairs(structure.bytes);
  }
  putUnless(SmbiosStructure().status, json, "status", structure.status);
  return json;
}

Json smbiosJson(const SmbiosTable& table) {
  Json json = Json::object();
  putUnless(SmbiosTable().loadStatus, json, "load_status", table.loadStatus);
  putList(json, "structures", list(table.structures, structureJson));
  putUnless(SmbiosTable().endStatus, json, "end_status", table.endStatus);
  return json;
}

Json replyJson(const SimulatedReply& reply) {
  return reply.fails ? Json("fail") : Json(hexPairs(reply.bytes));
}

// An entry has one reported length for all its replies.
void putAnswer(Json& json, const std::vector<SimulatedReply>& replies) {
  if (replies.size() > 1) {
    json["replies"] = list(replies, replyJson);
  } else if (replies.front().fails) {
    json["fail"] = true;
  } else {
    json["reply"] = replyJson(replies.front());
  }
  if (replies.front().length) json["length"] = *replies.front().length;
}

Json dotCommandJson(const DotCommandEntry& entry) {
  Json json;
  putUnless(DotCommandEntry().sp, json, "sp", entry.sp);
  json["command"] = hexPairs(entry.command);
  if (entry.data) json["data"] = hexPairs(*entry.data);
  putAnswer(json, entry.replies);
  return json;
}

Json tamberCommandJson(const TamberCommandEntry& entry) {
  Json json{{"command", hexPairs(entry.command)}};
  if (entry.data) json["data"] = hexPairs(*entry.data);
  putAnswer(json, entry.replies);
  return json;
}

Json ipmiCommandJson(const IpmiCommandEntry& entry) {
  Json json{{"request", hexPairs(entry.request)}};
  putAnswer(json, entry.replies);
  return json;
}

Json spJson(const SimulatedSP& sp) {
  const SimulatedSP usual;
  Json json{{"kind", nameIn(kSPKinds, sp.kind)}, {"count", sp.count}};
  putUnless(usual.bmcNodes, json, "bmc_nodes", sp.bmcNodes);
  for (const FlagRow& row : kFlags) putUnless(usual.*row.flag, json, row.key, sp.*row.flag);
  Json components = Json::object();
  for (const auto& [command, count] : sp.components) components[hexPairs(command)] = count;
  putList(json, "components", std::move(components));
  putUnless(usual.latency.count(), json, "latency_us", sp.latency.count());
  putList(json, "dot_commands", list(sp.dotCommands, dotCommandJson));
  putList(json, "tamber_commands", list(sp.tamberCommands, tamberCommandJson));
  putList(json, "ipmi_commands", list(sp.ipmiCommands, ipmiCommandJson));
  return json;
}

Json instancesJson(const MachineFile& machine) {
  Json json = Json::object();
  for (const std::string& className : machine.givenClasses) json[className] = Json::array();
  for (const Companion& companion : machine.instances) {
    Json properties = Json::object();
    for (const auto& [name, value] : companion.properties) properties[name] = plainValue(value);
    json[companion.className].push_back(std::move(properties));
  }
  return json;
}

Json faultJson(const Fault& fault) {
  Json json{{"operation", nameIn(kOperations, fault.operation)}};
  putUnless(Fault().className, json, "class", fault.className);
  putUnless(Fault().propertyName, json, "property", fault.propertyName);
  if (fault.nth) json["nth"] = *fault.nth;
  if (fault.throwsRuntimeError) json["throw"] = nameIn(kThrownAsRuntimeError, true);
  return json;
}

}  // namespace

std::string machineFileText(const MachineFile& machine) {
  Json json{{"format", kMachineFormat}, {"name", machine.name}};
  putUnless(std::string(), json, "description", machine.description);
  if (machine.machineType) json["machine_type"] = *machine.machineType;
  if (machine.smbios) json["smbios"] = smbiosJson(*machine.smbios);
  putUnless(spJson({}), json, "sp", spJson(machine.sp));
  putList(json, "instances", instancesJson(machine));
  putList(json, "collectors", machine.collectors);
  putList(json, "missing_classes", machine.missingClasses);
  putList(json, "faults", list(machine.faults, faultJson));
  return documentText(json);
}

}  // namespace velhost
