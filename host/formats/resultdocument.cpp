// SPDX-License-Identifier: Apache-2.0
#include "host/formats/resultdocument.h"

#include <utility>

#include "host/text/cimjson.h"
#include "host/text/hextext.h"
#include "host/text/utf8.h"
#include "velhost/schema.h"

namespace velhost {
namespace {

using Json = nlohmann::ordered_json;
using NKRXVEL20::ECIMType;
using NKRXVEL20::TCIMValue;
using NKRXVEL20::host::LogEntry;
using NKRXVEL20::host::PublishedInstance;
using NKRXVEL20::host::TrafficEntry;

Json typedValue(const TCIMValue& value) {
  Json typed{{"type", NKRXVEL20::host::typeName(value.GetType())}, {"value", plainValue(value)}};
  if (value.GetType() != ECIMType::kString) return typed;
  const std::string text = value.ToString();
  // What the replacement characters hide is told beside them.
  if (!isUtf8(text)) typed["bytes"] = hexOfBytes(Bytes(text.begin(), text.end()));
  return typed;
}

Json instanceJson(const PublishedInstance& instance) {
  Json properties = Json::object();
  for (const auto& [name, value] : instance.properties) properties[name] = typedValue(value);
  return {{"class", instance.className}, {"properties", std::move(properties)}};
}

Json errorJson(const std::optional<RequestError>& error) {
  if (!error) return nullptr;
  Json json{{"exception", error->exception}};
  if (error->code) json["code"] = *error->code;
  json["what"] = toUtf8(error->what);
  return json;
}

Json logJson(const LogEntry& entry) {
  return {{"severity", entry.severity}, {"text", toUtf8(entry.text)}};
}

Json trafficJson(const TrafficEntry& entry) {
  Json json;
  switch (entry.kind) {
    case TrafficEntry::Kind::kDotCommand:
      json = {{"operation", "dot_command"},
              {"sp", entry.sp},
              {"type", entry.type},
              {"command", hexOfBytes(entry.command)},
              {"data", hexOfBytes(entry.data)}};
      break;
    case TrafficEntry::Kind::kTamberCommand:
      json = {{"operation", "tamber_command"},
              {"command", hexOfBytes(entry.command)},
              {"data", hexOfBytes(entry.data)},
              {"flags", {entry.flag0, entry.flag1}}};
      break;
    case TrafficEntry::Kind::kIpmiCommand:
      json = {{"operation", "ipmi_command"}, {"request", hexOfBytes(entry.command)}};
      break;
  }
  json["answered"] = entry.answered;
  json["length"] = entry.answered ? entry.length : 0;
  return json;
}

Json trafficWithReply(const TrafficEntry& entry) {
  Json json = trafficJson(entry);
  json["reply"] = hexOfBytes(entry.reply);
  return json;
}

template <class Entry>
Json list(const std::vector<Entry>& entries, Json (*format)(const Entry&)) {
  Json json = Json::array();
  for (const Entry& entry : entries) json.push_back(format(entry));
  return json;
}

}  // namespace

ResultDocument::ResultDocument(const QueryContext& context, Replies replies)
    : document_{{"format", "vel-result/1"},
                {"machine",
                 {{"source", context.machineSource}, {"name", toUtf8(context.machineName)}}},
                {"plugin",
                 {{"name", toUtf8(context.plugin.name)},
                  {"version", toUtf8(context.plugin.version)},
                  {"interface_version", toUtf8(context.plugin.interfaceVersion)},
                  {"type", context.plugin.type}}},
                {"queries", Json::array()}},
      replies_(replies) {}

void ResultDocument::add(const QueryResult& result) {
  Json query{{"requested", result.requested}};
  query["instances"] = list(result.instances, instanceJson);
  query["error"] = errorJson(result.error);
  query["core_log"] = list(result.coreLog, logJson);
  query["failure_log"] = list(result.failureLog, logJson);
  query["traffic"] =
      list(result.traffic, replies_ == Replies::kShown ? trafficWithReply : trafficJson);
  document_["queries"].push_back(std::move(query));
}

std::string ResultDocument::text() const { return documentText(document_); }

}  // namespace velhost
