// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <string>

#include "host/collectors/collectorfiles.h"
#include "host/collectors/queryrun.h"
#include "host/collectors/schemafolder.h"
#include "host/commandline/askedmachine.h"
#include "host/commandline/classnames.h"
#include "host/commandline/commands.h"
#include "host/commandline/complaint.h"
#include "host/explanation/machineexplained.h"
#include "host/explanation/schemaexplained.h"
#include "host/files/outputscreen.h"
#include "host/files/standardstreams.h"
#include "host/machine/schemanames.h"
#include "host/progress/progressdisplay.h"

namespace velhost {
namespace {

using NKRXVEL20::host::ClassSchema;
using NKRXVEL20::host::PropertySchema;

struct Topic {
  const ClassSchema* cimClass = nullptr;
  const PropertySchema* property = nullptr;  // null: the whole class
};

// CLASS or CLASS.PROPERTY.
Topic topicOf(const std::string& text) {
  const std::size_t point = text.find('.');
  Topic topic{schemaClass(point == std::string::npos ? text : text.substr(0, point))};
  if (point == std::string::npos) return topic;
  const std::string name = text.substr(point + 1);
  topic.property = NKRXVEL20::host::findProperty(*topic.cimClass, name);
  if (topic.property != nullptr) return topic;
  const std::string className(topic.cimClass->name);
  const std::string meant = propertySuggestion(name, *topic.cimClass);
  throw InputError("\"" + name + "\" is no property of " + className +
                   (meant.empty() ? "; velhost explain " + className + " lists them" : meant));
}

std::string textOf(const Topic& topic, std::size_t width) {
  return topic.property == nullptr ? classExplained(*topic.cimClass, width)
                                   : propertyExplained(*topic.cimClass, *topic.property, width);
}

// With the instances of other collectors that lines of the class name.
Evidence evidenceFor(const ClassSchema& cimClass, const QueryResult& result, const QueryRun& run) {
  Evidence evidence = evidenceOf(result.traffic, NKRXVEL20::host::smbiosTable().get());
  for (const PropertySchema& property : cimClass.properties) {
    for (const Origin& origin : originsOf(property)) {
      const std::string name(origin.className);
      if (!name.empty()) evidence.instances.try_emplace(name, run.instancesOf(name));
    }
  }
  return evidence;
}

QueryResult asked(QueryRun& queryRun, const ClassSchema& cimClass) {
  const ProgressDisplay progress;
  return queryRun.request({std::string(cimClass.name)}, true);
}

bool isInTrouble(const QueryResult& result) {
  return std::ranges::any_of(result.states,
                             [](const ClassState& state) { return isTrouble(state.state); });
}

int explainOnMachine(const ExplainCommand& command, const Topic& topic, std::size_t width) {
  Machine machine = machineOf(command);
  auto collectors = collectorFiles({}, machine, programFolder());
  giveUpRoot(collectors, nullptr);
  QueryRun queryRun(std::move(machine), {.collectors = std::move(collectors),
                                         .keepLogs = false,
                                         .keepTraffic = true,
                                         .onCoreLog = {},
                                         .keepSteps = true});
  const QueryResult result = asked(queryRun, *topic.cimClass);
  const Evidence evidence = evidenceFor(*topic.cimClass, result, queryRun);
  const Inquiry inquiry{*topic.cimClass, queryRun.context(), result, evidence, command.node, width};
  const bool isAnswered = complainOfFailures(result);
  writeStandardOutput(topic.property == nullptr ? classOnMachine(inquiry)
                                                : propertyOnMachine(inquiry, *topic.property));
  if (!isAnswered) return kRefused;
  return isInTrouble(result) ? kUnreadable : kAnswered;
}

}  // namespace

int run(const ExplainCommand& command) {
  useSchema(programFolder());
  const Topic topic = topicOf(command.topic);
  const std::size_t width = standardOutputScreen().width;
  if (command.machine) return explainOnMachine(command, topic, width);
  if (command.node) throw InputError("--node needs a machine; give --machine FILE");
  writeStandardOutput(textOf(topic, width));
  return kAnswered;
}

}  // namespace velhost
