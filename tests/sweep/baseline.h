// SPDX-License-Identifier: Apache-2.0
//
// What the plug-in does on a machine where nothing fails, cut into the instances that it makes.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "host/machine/machinefile.h"
#include "tests/sweep/rules.h"
#include "tests/sweep/trace.h"

namespace sweep {

// The calls that make an instance: the class's look-up to the last setting, and behind it what a
// system BIOS asks of its SP.
struct Block {
  std::size_t begin = 0;
  std::size_t end = 0;                 // the last one
  const InstanceRule* rule = nullptr;  // null: an SP firmware record
};

struct Baseline {
  explicit Baseline(Trace itsTrace);

  const Block* blockAt(std::size_t place) const;
  // The first event from `place` on that is equal; the trace's size when there is none.
  std::size_t find(const Event& event, std::size_t place = 0) const;
  std::size_t findClassName() const;

  Trace trace;
  std::vector<Block> blocks;
  std::size_t firmwareOfSmbiosEnd = 0;  // behind the last event of the search for SPs in SMBIOS

 private:
  void cutBlocks();
  void extendSystemBios(Block& block) const;
  std::vector<int> blockOf_;
};

// The machine of a file and its variants, each asked once.
class Baselines {
 public:
  explicit Baselines(velhost::MachineFile file)
      : machine_(std::make_shared<velhost::MachineFile>(std::move(file))) {}

  const velhost::MachineFile& machine() const { return *machine_; }
  std::shared_ptr<const velhost::MachineFile> sharedMachine() const { return machine_; }
  const Baseline& plain() { return of("", *machine_); }

  // Of a machine that differs in what the key tells.
  const Baseline& of(const std::string& key, const velhost::MachineFile& variant);
  // Of an object that has looked for an IPMI FRU source before.
  const Baseline& afterProbe(bool fruSourceExists);

 private:
  const Baseline& keep(const std::string& key, const std::function<Trace()>& ask);
  std::shared_ptr<const velhost::MachineFile> machine_;
  std::map<std::string, Baseline> baselines_;
};

}  // namespace sweep
