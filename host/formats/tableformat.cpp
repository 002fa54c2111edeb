// SPDX-License-Identifier: Apache-2.0
#include "host/formats/tableformat.h"

#include <algorithm>
#include <map>
#include <optional>
#include <vector>

#include "host/formats/classentries.h"
#include "host/formats/element.h"
#include "host/formats/instancerows.h"
#include "host/text/displaywidth.h"
#include "host/text/textlayout.h"
#include "host/text/utf8.h"
#include "velhost/schema.h"

namespace velhost {
namespace {

using NKRXVEL20::host::PublishedInstance;

constexpr char kMoreToSee[] = "--wide shows more properties, and so does a class that is named.";

Style styleOf(State state) {
  if (isTrouble(state)) return Style::kRed;
  return state == State::kPartial ? Style::kYellow : Style::kPlain;
}

// "KRXSG_Vpd  (16 instances)  Vital product data of a component", without the words where there is
// no room.
std::string classHead(const std::string& name, std::size_t instances, const Screen& screen) {
  const std::string count =
      "  (" + std::to_string(instances) + (instances == 1 ? " instance)" : " instances)");
  const auto* const cimClass = NKRXVEL20::host::findClass(name);
  const std::string words = cimClass == nullptr ? "" : "  " + visible(cimClass->description);
  const bool hasRoom = displayWidth(name + count + words) <= screen.width;
  return heading(name, hasRoom ? count + words : count, screen);
}

// Whether there is any but the first.
bool hasOtherNodes(const QueryResult& result) {
  return std::ranges::any_of(result.instances, [](const PublishedInstance& instance) {
    return nodeOf(instance).value_or(1) != 1;
  });
}

// The table in the making.
class Table {
 public:
  Table(const QueryResult& result, const TableOptions& options)
      : options_(options), screen_(options.screen), showsNodes_(hasOtherNodes(result)) {}

  void add(const ClassEntry& entry) {
    if (entry.instances.empty()) {
      empty_.push_back(entry.state);
    } else {
      addBlock(entry);
    }
  }

  std::string text() {
    std::string text = blocks_;
    if (!empty_.empty()) text += (text.empty() ? "" : "\n") + statesText();
    if (isCut_) text += '\n' + paragraph(kMoreToSee, 0, screen_.width);
    return text;
  }

 private:
  void addBlock(const ClassEntry& entry) {
    InstanceList instances = entry.instances;
    std::ranges::stable_sort(instances, {}, [](const auto* instance) { return nodeOf(*instance); });
    const ClassState& state = *entry.state;
    if (!blocks_.empty()) blocks_ += '\n';
    blocks_ += classHead(state.className, instances.size(), screen_);
    blocks_ += options_.hasAllProperties
                   ? wholeText(allColumns(state.className, instances), instances.size(), screen_)
                   : digest(state.className, instances);
    if (state.reason.empty()) return;
    const std::string name = std::string(stateName(state.state)) + ':';
    blocks_ += remarks({{{{name, styleOf(state.state)}}, reasonText(state)}}, screen_);
  }

  std::string digest(const std::string& className, const InstanceList& instances) {
    const DigestText digest = digestText(digestOf(className, instances), showsNodes_, screen_);
    isCut_ = isCut_ || !digest.isWhole;
    return digest.text;
  }

  // The reason, or which class further up has the same one.
  std::string reasonText(const ClassState& state) {
    const auto [told, isNew] = told_.emplace(state.reason, state.className);
    return isNew || state.reason.empty() ? visible(state.reason) : "as " + told->second;
  }

  // A line for each class without instances. A reason is told once.
  std::string statesText() {
    told_.clear();  // it stands by itself
    std::vector<Remark> lines;
    for (const ClassState* const state : empty_) {
      lines.push_back(
          {{{state->className}, {std::string(stateName(state->state)), styleOf(state->state)}},
           reasonText(*state)});
    }
    return heading("Without instances:", "", screen_) + remarks(lines, screen_);
  }

  TableOptions options_;
  Screen screen_;
  bool showsNodes_ = false;
  bool isCut_ = false;
  std::string blocks_;
  std::vector<const ClassState*> empty_;
  std::map<std::string, std::string> told_;  // reasons, and the class that each was told of
};

std::string headLine(const QueryContext& context) {
  return visible(context.plugin.name) + ' ' + visible(context.plugin.version) + " on " +
         visible(context.machineName) +
         (context.machineSource == "live" ? " (this machine)" : " (machine file)");
}

}  // namespace

std::string tableText(const QueryContext& context, const QueryResult& result,
                      const TableOptions& options) {
  Table table(result, options);
  for (const ClassEntry& entry : classEntries(result)) table.add(entry);
  return paragraph(headLine(context), 0, options.screen.width) + '\n' + table.text();
}

}  // namespace velhost
