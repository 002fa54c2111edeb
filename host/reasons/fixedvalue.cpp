// SPDX-License-Identifier: Apache-2.0
#include "host/reasons/fixedvalue.h"

#include <algorithm>

#include "host/reasons/commandsource.h"
#include "host/reasons/words.h"

namespace velhost {
namespace {

using NKRXVEL20::host::CommandTally;
using NKRXVEL20::host::PropertyList;

bool isCommand(const Origin& origin) {
  return origin.source == Source::kDotCommand || origin.source == Source::kTamberCommand ||
         origin.source == Source::kIpmi;
}

bool isBlank(std::string_view text) {
  return text.find_first_not_of(' ') == std::string_view::npos;
}

// Rules skip blanks and zeros, so the bytes of a value may have some between them.
bool holdsText(const NKRXVEL20::host::Bytes& reply, std::string_view text) {
  std::string seen;
  for (const unsigned char byte : reply) {
    if (byte > ' ' && byte <= '~') seen += static_cast<char>(byte);
  }
  return seen.find(text) != std::string::npos;
}

const CommandTally* tallyOf(const Origin& origin, const Observations& seen) {
  const auto found = std::ranges::find_if(
      seen.driver.commands, [&](const CommandTally& tally) { return isOf(origin, tally); });
  return found == seen.driver.commands.end() ? nullptr : &*found;
}

std::string whyNotRead(const Origin& origin, const CommandTally* tally, const Observations& seen) {
  const std::string command = "command " + hexPairs(origin.command);
  if (tally == nullptr) return command + " was not sent";
  if (!isGood(*tally)) return refusalText(*tally, seen);
  return "the answer to " + command + " has none";
}

bool isPublished(const Origin& constant, std::string_view property, const ClassOutcome& outcome) {
  return std::ranges::any_of(outcome.instances, [&](const PropertyList* instance) {
    return valueText(*instance, property) == constant.text && holdsFor(constant, *instance);
  });
}

// What reads the value that the constant stands in for; null: nothing does.
const Origin* readingOrigin(const Origin& constant, const std::vector<Origin>& origins) {
  const auto found = std::ranges::find_if(origins, [&](const Origin& origin) {
    return isCommand(origin) && origin.conditions == constant.conditions;
  });
  return found == origins.end() ? nullptr : &*found;
}

}  // namespace

std::optional<std::string> fixedValueReason(const NKRXVEL20::host::ClassSchema& cimClass,
                                            const ClassOutcome& outcome, const Observations& seen) {
  for (const auto& property : cimClass.properties) {
    const auto origins = originsOf(property);
    for (const Origin& constant : origins) {
      if (constant.source != Source::kConstant || isBlank(constant.text)) continue;
      const Origin* const reading = readingOrigin(constant, origins);
      if (reading == nullptr || !isPublished(constant, property.name, outcome)) continue;
      const CommandTally* const tally = tallyOf(*reading, seen);
      if (tally != nullptr && isGood(*tally) && holdsText(tally->reply, constant.text)) continue;
      return std::string(constant.text) + kIsFixedValue + whyNotRead(*reading, tally, seen);
    }
  }
  return std::nullopt;
}

}  // namespace velhost
