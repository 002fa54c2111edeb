// SPDX-License-Identifier: Apache-2.0
#include "host/reasons/commandsource.h"

#include <algorithm>
#include <map>
#include <tuple>
#include <utility>

#include "host/reasons/words.h"

namespace velhost {
namespace {

using NKRXVEL20::host::CommandTally;
using Kind = NKRXVEL20::host::TrafficEntry::Kind;
using Tallies = std::vector<const CommandTally*>;

// Of the request record, and the completion code of the reply's (platform/include/vel/splibrary.h).
constexpr std::size_t kFunctionOffset = 2;
constexpr std::size_t kCommandOffset = 4;
constexpr std::size_t kDataOffset = 9;
constexpr std::size_t kCompletionOffset = 4;

constexpr std::pair<Source, Kind> kKinds[] = {
    {Source::kDotCommand, Kind::kDotCommand}, {Source::kTamberCommand, Kind::kTamberCommand},
    {Source::kIpmi, Kind::kIpmiCommand},      {Source::kIpmiRepository, Kind::kIpmiCommand},
    {Source::kIpmiFru, Kind::kIpmiCommand},
};

bool beginsWith(std::span<const unsigned char> bytes, std::span<const unsigned char> begin) {
  return bytes.size() >= begin.size() && std::ranges::equal(bytes.first(begin.size()), begin);
}

// Network function and command of a request record; nothing of one that is shorter.
Bytes ipmiCommand(const Bytes& record) {
  if (record.size() < kDataOffset) return {};
  return {record[kFunctionOffset], record[kCommandOffset]};
}

bool isIpmiOf(const Origin& origin, const Bytes& record) {
  if (ipmiCommand(record) != origin.command || origin.command.empty()) return false;
  return !origin.data || beginsWith(std::span(record).subspan(kDataOffset), *origin.data);
}

bool isCommandOf(const Origin& origin, const Bytes& command) {
  if (!origin.isNumbered) return command == origin.command;
  return command.size() == origin.command.size() + 1 && beginsWith(command, origin.command);
}

Kind kindOf(Source source) {
  return std::ranges::find(kKinds, source, &std::pair<Source, Kind>::first)->second;
}

std::string commandText(const CommandTally& tally) {
  return "command " +
         hexPairs(tally.kind == Kind::kIpmiCommand ? ipmiCommand(tally.command) : tally.command);
}

std::string timeIsOver(const Observations& seen) {
  return "the time of " + secondsText(seen.timeLimit) + " was over";
}

Verdict notAsked(const Observations& seen) {
  return trouble(State::kUnanswered, "not asked: " + timeIsOver(seen));
}

// Of a tally that was cut off: it was under way then, or not sent any more.
std::string cutOffText(const CommandTally& tally, const Observations& seen) {
  const bool isUnsent = tally.unsent > 0;
  return commandText(tally) + (isUnsent ? " was not sent: " : " was not answered when ") +
         timeIsOver(seen);
}

// Whether the time was over before all of them were answered.
Verdict cutOffVerdict(const Tallies& sent, const Observations& seen) {
  const auto cut = std::ranges::find_if(sent, &CommandTally::isCutOff);
  if (cut == sent.end()) return {};
  if ((*cut)->unsent > 0) return notAsked(seen);
  return trouble(State::kUnanswered, cutOffText(**cut, seen));
}

Tallies talliesOf(std::span<const Origin> origins, const Observations& seen) {
  Tallies tallies;
  for (const CommandTally& tally : seen.driver.commands) {
    const bool isAny =
        std::ranges::any_of(origins, [&](const Origin& origin) { return isOf(origin, tally); });
    if (isAny) tallies.push_back(&tally);
  }
  return tallies;
}

bool isOneOfSeveralSPs(const Observations& seen) {
  return std::ranges::any_of(seen.driver.commands, [](const auto& tally) { return tally.sp > 0; });
}

// " by SP 2", where it was not the only one.
std::string whoText(const CommandTally& tally, const Observations& seen) {
  if (tally.kind != Kind::kDotCommand || !isOneOfSeveralSPs(seen)) return "";
  return " by SP " + std::to_string(tally.sp + 1);
}

bool isNoDotCommandAnswered(const Observations& seen) {
  return std::ranges::none_of(seen.driver.commands, [](const CommandTally& tally) {
    return tally.kind == Kind::kDotCommand && tally.sent > tally.refused;
  });
}

std::string severalText(const Tallies& refused, std::size_t sent, const Observations& seen) {
  const std::string first = refusalText(*refused.front(), seen);
  const std::string count = std::to_string(refused.size()) + " of " + std::to_string(sent);
  if (refused.size() == 1) return count + " commands was not answered: " + first;
  return count + " commands were not answered; the first: " + first;
}

std::string refusedText(const Tallies& refused, std::size_t sent, const Observations& seen) {
  const bool isDot = refused.front()->kind == Kind::kDotCommand;
  const std::string head =
      isDot && isNoDotCommandAnswered(seen) ? "no SP answers dot commands: " : "";
  return head +
         (sent == 1 ? refusalText(*refused.front(), seen) : severalText(refused, sent, seen));
}

using TalliesBySP = std::map<std::pair<Bytes, int>, const CommandTally*>;

TalliesBySP bySP(const Observations& seen) {
  TalliesBySP tallies;
  for (const CommandTally& tally : seen.driver.commands) {
    if (tally.kind == Kind::kDotCommand) tallies[{tally.command, tally.sp}] = &tally;
  }
  return tallies;
}

// Whoever asks an SP after the other ends with it at a refusal: those that were asked the command had
// answered the one that this one refused, and before.
bool isPassedOver(const CommandTally& refused, const Tallies& asked, const TalliesBySP& tallies) {
  return std::ranges::all_of(asked, [&](const CommandTally* tally) {
    const auto before = tallies.find({refused.command, tally->sp});
    return tally->sp != refused.sp && before != tallies.end() && isGood(*before->second) &&
           before->second < tally;
  });
}

Tallies refusedDotCommands(const Observations& seen) {
  Tallies refused;
  for (const CommandTally& tally : seen.driver.commands) {
    const bool isDot = tally.kind == Kind::kDotCommand && !tally.command.empty();
    if (isDot && !isGood(tally)) refused.push_back(&tally);
  }
  return refused;
}

// The command that an SP refused before it would have been asked this one; null: none was.
const CommandTally* refusedBefore(const Tallies& asked, const Tallies& refused,
                                  const TalliesBySP& tallies) {
  const auto found = std::ranges::find_if(
      refused, [&](const CommandTally* tally) { return isPassedOver(*tally, asked, tallies); });
  return found == refused.end() ? nullptr : *found;
}

// SPs that were not asked a command as others were.
Verdict passedOverVerdict(std::span<const Origin> origins, const Observations& seen) {
  const Tallies allRefused = refusedDotCommands(seen);
  if (allRefused.empty()) return {};
  const TalliesBySP tallies = bySP(seen);
  for (const Origin& origin : origins) {
    if (origin.isNumbered) continue;
    const Tallies asked = talliesOf(std::span(&origin, 1), seen);
    const CommandTally* const refused =
        asked.empty() ? nullptr : refusedBefore(asked, allRefused, tallies);
    if (refused == nullptr) continue;
    if (refused->isCutOff) return notAsked(seen);
    return trouble(State::kUnanswered, "SP " + std::to_string(refused->sp + 1) + " was not asked " +
                                           hexPairs(origin.command) + ", as " +
                                           refusalText(*refused, seen));
  }
  return {};
}

// IPMI 2.0, table 5-2: a reservation that was cancelled, and lengths that are not to be had. Whoever
// gets such a code asks again, in other words.
constexpr unsigned char kAskAgain[] = {0xC5, 0xC7, 0xC8, 0xCA};

bool isAskedAgain(const CommandTally& tally, const Tallies& sent) {
  if (tally.kind != Kind::kIpmiCommand || !tally.answered) return false;
  if (std::ranges::find(kAskAgain, tally.reply[kCompletionOffset]) == std::end(kAskAgain)) {
    return false;
  }
  return std::ranges::any_of(sent, [&](const CommandTally* other) {
    return isGood(*other) && ipmiCommand(other->command) == ipmiCommand(tally.command);
  });
}

// What became of commands that were sent.
Verdict sentVerdict(const Tallies& sent, std::span<const Origin> origins,
                    const Observations& seen) {
  Verdict cutOff = cutOffVerdict(sent, seen);
  if (cutOff.kind == Verdict::Kind::kTrouble) return cutOff;
  Tallies refused;
  std::ranges::copy_if(sent, std::back_inserter(refused), [&](const CommandTally* tally) {
    return !isGood(*tally) && !isAskedAgain(*tally, sent);
  });
  if (refused.empty()) {
    Verdict passedOver = passedOverVerdict(origins, seen);
    if (passedOver.kind == Verdict::Kind::kTrouble) return passedOver;
    return looked("what was asked of it was answered, and named none");
  }
  Verdict verdict = trouble(State::kUnanswered, refusedText(refused, sent.size(), seen));
  if (std::ranges::any_of(origins, &Origin::isNumbered)) verdict.hint = "an empty slot looks so";
  return verdict;
}

// The driver's counts of the components that the commands read: asked for, and none of them there.
bool areNoComponents(std::span<const Origin> origins, const Observations& seen) {
  bool isAsked = false;
  for (const auto& [command, count] : seen.components) {
    const bool isOne = std::ranges::any_of(origins, [&asked = command](const Origin& origin) {
      return beginsWith(origin.command, asked);
    });
    if (isOne && count > 0) return false;
    isAsked = isAsked || isOne;
  }
  return isAsked;
}

// What a BMC refuses of one network function says nothing of the others; its silence does.
bool isOneWay(const Origin& origin, const CommandTally& tally) {
  if (kindOf(origin.source) != tally.kind || tally.command.empty()) return false;
  if (tally.kind != Kind::kIpmiCommand || !tally.answered) return true;
  const Bytes command = ipmiCommand(tally.command);
  return !command.empty() && !origin.command.empty() && command.front() == origin.command.front();
}

// A command that was refused on the way to the line's.
const CommandTally* firstRefused(const Origin& origin, const Observations& seen) {
  const auto found = std::ranges::find_if(seen.driver.commands, [&](const CommandTally& tally) {
    return isOneWay(origin, tally) && !isGood(tally);
  });
  return found == seen.driver.commands.end() ? nullptr : &*found;
}

// Commands that were not sent, to a service processor that was asked others.
Verdict unsentVerdict(std::span<const Origin> origins, const Observations& seen) {
  const CommandTally* const refused = firstRefused(origins.front(), seen);
  if (refused == nullptr) return {};
  if (refused->isCutOff) return notAsked(seen);
  return trouble(State::kUnanswered, "command " + hexPairs(origins.front().command) +
                                         " was not sent after " + refusalText(*refused, seen));
}

Verdict dotVerdict(std::span<const Origin> origins, const Observations& seen) {
  if (seen.driver.isDotCommand == false) return none("no SP speaks dot commands");
  if (seen.driver.answers == false) {
    return trouble(State::kUnanswered,
                   "the service processor does not answer dot commands; check it and its driver");
  }
  if (areNoComponents(origins, seen)) return none("the service processor lists no such component");
  if (seen.driver.hasCommandList == false) {
    return trouble(State::kUnanswered,
                   "the service processor did not tell which dot commands it has");
  }
  return unsentVerdict(origins, seen);
}

Verdict tamberVerdict(std::span<const Origin> origins, const Observations& seen) {
  if (seen.driver.isTamber == false) return none("no SP is of the Tamber family");
  if (seen.driver.hasTvmLibrary == true) {
    return trouble(State::kUnreadable,
                   "the Torvik Management Processor library keeps the service processor to itself");
  }
  return unsentVerdict(origins, seen);
}

Verdict ipmiVerdict(std::span<const Origin> origins, const Observations& seen) {
  if (seen.driver.hasIpmiDrivers == false) return none("the system has no IPMI driver");
  Verdict unsent = unsentVerdict(origins, seen);  // a silent BMC looks as if there were none
  if (unsent.kind == Verdict::Kind::kTrouble) return unsent;
  if (seen.driver.hasBmc == false) return none("this machine has no BMC");
  return seen.driver.isCutOff ? notAsked(seen) : unsent;
}

// What is known of the live machine's BMC whatever was sent; nothing is known where it answers.
Verdict liveBmcVerdict(const Observations& seen) {
  if (seen.silence) return trouble(State::kUnanswered, silenceLine(*seen.silence));
  if (seen.refused.ipmi) {
    return trouble(State::kForbidden, seen.refused.ipmi->what + "; run velhost as root");
  }
  if (seen.hasIpmiDevice) return {};
  return none("there is no IPMI device; where there is a BMC, load the kernel's ipmi_devintf");
}

std::string ipmiRefusalText(const CommandTally& tally) {
  const std::string command = commandText(tally);
  if (!tally.answered) return "the BMC did not answer " + command;
  const auto code = std::span(tally.reply).subspan(kCompletionOffset, 1);
  return "the BMC refused " + command + " with completion code " + hexPairs(code);
}

// Many lines name one command, for one property each.
std::vector<Origin> differentCommands(std::span<const Origin> origins) {
  std::vector<Origin> different;
  for (const Origin& origin : origins) {
    const bool isKnown = std::ranges::any_of(different, [&](const Origin& other) {
      return std::tie(origin.command, origin.isNumbered, origin.data) ==
             std::tie(other.command, other.isNumbered, other.data);
    });
    if (!isKnown) different.push_back(origin);
  }
  return different;
}

}  // namespace

bool isOf(const Origin& origin, const CommandTally& tally) {
  const auto kind = std::ranges::find(kKinds, origin.source, &std::pair<Source, Kind>::first);
  if (kind == std::end(kKinds) || kind->second != tally.kind) return false;
  return tally.kind == Kind::kIpmiCommand ? isIpmiOf(origin, tally.command)
                                          : isCommandOf(origin, tally.command);
}

bool isGood(const CommandTally& tally) {
  const bool hasCode = tally.kind == Kind::kIpmiCommand && tally.reply.size() > kCompletionOffset;
  return tally.answered && (!hasCode || tally.reply[kCompletionOffset] == 0);
}

Verdict commandVerdict(std::span<const Origin> lines, const Observations& seen) {
  const std::vector<Origin> origins = differentCommands(lines);
  if (!seen.hasDriver) return trouble(State::kUnreadable, "the SP driver could not be loaded");
  const Source source = origins.front().source;
  if (kindOf(source) == Kind::kIpmiCommand) {
    Verdict live = liveBmcVerdict(seen);
    if (live.kind != Verdict::Kind::kNotLooked) return live;
  }
  const Tallies sent = talliesOf(origins, seen);
  if (!sent.empty()) return sentVerdict(sent, origins, seen);
  if (source == Source::kDotCommand) return dotVerdict(origins, seen);
  return source == Source::kTamberCommand ? tamberVerdict(origins, seen)
                                          : ipmiVerdict(origins, seen);
}

std::vector<std::string> refusedCommands(std::span<const Origin> origins,
                                         const Observations& seen) {
  std::vector<std::string> lines;
  for (const CommandTally* const tally : talliesOf(origins, seen)) {
    if (!isGood(*tally)) lines.push_back(refusalText(*tally, seen));
  }
  return lines;
}

std::string refusalText(const CommandTally& tally, const Observations& seen) {
  if (tally.isCutOff) return cutOffText(tally, seen);
  if (tally.kind == Kind::kIpmiCommand) return ipmiRefusalText(tally);
  return commandText(tally) + " was refused " + timesText(tally.refused) + whoText(tally, seen);
}

}  // namespace velhost
