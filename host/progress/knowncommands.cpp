// SPDX-License-Identifier: Apache-2.0
#include "host/progress/knowncommands.h"

#include <algorithm>
#include <optional>
#include <tuple>
#include <utility>

#include "host/reasons/origin.h"
#include "host/text/utf8.h"

namespace velhost {
namespace {

using NKRXVEL20::host::ClassSchema;
using NKRXVEL20::host::PropertySchema;
using NKRXVEL20::host::TrafficEntry;
using Kind = TrafficEntry::Kind;

// Of an IPMI request record (platform/include/vel/splibrary.h).
constexpr std::size_t kFunctionOffset = 2;
constexpr std::size_t kCommandOffset = 4;

constexpr std::pair<Source, Kind> kKinds[] = {
    {Source::kDotCommand, Kind::kDotCommand}, {Source::kTamberCommand, Kind::kTamberCommand},
    {Source::kIpmi, Kind::kIpmiCommand},      {Source::kIpmiRepository, Kind::kIpmiCommand},
    {Source::kIpmiFru, Kind::kIpmiCommand},
};

std::optional<Kind> kindOf(Source source) {
  const auto found = std::ranges::find(kKinds, source, &std::pair<Source, Kind>::first);
  if (found == std::end(kKinds)) return std::nullopt;
  return found->second;
}

bool isLower(char letter) { return letter >= 'a' && letter <= 'z'; }

// As it stands in the middle of a sentence: "BMC" stays as it is.
std::string inSentence(std::string_view description) {
  std::string text = visible(description);
  const bool isWord = text.size() > 1 && text[0] >= 'A' && text[0] <= 'Z' && isLower(text[1]);
  if (isWord) text[0] = static_cast<char>(text[0] - 'A' + 'a');
  return text;
}

std::string wordsFor(const Origin& origin, const ClassSchema& cimClass) {
  const auto named = std::ranges::find_if(origin.conditions, [](const Condition& condition) {
    return condition.property == "Name" && condition.kind == Condition::Kind::kHas;
  });
  if (named != origin.conditions.end()) return visible(named->text);
  return inSentence(cimClass.description);
}

auto keyOf(const KnownCommand& command) {
  return std::tie(command.kind, command.command, command.isNumbered);
}

void add(const Origin& origin, const ClassSchema& cimClass, std::vector<KnownCommand>& commands) {
  const auto kind = kindOf(origin.source);
  if (!kind || origin.command.empty()) return;
  KnownCommand command{*kind, origin.command, origin.isNumbered, wordsFor(origin, cimClass), {}};
  auto known = std::ranges::find_if(
      commands, [&](const KnownCommand& other) { return keyOf(other) == keyOf(command); });
  if (known == commands.end()) known = commands.insert(known, std::move(command));
  known->providers.emplace(cimClass.provider);
}

Bytes commandOf(const TrafficEntry& sent) {
  if (sent.kind != Kind::kIpmiCommand) return sent.command;
  if (sent.command.size() <= kCommandOffset) return {};
  return {sent.command[kFunctionOffset], sent.command[kCommandOffset]};
}

bool isOf(const KnownCommand& known, const Bytes& command) {
  const std::size_t number = known.isNumbered ? 1 : 0;
  return command.size() == known.command.size() + number &&
         std::equal(known.command.begin(), known.command.end(), command.begin());
}

}  // namespace

std::vector<KnownCommand> knownCommands(const NKRXVEL20::host::Schema& schema) {
  std::vector<KnownCommand> commands;
  for (const ClassSchema& cimClass : schema.classes) {
    for (const PropertySchema& property : cimClass.properties) {
      for (const Origin& origin : originsOf(property)) add(origin, cimClass, commands);
    }
  }
  return commands;
}

const KnownCommand* findCommand(const std::vector<KnownCommand>& commands,
                                const TrafficEntry& sent) {
  const Bytes command = commandOf(sent);
  const auto found = std::ranges::find_if(commands, [&](const KnownCommand& known) {
    return known.kind == sent.kind && isOf(known, command);
  });
  return found == commands.end() ? nullptr : &*found;
}

unsigned componentNumber(const TrafficEntry& sent) {
  return sent.command.empty() ? 0U : sent.command.back();
}

}  // namespace velhost
