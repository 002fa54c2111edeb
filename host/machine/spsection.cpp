// SPDX-License-Identifier: Apache-2.0
#include "host/machine/spsection.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>

#include "host/machine/bytesfield.h"
#include "host/machine/machinenames.h"

namespace velhost {
namespace {

using NKRXVEL20::host::SimulatedReply;
using NKRXVEL20::host::SimulatedSP;
using NKRXVEL20::host::SPKind;

constexpr std::size_t kComponentKeySize = 4;
constexpr std::size_t kTamberCommandSize = 4;

// What the entries of the three command lists have in common, and what tells them apart.
struct CommandReading {
  int sp = 0;
  Bytes command;
  std::optional<Bytes> data;
  std::vector<SimulatedReply> replies;
  std::optional<std::int32_t> length;
};

SimulatedReply readReply(const Cursor& at) { return {false, readBytes(at), {}}; }

SimulatedReply readReplyInTurn(const Cursor& at) {
  if (at.isText() && at.text() == "fail") return {true, {}, {}};
  return readReply(at);
}

void readSp(const Cursor& at, CommandReading& entry) { entry.sp = at.integer<int>(); }
void readCommand(const Cursor& at, CommandReading& entry) { entry.command = readBytes(at); }
void readData(const Cursor& at, CommandReading& entry) { entry.data = readBytes(at); }
void readLength(const Cursor& at, CommandReading& entry) {
  entry.length = at.integer<std::int32_t>();
}

void readTamberCommand(const Cursor& at, CommandReading& entry) {
  entry.command = readBytes(at);
  if (entry.command.size() != kTamberCommandSize) at.fail("must be four bytes");
}

void readOneReply(const Cursor& at, CommandReading& entry) { entry.replies = {readReply(at)}; }

void readReplies(const Cursor& at, CommandReading& entry) {
  at.eachElement([&](const Cursor& item) { entry.replies.push_back(readReplyInTurn(item)); });
  if (entry.replies.empty()) at.fail("has no reply");
}

void readFail(const Cursor& at, CommandReading& entry) {
  if (!at.boolean()) at.fail("can only be true; leave it out for a command that is answered");
  entry.replies = {{true, {}, {}}};
}

constexpr Member<CommandReading> kDotCommandMembers[] = {
    {"sp", readSp},          {"command", readCommand, true}, {"data", readData},
    {"reply", readOneReply}, {"replies", readReplies},       {"fail", readFail},
    {"length", readLength},
};

constexpr Member<CommandReading> kTamberMembers[] = {
    {"command", readTamberCommand, true},
    {"data", readData},
    {"reply", readOneReply},
    {"replies", readReplies},
    {"fail", readFail},
    {"length", readLength},
};

constexpr Member<CommandReading> kIpmiMembers[] = {
    {"request", readCommand, true}, {"reply", readOneReply},
    {"replies", readReplies},       {"fail", readFail},
    {"length", readLength},
};

// The one answer that a command has: `reply`, `replies` or `fail`.
void checkAnswer(const Cursor& at) {
  std::string_view first;
  for (const std::string_view key : {"reply", "replies", "fail"}) {
    if (!at.has(key)) continue;
    if (!first.empty()) at.failAt(key, "cannot stand beside \"" + std::string(first) + '"');
    first = key;
  }
  if (first.empty()) at.fail(R"(the command has no answer: "reply", "replies" or "fail")");
}

template <std::size_t N>
CommandReading readEntry(const Cursor& at, const Member<CommandReading> (&members)[N]) {
  CommandReading entry;
  readMembers(at, members, entry);
  checkAnswer(at);
  for (SimulatedReply& reply : entry.replies) reply.length = entry.length;
  return entry;
}

void readDotCommands(const Cursor& at, SimulatedSP& sp) {
  at.eachElement([&](const Cursor& item) {
    CommandReading entry = readEntry(item, kDotCommandMembers);
    sp.dotCommands.push_back(
        {entry.sp, std::move(entry.command), std::move(entry.data), std::move(entry.replies)});
  });
}

void readTamberCommands(const Cursor& at, SimulatedSP& sp) {
  at.eachElement([&](const Cursor& item) {
    CommandReading entry = readEntry(item, kTamberMembers);
    sp.tamberCommands.push_back(
        {std::move(entry.command), std::move(entry.data), std::move(entry.replies)});
  });
}

void readIpmiCommands(const Cursor& at, SimulatedSP& sp) {
  at.eachElement([&](const Cursor& item) {
    CommandReading entry = readEntry(item, kIpmiMembers);
    sp.ipmiCommands.push_back({std::move(entry.command), std::move(entry.replies)});
  });
}

void readComponents(const Cursor& at, SimulatedSP& sp) {
  at.eachMember([&](const std::string& key, const Cursor& value) {
    Bytes command = readHex(value, key);
    if (command.size() != kComponentKeySize) value.fail("the key must be four bytes");
    const auto count = value.integer(std::numeric_limits<std::int32_t>::min(), kMostComponents);
    const auto [entry, isNew] = sp.components.emplace(std::move(command), count);
    if (!isNew) value.fail("the same component is given above, spaced otherwise");
  });
}

template <bool SimulatedSP::*Flag>
void readFlag(const Cursor& at, SimulatedSP& sp) {
  sp.*Flag = at.boolean();
}

constexpr Member<SimulatedSP> kMembers[] = {
    {"kind", [](const Cursor& at, SimulatedSP& sp) { sp.kind = choice(at, kSPKinds); }},
    {"answers", readFlag<&SimulatedSP::answers>},
    {"count",
     [](const Cursor& at, SimulatedSP& sp) {
       sp.count = at.integer(std::numeric_limits<std::int32_t>::min(), kMostNodes);
     }},
    {"bmc_nodes", [](const Cursor& at,
                     SimulatedSP& sp) { sp.bmcNodes = at.integer<std::int32_t>(0, kMostNodes); }},
    {"bmc", readFlag<&SimulatedSP::bmc>},
    {"ipmi_drivers", readFlag<&SimulatedSP::ipmiDrivers>},
    {"integrated_bmc", readFlag<&SimulatedSP::integratedBmc>},
    {"twg_stop", readFlag<&SimulatedSP::twgStop>},
    {"tvm_library", readFlag<&SimulatedSP::tvmLibrary>},
    {"command_list", readFlag<&SimulatedSP::commandList>},
    {"components", readComponents},
    {"latency_us",
     [](const Cursor& at, SimulatedSP& sp) {
       sp.latency = std::chrono::microseconds(at.integer<std::uint32_t>(0, kLongestLatency));
     }},
    {"dot_commands", readDotCommands},
    {"tamber_commands", readTamberCommands},
    {"ipmi_commands", readIpmiCommands},
};

// Each SP is asked for as many of each component as its count says.
void checkComponents(const Cursor& at, const SimulatedSP& sp) {
  std::int64_t ofOneSp = 0;
  for (const auto& [command, count] : sp.components) ofOneSp += std::max(count, 0);
  if (ofOneSp * std::max(sp.count, 0) <= kMostComponentsInSum) return;
  at.failAt("components", "its counts, for each of the " + std::to_string(sp.count) +
                              " SPs, come to more than " + std::to_string(kMostComponentsInSum));
}

}  // namespace

SimulatedSP readSpSection(const Cursor& at) {
  SimulatedSP sp;
  readMembers(at, kMembers, sp);
  if (!at.has("count")) sp.count = sp.kind == SPKind::kNone ? 0 : 1;
  checkComponents(at, sp);
  return sp;
}

}  // namespace velhost
