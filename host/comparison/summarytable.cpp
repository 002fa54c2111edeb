// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>

#include "host/comparison/summarytext.h"
#include "host/text/wrappedtext.h"

namespace velhost {
namespace {

// Machines that a line names: those with an odd level, and those of the levels beside it.
constexpr std::size_t kOddNamed = 20;
constexpr std::size_t kOthersNamed = 3;

std::string counted(std::size_t count, const std::string& what) {
  return std::to_string(count) + ' ' + what + (count == 1 ? "" : "s");
}

std::string levelText(const Level& level) {
  if (!level.isTold()) return "no level told";
  if (level.version.empty()) return "build " + level.build;
  return level.build.empty() ? level.version : level.version + " (build " + level.build + ')';
}

// Of a machine with nodes those that have it.
std::string holderText(const Holder& holder) {
  if (holder.nodes.empty()) return holder.label;
  std::string nodes;
  for (const auto node : holder.nodes) {
    nodes += (nodes.empty() ? "" : ", ") + std::to_string(node);
  }
  return holder.label + (holder.nodes.size() == 1 ? " (node " : " (nodes ") + nodes + ')';
}

std::string namesText(const Holders& holders, std::size_t most) {
  std::string names;
  const std::size_t named = std::min(most, holders.named.size());
  for (std::size_t i = 0; i < named; ++i) {
    names += (names.empty() ? "" : "; ") + holderText(holders.named[i]);
  }
  if (holders.machines > named) {
    names += " and " + std::to_string(holders.machines - named) + " more";
  }
  return names;
}

std::string elementText(const ElementLevels& element) {
  return element.name.empty() ? element.className : element.className + ", " + element.name;
}

class SummaryText {
 public:
  explicit SummaryText(std::size_t width) : width_(width) {}

  void element(const ElementLevels& element) {
    model(element.model);
    const std::string name = "  " + elementText(element) + ": ";
    if (element.levels.size() == 1) {
      const Level& only = element.levels.front();
      return line(
          "    ",
          name.substr(2) + levelText(only) + ", " + counted(only.holders.machines, "machine"),
          "  ");
    }
    line("    ", elementText(element), "  ");
    for (const Level& level : element.levels) several(level);
  }

  void untold(const UntoldLevels& untold) {
    model(untold.model);
    line("    ",
         untold.className + ": " + std::string(stateName(untold.state)) + ", " +
             counted(untold.holders.machines, "machine") + ": " +
             namesText(untold.holders, kOddNamed),
         "  ");
  }

  void end(const std::string& text) { text_ += (text_.empty() ? "" : "\n") + text + '\n'; }

  std::string take() { return std::move(text_); }

 private:
  void model(const std::string& name) {
    if (model_ == name) return;
    if (!text_.empty()) text_ += '\n';
    text_ += wrappedText("", name.empty() ? "Model not told" : name, width_);
    model_ = name;
  }

  void several(const Level& level) {
    const std::string lead = level.isOdd ? "    odd  " : "         ";
    line(lead,
         levelText(level) + ", " + counted(level.holders.machines, "machine") + ": " +
             namesText(level.holders, level.isOdd ? kOddNamed : kOthersNamed),
         lead);
  }

  // What goes on in the next line stands below the lead, the first line behind `first`.
  void line(std::string_view lead, std::string_view text, std::string_view first) {
    std::string lines = wrappedText(std::string(lead.size(), ' '), text, width_);
    text_ += std::string(first) + lines.substr(lead.size());
  }

  std::size_t width_;
  std::optional<std::string> model_;
  std::string text_;
};

std::string totalText(const LevelSummary& summary, std::size_t unread) {
  std::size_t odd = 0;
  for (const ElementLevels& element : summary.elements) {
    odd += static_cast<std::size_t>(std::ranges::count_if(element.levels, &Level::isOdd));
  }
  std::string text = counted(summary.machines, "machine") + ", " + counted(odd, "odd level");
  if (unread > 0) text += "; " + counted(unread, "file") + " could not be read";
  return text + '.';
}

}  // namespace

std::string summaryTable(const LevelSummary& summary, std::size_t unread, std::size_t width) {
  SummaryText text(width);
  auto untold = summary.untold.begin();
  const auto tellUntold = [&](const std::string* upTo) {
    for (; untold != summary.untold.end() && (upTo == nullptr || untold->model < *upTo); ++untold) {
      text.untold(*untold);
    }
  };
  for (const ElementLevels& element : summary.elements) {
    tellUntold(&element.model);
    text.element(element);
  }
  tellUntold(nullptr);
  text.end(totalText(summary, unread));
  return text.take();
}

}  // namespace velhost
