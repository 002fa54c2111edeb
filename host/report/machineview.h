// SPDX-License-Identifier: Apache-2.0
//
// A machine as a person sees it: what stands in which node, what is missing in its place and why.
// Texts are as they come: the page escapes them.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "host/report/partkind.h"
#include "host/results/findings.h"

namespace velhost {

struct Fact {
  std::string name;
  std::string value;
};

// How a place on the picture is filled. States of a class (host/reasons/classstate.h) and of a slot.
enum class Filling {
  kFilled,
  kPartial,  // and something of it could not be told
  kEmpty,    // a slot with nothing in it
  kUntold,   // nothing was told of it: empty or unanswered
  kAbsent,
  kElsewhere,
  kUnused,
  kUnanswered,
  kUnreadable,
  kForbidden,
  kFailed,
};

// "present", "empty", "not told", ...
std::string_view fillingName(Filling filling);

// A file without states does not tell what is absent.
Filling shownFilling(State state, bool tellsStates);

struct Item {
  std::string className;
  std::string title;  // of an element its class in words, of a part its name without the node
  std::string name;   // of an element, where it has one besides
  Filling filling = Filling::kFilled;
  std::string reason;  // empty: there is nothing to say
  std::string version, build, date;
  std::vector<Fact> lines;       // of a part: what says most of it
  std::vector<Fact> properties;  // all that are not blank
};

// A node, or what belongs to none in particular.
struct Box {
  std::optional<std::uint64_t> node;
  std::map<Place, std::vector<Item>> items;
};

struct ClassEnd {
  ClassState state;
  std::size_t instances = 0;
};

struct MachineView {
  std::string name;
  std::string file;  // that tells of it; empty: not known
  bool isLive = false;
  bool tellsStates = true;
  std::string product;      // what it is and its serial number, where that is told
  std::vector<Fact> facts;  // of the machine itself
  std::vector<Box> boxes;   // the nodes by number, then what belongs to none; one where that is all
  std::size_t nodes = 0;    // that are told apart
  std::vector<ClassEnd> classes;
};

// Throws std::logic_error as classEntries does.
MachineView machineView(const Findings& findings, const std::string& file);

}  // namespace velhost
