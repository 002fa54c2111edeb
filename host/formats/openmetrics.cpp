// SPDX-License-Identifier: Apache-2.0
#include "host/formats/openmetrics.h"

#include <set>
#include <string_view>
#include <utility>
#include <vector>

#include "host/formats/classentries.h"
#include "host/formats/element.h"
#include "host/text/utf8.h"

namespace velhost {
namespace {

using NKRXVEL20::host::PublishedInstance;

using Labels = std::vector<std::pair<std::string_view, std::string>>;

struct Metric {
  std::string_view name;
  std::string_view unit;  // empty: none
  std::string_view help;
};

// All of them are gauges: the types "info" and "stateset" are unknown to the text format 0.0.4.
constexpr Metric kElementInfo{"krxsg_element_info", "",
                              "An element with a level, as its labels tell; the value is 1."};
constexpr Metric kInstances{"krxsg_instances", "", "Instances that a class has."};
constexpr Metric kClassState{"krxsg_class_state", "",
                             "How asking for a class ended, as its label tells; the value is 1."};
constexpr Metric kSeconds{"krxsg_collection_seconds", "seconds", "How long the collection took."};
constexpr Metric kTimestamp{"krxsg_collection_timestamp_seconds", "seconds",
                            "When the collection ended, in Unix time."};

std::string headOf(const Metric& metric) {
  const std::string name(metric.name);
  std::string text = "# TYPE " + name + " gauge\n";
  if (!metric.unit.empty()) text += "# UNIT " + name + ' ' + std::string(metric.unit) + '\n';
  return text + "# HELP " + name + ' ' + std::string(metric.help) + '\n';
}

// No level is as long, and a time series database keeps each label in memory.
constexpr std::size_t kLongestLabel = 1024;

// A label's value: what a terminal obeys or does not show is spelt out, line feeds included, so that
// of the format's own escapes those of quote and backslash are left.
std::string labelText(const std::string& text) {
  std::string escaped;
  for (const char c : shortened(visible(toUtf8(text)), kLongestLabel)) {
    if (c == '"' || c == '\\') escaped += '\\';
    escaped += c;
  }
  return escaped;
}

std::string sample(const Metric& metric, const Labels& labels, const std::string& value) {
  std::string text(metric.name);
  char before = '{';
  for (const auto& [name, label] : labels) {
    text += std::exchange(before, ',') + std::string(name) + "=\"" + labelText(label) + '"';
  }
  return text + "} " + value + '\n';
}

std::string elementSample(const std::string& machine, const PublishedInstance& instance) {
  const auto node = nodeOf(instance);
  return sample(kElementInfo,
                {{"machine", machine},
                 {"class", instance.className},
                 {"node", node ? std::to_string(*node) : ""},
                 {"name", nameOf(instance)},
                 {"version", versionOf(instance)},
                 {"build", buildOf(instance)}},
                "1");
}

// A metric without samples is left out.
std::string family(const Metric& metric, const std::string& samples) {
  return samples.empty() ? "" : headOf(metric) + samples;
}

std::string elements(const std::string& machine, const std::vector<ClassEntry>& entries) {
  std::string samples;
  std::set<std::string> seen;
  for (const ClassEntry& entry : entries) {
    if (!hasLevel(entry.state->className)) continue;
    for (const auto* const instance : entry.instances) {
      const auto [line, isNew] = seen.insert(elementSample(machine, *instance));
      if (isNew) samples += *line;
    }
  }
  return family(kElementInfo, samples);
}

std::string counts(const std::string& machine, const std::vector<ClassEntry>& entries) {
  std::string samples;
  for (const auto& [state, instances] : entries) {
    samples += sample(kInstances, {{"machine", machine}, {"class", state->className}},
                      std::to_string(instances.size()));
  }
  return family(kInstances, samples);
}

std::string states(const std::string& machine, const std::vector<ClassEntry>& entries) {
  std::string samples;
  for (const ClassEntry& entry : entries) {
    const ClassState& state = *entry.state;
    samples += sample(kClassState,
                      {{"machine", machine},
                       {"class", state.className},
                       {"state", std::string(stateName(state.state))}},
                      "1");
  }
  return family(kClassState, samples);
}

std::string secondsText(std::chrono::milliseconds time) {
  constexpr auto kSecond = std::chrono::milliseconds(std::chrono::seconds(1)).count();
  const std::string fraction = std::to_string(kSecond + time.count() % kSecond);
  return std::to_string(time.count() / kSecond) + '.' + fraction.substr(1);
}

std::string times(const std::string& machine, const CollectionTime& time) {
  const Labels labels{{"machine", machine}};
  return family(kSeconds, sample(kSeconds, labels, secondsText(time.duration))) +
         family(kTimestamp, sample(kTimestamp, labels, secondsText(time.end)));
}

}  // namespace

std::string openMetricsText(const QueryContext& context, const QueryResult& result,
                            const std::optional<CollectionTime>& time) {
  const std::string& machine = context.machineName;
  const std::vector<ClassEntry> entries = classEntries(result);
  std::string text = elements(machine, entries) + counts(machine, entries);
  text += states(machine, entries);
  if (time) text += times(machine, *time);
  return text + "# EOF\n";
}

}  // namespace velhost
