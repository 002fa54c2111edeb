// SPDX-License-Identifier: Apache-2.0
#include "host/report/levelmatrix.h"

#include <algorithm>
#include <map>
#include <tuple>
#include <utility>

#include "host/formats/element.h"
#include "host/report/badge.h"

namespace velhost {
namespace {

constexpr std::size_t kLongestName = 120;

// What all machines have, to be looked up.
class Known {
 public:
  explicit Known(const LevelSummary& summary) {
    for (const ElementLevels& element : summary.elements) {
      elements_[{element.model, element.className, element.name}] = &element;
    }
  }

  const ElementLevels& of(const ElementLevels& own) const {
    return *elements_.at({own.model, own.className, own.name});
  }

  bool isOdd(const ElementLevels& own, const Level& level) const {
    const auto& levels = of(own).levels;
    return std::ranges::any_of(levels, [&](const Level& other) {
      return other.isOdd && other.version == level.version && other.build == level.build;
    });
  }

 private:
  std::map<std::tuple<std::string, std::string, std::string>, const ElementLevels*> elements_;
};

std::string levelText(const Level& level) {
  if (!level.isTold()) return "no level told";
  const bool isSplit = !level.version.empty() && !level.build.empty();
  return level.version + (isSplit ? " (" : "") + level.build + (isSplit ? ")" : "");
}

// "1-4, 7"
std::string rangesText(const std::vector<std::uint64_t>& numbers) {
  std::string text;
  for (std::size_t i = 0; i < numbers.size();) {
    std::size_t last = i;
    while (last + 1 < numbers.size() && numbers[last + 1] == numbers[last] + 1) ++last;
    text += (text.empty() ? "" : ", ") + std::to_string(numbers[i]);
    if (last > i) text += (last > i + 1 ? "-" : ", ") + std::to_string(numbers[last]);
    i = last + 1;
  }
  return text;
}

std::string nodesText(const Level& level) {
  const auto& holders = level.holders.named;
  if (holders.empty() || holders.front().nodes.empty()) return "";
  const auto& nodes = holders.front().nodes;
  return (nodes.size() == 1 ? "node " : "nodes ") + rangesText(nodes);
}

Html oddMark() {
  return R"(<span class="odd"><svg class="sign" aria-hidden="true"><use href="#sign-odd"></use>)"
         R"(</svg>odd</span> )"_html;
}

Html levelLine(const ElementLevels& own, const Level& level, const Known& known, bool isOne) {
  Html line = known.isOdd(own, level) ? oddMark() : Html();
  line += element("bdi", asText(levelText(level), kLongestName));
  const std::string nodes = isOne ? "" : nodesText(level);
  if (!nodes.empty()) line += element(R"(span class="name")", asText(nodes));
  return element(R"(span class="line")", line);
}

Html machineName(const MatrixRow& row) {
  return linkTo(row.anchor, element("bdi", asText(row.name, kLongestName))) + " "_html +
         element(R"(span class="name")", asText(row.file, kLongestName));
}

std::string elementName(const ElementLevels& own) {
  const std::string title = classTitle(own.className);
  return own.name.empty() ? title : title + ", " + own.name;
}

// Cells.

using Elements = std::vector<ElementLevels>;

Html elementLines(const ElementLevels& own, const Known& known, bool isAlone) {
  Html lines = isAlone || own.name.empty()
                   ? Html()
                   : element(R"(span class="name")", asText(own.name, kLongestName));
  for (const Level& level : own.levels) {
    lines += levelLine(own, level, known, own.levels.size() == 1);
  }
  return lines;
}

// Why there is no level.
Html emptyCell(const MatrixRow& row, const std::string& className) {
  const auto end = std::ranges::find(row.classes, className,
                                     [](const ClassEnd& one) { return one.state.className; });
  if (end == row.classes.end()) return element(R"(span class="what")", "not asked for"_html);
  return badge(shownFilling(end->state.state, row.tellsStates));
}

Html levelCell(const Elements& elements, const std::string& className, const Known& known) {
  Html lines;
  const auto isOf = [&](const ElementLevels& own) { return own.className == className; };
  const bool isAlone = std::ranges::count_if(elements, isOf) == 1;
  for (const ElementLevels& own : elements) {
    if (isOf(own)) lines += elementLines(own, known, isAlone);
  }
  return lines;
}

bool isShown(const std::string& className) { return isForLevels(placeOfClass(className)); }

bool hasClass(const Elements& elements, const std::string& className) {
  return std::ranges::find(elements, className, &ElementLevels::className) != elements.end();
}

// What most have; there is one where another is odd.
const Level& usualLevel(const ElementLevels& all) {
  return *std::ranges::find_if(all.levels, &Level::isTold);
}

Html oddLine(const MatrixRow& row, const ElementLevels& own, const Level& level,
             const ElementLevels& all) {
  return element("li", oddMark() + machineName(row) + ": "_html +
                           element("bdi", asText(elementName(own), kLongestName)) + " "_html +
                           element("strong", asText(levelText(level), kLongestName)) +
                           "; most have "_html +
                           element("strong", asText(levelText(usualLevel(all)), kLongestName)));
}

std::string modelName(const std::string& model) {
  return model.empty() ? "Model not told" : "Model " + model;
}

// Columns and rows.

using Columns = std::vector<std::string>;

Columns columnsOf(const std::vector<MatrixRow>& rows) {
  Columns columns;
  for (const MatrixRow& row : rows) {
    for (const ClassEnd& end : row.classes) {
      const std::string& name = end.state.className;
      const bool isNew = std::ranges::find(columns, name) == columns.end();
      if (isNew && isShown(name) && hasClass(row.elements, name)) columns.push_back(name);
    }
  }
  return columns;
}

Html matrixRow(const MatrixRow& row, const Columns& columns, const Known& known) {
  Html cells = element(R"(th scope="row")", machineName(row));
  for (const std::string& name : columns) {
    cells += element("td", hasClass(row.elements, name) ? levelCell(row.elements, name, known)
                                                        : emptyCell(row, name));
  }
  return element("tr", cells) + "\n"_html;
}

// A table body a model, in the order in which they turn up.
Html matrixBodies(const std::vector<MatrixRow>& rows, const Columns& columns, const Known& known) {
  std::vector<std::pair<std::string, Html>> models;
  for (const MatrixRow& row : rows) {
    auto model = std::ranges::find(models, row.model, &std::pair<std::string, Html>::first);
    if (model == models.end()) model = models.insert(models.end(), {row.model, Html()});
    model->second += matrixRow(row, columns, known);
  }
  Html bodies;
  for (const auto& [model, body] : models) {
    // The name stays in sight while the row is scrolled.
    const Html head = R"(<tr class="group"><th scope="rowgroup">)"_html +
                      asText(modelName(model), kLongestName) + "</th>"_html;
    Html blanks;
    for (std::size_t i = 0; i < columns.size(); ++i) blanks += "<td></td>"_html;
    bodies += element("tbody", head + blanks + "</tr>\n"_html + body);
  }
  return bodies;
}

Html matrixTable(const std::vector<MatrixRow>& rows, const Columns& columns, const Known& known) {
  Html heads = R"(<th scope="col">Machine</th>)"_html;
  for (const std::string& name : columns) {
    heads += element(R"(th scope="col")", asText(classTitle(name), kLongestName));
  }
  return element(R"(div class="wide" role="region" tabindex="0" aria-labelledby="levels")",
                 element(R"(table class="matrix")", element("thead", element("tr", heads)) +
                                                        matrixBodies(rows, columns, known)));
}

Html oddLines(const MatrixRow& row, const Known& known) {
  Html lines;
  for (const ElementLevels& own : row.elements) {
    if (!isShown(own.className)) continue;
    for (const Level& level : own.levels) {
      if (known.isOdd(own, level)) lines += oddLine(row, own, level, known.of(own));
    }
  }
  return lines;
}

Html oddList(const std::vector<MatrixRow>& rows, const Known& known) {
  Html lines;
  for (const MatrixRow& row : rows) lines += oddLines(row, known);
  if (lines.isEmpty()) return "<p>No machine has another level than most of its model.</p>"_html;
  return element(R"(ul class="notes")", lines);
}

}  // namespace

void LevelMatrix::add(const Findings& findings, const MachineView& machine, const Anchor& anchor) {
  counter_.add(findings, machine.file);
  LevelCounter own;
  own.add(findings, machine.file);
  rows_.push_back({anchor, machine.name, machine.file, modelOf(findings), own.summary().elements,
                   machine.classes, machine.tellsStates});
}

Html LevelMatrix::section() const {
  const Columns columns = columnsOf(rows_);
  if (columns.empty()) return {};
  const LevelSummary summary = counter_.summary();
  const Known known(summary);
  return element(R"(section aria-labelledby="levels")", R"(<h2 id="levels">Levels</h2>)"_html +
                                                            oddList(rows_, known) +
                                                            matrixTable(rows_, columns, known)) +
         "\n"_html;
}

}  // namespace velhost
