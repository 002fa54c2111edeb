// SPDX-License-Identifier: Apache-2.0
#include "host/formats/whytext.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "host/text/textlayout.h"

namespace velhost {
namespace {

struct Block {
  std::vector<std::string> classes;
  const std::vector<std::string>* steps;
};

bool isIn(const std::vector<std::string>& names, const std::string& name) {
  return std::ranges::find(names, name) != names.end();
}

// In the order of the classes.
std::vector<Block> blocksOf(const std::vector<ClassState>& states) {
  std::vector<Block> blocks;
  for (const ClassState& state : states) {
    if (state.steps.empty()) continue;
    auto block =
        std::ranges::find_if(blocks, [&](const Block& b) { return *b.steps == state.steps; });
    if (block == blocks.end()) block = blocks.insert(block, {{}, &state.steps});
    if (!isIn(block->classes, state.className)) block->classes.push_back(state.className);
  }
  return blocks;
}

}  // namespace

std::string whyText(const QueryResult& result, const Screen& screen) {
  const auto blocks = blocksOf(result.states);
  if (blocks.empty()) return paragraph("No step failed.", 0, screen.width);
  std::string text = heading("Steps that failed:", "", screen);
  for (const Block& block : blocks) {
    text += listLines("  ", block.classes, screen.width);
    for (const std::string& step : *block.steps) text += paragraph(step, 4, screen.width);
  }
  return text;
}

}  // namespace velhost
