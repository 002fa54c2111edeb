// SPDX-License-Identifier: Apache-2.0
//
// What was seen of the sources while collectors were asked, and what came of it.
#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "host/machine/refusedsource.h"
#include "host/reasons/classstate.h"
#include "host/text/hextext.h"
#include "velhost/cimnamespace.h"
#include "velhost/schema.h"
#include "velhost/smbios.h"
#include "velhost/spdriver.h"

namespace velhost {

// Of the machine from Init on, whoever asked.
struct Observations {
  std::string machineType;
  std::shared_ptr<const NKRXVEL20::host::SmbiosTable> smbios;  // null: cannot be opened
  RefusedSources refused;                                      // of the live machine
  std::optional<NKRXVEL20::host::SilentBmc> silence;
  bool hasDriver = true;      // an SP driver
  bool hasIpmiDevice = true;  // false: the live machine has none
  NKRXVEL20::host::DriverUse driver;
  std::map<Bytes, std::int32_t> components;  // counts that were asked for
  std::vector<NKRXVEL20::host::RefusedCall> refusedCalls;
  std::set<std::string> enumerated;  // classes whose instances were asked for
  // Why a collector that was needed did not answer, by the name that the schema has.
  std::map<std::string, std::string> failedCollectors;
  std::chrono::milliseconds timeLimit{0};  // of the request; 0: none
  // The instances that the framework has of a class.
  std::function<std::vector<NKRXVEL20::host::PublishedInstance>(const std::string&)> instancesOf;
};

// What came of asking for a class.
struct ClassOutcome {
  std::string collector;  // that was asked; empty: none
  std::string failure;    // why it did not answer for this class; empty: it did
  bool isGiven = false;   // the machine's file has the instances
  std::vector<const NKRXVEL20::host::PropertyList*> instances;
};

// What was seen of one of a class's sources.
struct Verdict {
  enum class Kind {
    kNotLooked,  // nobody asked it
    kLooked,     // it answered
    kNone,       // this machine does not have it, or it says that there is none
    kTrouble,    // it should have answered and did not: `state`
  };
  Kind kind = Kind::kNotLooked;
  std::string reason = {};
  State state = State::kAbsent;
  std::string hint = {};  // what else it may mean where there are instances
};

inline Verdict none(std::string reason) { return {Verdict::Kind::kNone, std::move(reason)}; }
inline Verdict looked(std::string reason) { return {Verdict::Kind::kLooked, std::move(reason)}; }
inline Verdict trouble(State state, std::string reason) {
  return {Verdict::Kind::kTrouble, std::move(reason), state};
}

}  // namespace velhost
