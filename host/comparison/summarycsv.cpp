// SPDX-License-Identifier: Apache-2.0
#include <iterator>
#include <string_view>

#include "host/comparison/summarytext.h"
#include "host/formats/csvcell.h"

namespace velhost {
namespace {

struct Record {
  std::string model;
  std::string className;
  std::string name;
  std::string version;
  std::string build;
  std::string state;  // of a class that tells no level
  std::string odd;
  std::size_t machines = 0;
  std::string named;
};

std::string line(const std::string (&cells)[9]) {
  std::string text;
  for (const std::string& cell : cells) text += (&cell == cells ? "" : ",") + cell;
  return text + "\r\n";
}

std::string recordLine(const Record& record) {
  return line({csvCell(record.model), csvCell(record.className), csvCell(record.name),
               csvCell(record.version), csvCell(record.build), csvCell(record.state),
               csvCell(record.odd), std::to_string(record.machines), csvCell(record.named)});
}

std::string namesOf(const Holders& holders) {
  std::string names;
  for (const Holder& holder : holders.named) names += (names.empty() ? "" : "; ") + holder.label;
  if (holders.machines > holders.named.size()) names += "; ...";
  return names;
}

}  // namespace

std::string summaryCsv(const LevelSummary& summary) {
  std::string text =
      line({"model", "class", "name", "version", "build", "state", "odd", "machines", "named"});
  for (const ElementLevels& element : summary.elements) {
    for (const Level& level : element.levels) {
      text += recordLine({element.model, element.className, element.name, level.version,
                          level.build, "", level.isOdd ? "yes" : "no", level.holders.machines,
                          namesOf(level.holders)});
    }
  }
  for (const UntoldLevels& untold : summary.untold) {
    text += recordLine({untold.model, untold.className, "", "", "",
                        std::string(stateName(untold.state)), "", untold.holders.machines,
                        namesOf(untold.holders)});
  }
  return text;
}

}  // namespace velhost
