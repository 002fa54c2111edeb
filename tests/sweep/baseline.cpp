// SPDX-License-Identifier: Apache-2.0
#include "tests/sweep/baseline.h"

#include <algorithm>

#include "tests/sweep/subject.h"

namespace sweep {

Baseline::Baseline(Trace itsTrace) : trace(std::move(itsTrace)), blockOf_(trace.size(), -1) {
  cutBlocks();
  for (std::size_t i = 0; i < trace.size(); ++i) {
    const Block* const block = blockAt(i);
    const bool isOfBlock = block != nullptr && block->rule != nullptr &&
                           block->rule->aftermath == Aftermath::kFirmwareOfSmbios;
    if (isOfBlock || isBrennaTrace(trace[i])) firmwareOfSmbiosEnd = i + 1;
  }
}

const Block* Baseline::blockAt(std::size_t place) const {
  if (place >= trace.size() || blockOf_[place] < 0) return nullptr;
  return &blocks[static_cast<std::size_t>(blockOf_[place])];
}

std::size_t Baseline::find(const Event& event, std::size_t place) const {
  const auto from = trace.begin() + static_cast<std::ptrdiff_t>(place);
  return static_cast<std::size_t>(std::find(from, trace.end(), event) - trace.begin());
}

std::size_t Baseline::findClassName() const {
  const auto found = std::ranges::find(trace, Kind::kClassName, &Event::kind);
  return static_cast<std::size_t>(found - trace.begin());
}

void Baseline::cutBlocks() {
  for (std::size_t i = 0; i < trace.size(); ++i) {
    const Event& creation = trace[i];
    if (creation.kind != Kind::kCreation || creation.fails) continue;
    Block block{.begin = i - 1, .end = i};
    std::vector<std::string> settings;
    for (std::size_t k = i + 1; k < trace.size(); ++k) {
      if (trace[k].instance != creation.instance) continue;
      block.end = k;
      if (trace[k].kind == Kind::kPropertySet) settings.push_back(trace[k].detail);
    }
    block.rule = ruleOf(creation.what, settings);
    extendSystemBios(block);
    std::fill(blockOf_.begin() + static_cast<std::ptrdiff_t>(block.begin),
              blockOf_.begin() + static_cast<std::ptrdiff_t>(block.end) + 1,
              static_cast<int>(blocks.size()));
    blocks.push_back(block);
  }
}

void Baseline::extendSystemBios(Block& block) const {
  if (block.rule == nullptr || block.rule->aftermath != Aftermath::kSystemBios) return;
  for (std::size_t k = block.end + 1; k < trace.size(); ++k, ++block.end) {
    const Event& event = trace[k];
    const bool asksSP = event.what == "isDotcommand" || event.what == "checkSPComm" ||
                        (event.kind == Kind::kDotCommand && event.what == "04030501");
    if (!asksSP) return;
  }
}

const Baseline& Baselines::keep(const std::string& key, const std::function<Trace()>& ask) {
  const auto known = baselines_.find(key);
  if (known != baselines_.end()) return known->second;
  return baselines_.emplace(key, Baseline(ask())).first->second;
}

const Baseline& Baselines::of(const std::string& key, const velhost::MachineFile& variant) {
  return keep(key, [&] { return Subject().ask(variant); });
}

const Baseline& Baselines::afterProbe(bool fruSourceExists) {
  return keep(fruSourceExists ? "with a FRU source" : "without a FRU source", [&] {
    Subject subject;
    subject.knowFruSource(fruSourceExists);
    return subject.ask(*machine_);
  });
}

}  // namespace sweep
