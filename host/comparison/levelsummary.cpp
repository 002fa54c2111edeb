// SPDX-License-Identifier: Apache-2.0
#include "host/comparison/levelsummary.h"

#include <algorithm>
#include <set>
#include <string_view>

#include "host/comparison/instancelabel.h"
#include "host/formats/element.h"
#include "host/reasons/fixedvalue.h"
#include "host/text/utf8.h"
#include "velhost/schema.h"

namespace velhost {
namespace {

using NKRXVEL20::host::PublishedInstance;

constexpr std::size_t kLongestText = 256;  // of what is kept

struct ModelProperty {
  std::string_view className;  // empty: any
  std::string_view property;
};

// The first that says something tells the model.
constexpr ModelProperty kModelProperties[] = {
    {"KRXSG_ComputerSystem", "ProductName"},
    {"", "MachineTypeModel"},
};

// Of a long text both ends, which is all that is kept of it.
std::string endsOf(std::string_view text) {
  constexpr std::size_t kEnd = 4 * kLongestText;
  if (text.size() <= 2 * kEnd) return std::string(text);
  return std::string(text.substr(0, kEnd)).append(text.substr(text.size() - kEnd));
}

// One line of bounded length, without blanks around it.
std::string keptText(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
  text = text.substr(0, text.find_last_not_of(' ') + 1);
  return shortened(visible(endsOf(text)), kLongestText);
}

std::string textIn(const PublishedInstance& instance, std::string_view name) {
  const auto found =
      std::ranges::find_if(instance.properties, [name](const auto& p) { return p.first == name; });
  return found == instance.properties.end() ? "" : keptText(found->second.ToString());
}

struct FoundLevel {
  std::string className;
  std::string name;
  std::string version;
  std::string build;

  // NOLINTNEXTLINE(modernize-use-nullptr): the check finds a 0 in what the compiler makes of it
  friend auto operator<=>(const FoundLevel&, const FoundLevel&) = default;
};

struct FoundHolders {
  std::size_t instances = 0;
  std::set<std::uint64_t> nodes;
};

// Somebody else's class that the schema lacks has one where it says so.
bool mayHaveLevel(const PublishedInstance& instance) {
  return NKRXVEL20::host::findClass(instance.className) == nullptr ? !versionOf(instance).empty()
                                                                   : hasLevel(instance.className);
}

// A level that stands in for one that could not be read, as the reason of its class says.
bool isFixedValue(const QueryResult& result, const PublishedInstance& instance) {
  const auto state = std::ranges::find(result.states, instance.className, &ClassState::className);
  return state != result.states.end() && state->state == State::kPartial &&
         state->reason.starts_with(versionOf(instance) + kIsFixedValue);
}

std::map<FoundLevel, FoundHolders> levelsOf(const Findings& findings) {
  std::map<FoundLevel, FoundHolders> levels;
  for (const PublishedInstance& instance : findings.result.instances) {
    if (!mayHaveLevel(instance) || isFixedValue(findings.result, instance)) continue;
    FoundHolders& holders =
        levels[{keptText(instance.className), keptText(withoutNode(nameOf(instance))),
                keptText(versionOf(instance)), keptText(buildOf(instance))}];
    ++holders.instances;
    if (const auto node = nodeOf(instance)) holders.nodes.insert(*node);
  }
  return levels;
}

std::map<std::string, State> untoldIn(const QueryResult& result) {
  std::map<std::string, State> untold;
  for (const ClassState& state : result.states) {
    if (isTrouble(state.state) && hasLevel(state.className)) untold[state.className] = state.state;
  }
  for (const PublishedInstance& instance : result.instances) {
    if (isFixedValue(result, instance)) untold[instance.className] = State::kPartial;
  }
  return untold;
}

void count(Holders& holders, std::size_t instances, Holder holder) {
  ++holders.machines;
  holders.instances += instances;
  if (holders.named.size() < kMostHolders) holders.named.push_back(std::move(holder));
}

// Those that most machines have first; the others are odd.
std::vector<Level> sorted(std::vector<Level> levels) {
  std::size_t most = 0;
  for (const Level& level : levels) {
    if (level.isTold()) most = std::max(most, level.holders.machines);
  }
  for (Level& level : levels) level.isOdd = level.isTold() && level.holders.machines < most;
  std::ranges::stable_sort(levels, std::ranges::greater(),
                           [](const Level& level) { return level.holders.machines; });
  return levels;
}

}  // namespace

std::string modelOf(const Findings& findings) {
  for (const ModelProperty& row : kModelProperties) {
    for (const PublishedInstance& instance : findings.result.instances) {
      if (!row.className.empty() && instance.className != row.className) continue;
      if (std::string text = textIn(instance, row.property); !text.empty()) return text;
    }
  }
  return "";
}

void LevelCounter::add(const Findings& findings, const std::string& file) {
  const std::string model = modelOf(findings);
  const Holder holder{keptText(findings.context.machineName), file};
  ++machines_;
  ++names_[holder.machine];
  for (const auto& [level, found] : levelsOf(findings)) {
    Holder with = holder;
    with.nodes.assign(found.nodes.begin(), found.nodes.end());
    Levels& levels = elements_[{model, level.className, level.name}];
    count(levels[{level.version, level.build}], found.instances, std::move(with));
  }
  for (const auto& [className, state] : untoldIn(findings.result)) {
    count(untold_[{model, className, state}], 0, holder);
  }
}

Holders LevelCounter::labelled(Holders holders) const {
  for (Holder& holder : holders.named) {
    const auto found = names_.find(holder.machine);
    const bool isAlone = found != names_.end() && found->second == 1;
    const std::string file = '(' + labelText(holder.file) + ')';
    holder.label = holder.machine.empty() ? file : holder.machine;
    if (!holder.machine.empty() && !isAlone) holder.label += ' ' + file;
  }
  return holders;
}

LevelSummary LevelCounter::summary() const {
  LevelSummary summary{machines_, {}, {}};
  for (const auto& [key, found] : elements_) {
    const auto& [model, className, name] = key;
    std::vector<Level> levels;
    for (const auto& [level, holders] : found) {
      levels.push_back({level.first, level.second, labelled(holders)});
    }
    summary.elements.push_back({model, className, name, sorted(std::move(levels))});
  }
  for (const auto& [key, holders] : untold_) {
    const auto& [model, className, state] = key;
    summary.untold.push_back({model, className, state, labelled(holders)});
  }
  return summary;
}

}  // namespace velhost
