// SPDX-License-Identifier: Apache-2.0
//
// Which levels of firmware many machines have, by model and element, and which of them few have: pure,
// and of no particular class. Machines come one after the other; what is kept grows with the levels that
// there are and, by little more than its name, with each machine.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <tuple>
#include <unordered_map>
#include <utility>
#include <vector>

#include "host/results/findings.h"

namespace velhost {

// Of those that have a level, the first so many are named.
inline constexpr std::size_t kMostHolders = 100;

// A machine that has something.
struct Holder {
  std::string machine;
  std::string file;
  std::vector<std::uint64_t> nodes = {};  // whose element it is; none where it is of no node
  std::string label = {};  // the machine, with its file where several machines have that name
};

struct Holders {
  std::size_t machines = 0;
  std::size_t instances = 0;
  std::vector<Holder> named = {};  // the first kMostHolders
};

struct Level {
  std::string version;
  std::string build;  // both empty: the machines do not tell the level
  Holders holders;
  bool isOdd = false;  // other machines have another one, and are more

  bool isTold() const { return !(version.empty() && build.empty()); }
};

// An element of one model.
struct ElementLevels {
  std::string model;  // empty: the machines do not tell it
  std::string className;
  std::string name;                // without the node; may be empty
  std::vector<Level> levels = {};  // those that most machines have first
};

// A class whose levels could not be read: it ended in trouble, or has a fixed value in place of one
// (kPartial).
struct UntoldLevels {
  std::string model;
  std::string className;
  State state = State::kFailed;
  Holders holders = {};
};

struct LevelSummary {
  std::size_t machines = 0;
  std::vector<ElementLevels> elements;  // by model, class and name
  std::vector<UntoldLevels> untold;     // by model, class and state
};

// The model that the machine says it is: what it is sold as, or its machine type and model. Empty when
// it says neither.
std::string modelOf(const Findings& findings);

class LevelCounter {
 public:
  // `file` tells machines of the same name apart.
  void add(const Findings& findings, const std::string& file);

  LevelSummary summary() const;

 private:
  Holders labelled(Holders holders) const;

  using LevelKey = std::pair<std::string, std::string>;                  // version, build
  using ElementKey = std::tuple<std::string, std::string, std::string>;  // model, class, name
  using UntoldKey = std::tuple<std::string, std::string, State>;         // model, class
  using Levels = std::map<LevelKey, Holders>;

  std::size_t machines_ = 0;
  std::map<ElementKey, Levels> elements_;
  std::map<UntoldKey, Holders> untold_;
  std::unordered_map<std::string, std::size_t> names_;  // how many machines have each
};

}  // namespace velhost
