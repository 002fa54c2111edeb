// SPDX-License-Identifier: Apache-2.0
//
// How far a collection is, worked out from the commands that pass.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "host/progress/knowncommands.h"
#include "velhost/commandtime.h"

namespace velhost {

class CollectionProgress {
 public:
  explicit CollectionProgress(std::vector<KnownCommand> known) : known_(std::move(known)) {}

  // Another collection begins. `isLast`: none comes behind it, so the time that it takes is all.
  void begin(bool isLast);

  void found(int spCount) { spCount_ = spCount; }
  void counted(const Bytes& component, std::int32_t count) { counts_[component] = count; }
  void sends(const NKRXVEL20::host::TrafficEntry& command, NKRXVEL20::host::TimePoint now);
  void got(const NKRXVEL20::host::TrafficEntry& command, NKRXVEL20::host::TimePoint now);

  // "SP 3 of 8, DIMM 12: 221 of 592 commands, about 12 s left": what of it is known and has room.
  // Empty before the first command.
  std::string text(std::size_t columns) const;

 private:
  // How many dot commands the SPs are asked in all, and how many of them are done; nullopt: that
  // cannot be known (yet).
  struct Plan {
    std::size_t done = 0;
    std::size_t all = 0;
  };
  std::optional<Plan> plan() const;
  std::optional<std::size_t> commandsOfAnSP() const;
  bool isAsked(const KnownCommand& known) const;
  std::string where() const;
  std::string component() const;
  std::string count(const std::optional<Plan>& plan) const;
  std::string timeLeft(const std::optional<Plan>& plan) const;

  std::vector<KnownCommand> known_;
  bool isLast_ = true;
  int spCount_ = 0;
  std::map<Bytes, std::int32_t> counts_;
  std::set<std::string> providers_;  // whose commands were sent
  std::optional<NKRXVEL20::host::TrafficEntry> current_;
  std::size_t sent_ = 0;                     // that came to an end
  std::set<std::pair<int, Bytes>> planned_;  // dot commands that came to an end, each once
  NKRXVEL20::host::TimePoint begin_;
  NKRXVEL20::host::TimePoint last_;
};

// "about 12 s left", "about 3 min left"
std::string timeLeftText(std::chrono::milliseconds left);

}  // namespace velhost
