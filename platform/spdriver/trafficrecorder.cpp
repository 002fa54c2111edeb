// SPDX-License-Identifier: Apache-2.0
#include "trafficrecorder.h"

#include <algorithm>
#include <span>

#include "ipmirecord.h"
#include "observed.h"
#include "timelimit.h"

namespace NKRXVEL20::host {

namespace {

constexpr int kComponentKeySize = 4;
constexpr std::size_t kTamberReplySize = 255;
constexpr std::int64_t kTamberHeaderSize = 3;
constexpr std::ptrdiff_t kLongestTallyReply = kTallyReplySize;

// A library only reports a length, and that may be wrong on purpose. So what the caller's buffer
// got is as much as the length says and at least all that is new in it.
Bytes bytesGot(std::span<const unsigned char> buffer, std::size_t newBytes, std::int64_t reported) {
  const auto told = std::clamp<std::int64_t>(reported, 0, std::ssize(buffer));
  const auto got = buffer.first(std::max(static_cast<std::size_t>(told), newBytes));
  return {got.begin(), got.end()};
}

// How far the buffer differs from what it was. Most of it does not, and is passed over in large steps.
std::size_t changedBytes(std::span<const unsigned char> buffer,
                         std::span<const unsigned char> before) {
  constexpr std::size_t kStep = 64;
  std::size_t end = buffer.size();
  const auto isSame = [&](std::size_t count) {
    return std::ranges::equal(buffer.first(end).last(count), before.first(end).last(count));
  };
  while (end >= kStep && isSame(kStep)) end -= kStep;
  while (end > 0 && isSame(1)) --end;
  return end;
}

// The library clears an IPMI buffer behind the reply.
std::size_t bytesUpToZeros(std::span<const unsigned char> buffer) {
  const auto last =
      std::find_if(buffer.rbegin(), buffer.rend(), [](unsigned char byte) { return byte != 0; });
  return static_cast<std::size_t>(buffer.rend() - last);
}

void count(const TrafficEntry& entry, bool isCutOff, CommandTally& tally) {
  ++tally.sent;
  tally.isCutOff = isCutOff;
  tally.refused += entry.answered ? 0 : 1;
  tally.answered = entry.answered;
  if (!entry.answered) return;
  const auto end = entry.reply.begin() + std::min(std::ssize(entry.reply), kLongestTallyReply);
  tally.reply.assign(entry.reply.begin(), end);
}

}  // namespace

// Null for one more than are counted.
CommandTally* TrafficRecorder::tallyOf(const TrafficEntry& entry) {
  auto& commands = use_.commands;
  const auto found = tallies_.find({entry.kind, entry.sp, entry.command});
  if (found != tallies_.end()) return &commands[found->second];
  if (commands.size() == kMostTallies) return nullptr;
  tallies_.emplace(std::tuple(entry.kind, entry.sp, entry.command), commands.size());
  return &commands.emplace_back(CommandTally{entry.kind, entry.sp, entry.command});
}

void TrafficRecorder::forgetUse() {
  use_ = {};
  tallies_.clear();
}

bool TrafficRecorder::record(TrafficEntry entry) {
  const bool answered = entry.answered;
  const bool isCutOff = !answered && isTimeOver();
  use_.isCutOff = use_.isCutOff || isCutOff;
  if (CommandTally* const tally = tallyOf(entry)) count(entry, isCutOff, *tally);
  if (keepsTraffic_) traffic_.push_back(std::move(entry));
  return answered;
}

// The time is over: nothing is sent, so there is no traffic either.
bool TrafficRecorder::refuse(const TrafficEntry& entry) {
  use_.isCutOff = true;
  if (CommandTally* const tally = tallyOf(entry)) {
    ++tally->unsent;
    tally->isCutOff = true;
    tally->answered = false;
  }
  return false;
}

// `send` fills in what came of it.
template <class Send>
bool TrafficRecorder::pass(TrafficEntry entry, Send send) {
  if (isTimeOver()) return refuse(entry);
  TrafficObserver* const observer = trafficObserver();
  if (observer != nullptr) observer->sends(entry);
  send(entry);
  if (observer != nullptr) observer->got(entry);
  return record(std::move(entry));
}

int TrafficRecorder::discoverSPs() {
  const int count = library_->discoverSPs();
  if (TrafficObserver* const observer = trafficObserver()) observer->found(count);
  return count;
}

// A BMC that could not be asked any more is none that is not there.
bool TrafficRecorder::IsBMCMachine() {
  const bool has = library_->IsBMCMachine();
  if (has || !isTimeOver()) {
    use_.hasBmc = has;
  } else if (!use_.hasBmc) {
    use_.isCutOff = true;
  }
  return has;
}

void TrafficRecorder::printMatrix(const unsigned char* bytes, int length) {
  if (TrafficObserver* const observer = trafficObserver()) observer->prints();
  library_->printMatrix(bytes, length);
}

int TrafficRecorder::getComponentdotCmdList(unsigned char* command, int commandLength,
                                            unsigned char* list0, unsigned char* list1,
                                            unsigned char* list2) {
  const int count = library_->getComponentdotCmdList(command, commandLength, list0, list1, list2);
  if (commandLength < kComponentKeySize) return count;
  const Bytes component(command, command + kComponentKeySize);
  componentsAsked_[component] = count;
  if (TrafficObserver* const observer = trafficObserver()) observer->counted(component, count);
  return count;
}

bool TrafficRecorder::sendDotCommand(dotCmd* command, unsigned char* reply, int* replyLength,
                                     int spIndex, int bufferSize) {
  TrafficEntry entry;
  entry.kind = TrafficEntry::Kind::kDotCommand;
  entry.sp = spIndex;
  entry.type = command->type;
  entry.command = command->command;
  entry.data = command->data;
  const std::span<const unsigned char> buffer(reply,
                                              static_cast<std::size_t>(std::max(bufferSize, 0)));
  return pass(std::move(entry), [&](TrafficEntry& sent) {
    const Bytes before(buffer.begin(), buffer.end());
    sent.answered = library_->sendDotCommand(command, reply, replyLength, spIndex, bufferSize);
    if (!sent.answered) return;
    sent.length = *replyLength;
    sent.reply = bytesGot(buffer, changedBytes(buffer, before), sent.length);
  });
}

bool TrafficRecorder::sendTamberCommand(TamberCmd* command, int* replyLength,
                                        unsigned char* reply) {
  TrafficEntry entry;
  entry.kind = TrafficEntry::Kind::kTamberCommand;
  entry.command = command->command;
  entry.data = command->data;
  entry.flag0 = command->flag0;
  entry.flag1 = command->flag1;
  const std::span<const unsigned char> buffer(reply, kTamberReplySize);
  return pass(std::move(entry), [&](TrafficEntry& sent) {
    const Bytes before(buffer.begin(), buffer.end());
    sent.answered = library_->sendTamberCommand(command, replyLength, reply);
    if (!sent.answered) return;
    sent.length = *replyLength;
    sent.reply = bytesGot(buffer, changedBytes(buffer, before), kTamberHeaderSize + sent.length);
  });
}

bool TrafficRecorder::sendIPMICommand(unsigned char* bytes, int* length, int capacity, bool wait) {
  TrafficEntry entry;
  entry.kind = TrafficEntry::Kind::kIpmiCommand;
  const std::span<const unsigned char> buffer = ipmiBuffer(bytes, capacity);
  const std::span<const unsigned char> request = ipmiRequest(buffer);
  entry.command.assign(request.begin(), request.end());
  bool isSent = false;
  const bool answered = pass(std::move(entry), [&](TrafficEntry& sent) {
    isSent = true;
    sent.answered = library_->sendIPMICommand(bytes, length, capacity, wait);
    if (!sent.answered) return;
    sent.length = *length;
    sent.reply = bytesGot(buffer, bytesUpToZeros(buffer), sent.length);
  });
  if (!isSent) *length = 0;  // as the library has it when it fails
  return answered;
}

}  // namespace NKRXVEL20::host
