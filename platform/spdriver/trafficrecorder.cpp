// SPDX-License-Identifier: Apache-2.0
#include "trafficrecorder.h"

#include <algorithm>
#include <span>

#include "ipmirecord.h"

namespace NKRXVEL20::host {

namespace {

constexpr int kComponentKeySize = 4;
constexpr std::size_t kTamberReplySize = 255;
constexpr std::int64_t kTamberHeaderSize = 3;

// A library only reports a length, and that may be wrong on purpose. So what the caller's buffer
// got is as much as the length says and at least all that is new in it.
Bytes bytesGot(std::span<const unsigned char> buffer, std::size_t newBytes, std::int64_t reported) {
  const auto told = std::clamp<std::int64_t>(reported, 0, std::ssize(buffer));
  const auto got = buffer.first(std::max(static_cast<std::size_t>(told), newBytes));
  return {got.begin(), got.end()};
}

// How far the buffer differs from what it was.
std::size_t changedBytes(std::span<const unsigned char> buffer, const Bytes& before) {
  const auto differ =
      std::mismatch(buffer.rbegin(), buffer.rend(), before.rbegin(), before.rend()).first;
  return static_cast<std::size_t>(buffer.rend() - differ);
}

// The library clears an IPMI buffer behind the reply.
std::size_t bytesUpToZeros(std::span<const unsigned char> buffer) {
  const auto last =
      std::find_if(buffer.rbegin(), buffer.rend(), [](unsigned char byte) { return byte != 0; });
  return static_cast<std::size_t>(buffer.rend() - last);
}

}  // namespace

int TrafficRecorder::getComponentdotCmdList(unsigned char* command, int commandLength,
                                            unsigned char* list0, unsigned char* list1,
                                            unsigned char* list2) {
  const int count = library_->getComponentdotCmdList(command, commandLength, list0, list1, list2);
  if (commandLength >= kComponentKeySize) {
    componentsAsked_[Bytes(command, command + kComponentKeySize)] = count;
  }
  return count;
}

bool TrafficRecorder::sendDotCommand(dotCmd* command, unsigned char* reply, int* replyLength,
                                     int spIndex, int bufferSize) {
  return keepsTraffic_ ? recordDotCommand(command, reply, replyLength, spIndex, bufferSize)
                       : library_->sendDotCommand(command, reply, replyLength, spIndex, bufferSize);
}

bool TrafficRecorder::sendTamberCommand(TamberCmd* command, int* replyLength,
                                        unsigned char* reply) {
  return keepsTraffic_ ? recordTamberCommand(command, replyLength, reply)
                       : library_->sendTamberCommand(command, replyLength, reply);
}

bool TrafficRecorder::sendIPMICommand(unsigned char* bytes, int* length, int capacity, bool wait) {
  return keepsTraffic_ ? recordIPMICommand(bytes, length, capacity, wait)
                       : library_->sendIPMICommand(bytes, length, capacity, wait);
}

bool TrafficRecorder::recordDotCommand(dotCmd* command, unsigned char* reply, int* replyLength,
                                       int spIndex, int bufferSize) {
  TrafficEntry entry;
  entry.kind = TrafficEntry::Kind::kDotCommand;
  entry.sp = spIndex;
  entry.type = command->type;
  entry.command = command->command;
  entry.data = command->data;
  const std::span<const unsigned char> buffer(reply,
                                              static_cast<std::size_t>(std::max(bufferSize, 0)));
  const Bytes before(buffer.begin(), buffer.end());
  entry.answered = library_->sendDotCommand(command, reply, replyLength, spIndex, bufferSize);
  if (entry.answered) {
    entry.length = *replyLength;
    entry.reply = bytesGot(buffer, changedBytes(buffer, before), entry.length);
  }
  traffic_.push_back(entry);
  return entry.answered;
}

bool TrafficRecorder::recordTamberCommand(TamberCmd* command, int* replyLength,
                                          unsigned char* reply) {
  TrafficEntry entry;
  entry.kind = TrafficEntry::Kind::kTamberCommand;
  entry.command = command->command;
  entry.data = command->data;
  entry.flag0 = command->flag0;
  entry.flag1 = command->flag1;
  const std::span<const unsigned char> buffer(reply, kTamberReplySize);
  const Bytes before(buffer.begin(), buffer.end());
  entry.answered = library_->sendTamberCommand(command, replyLength, reply);
  if (entry.answered) {
    entry.length = *replyLength;
    entry.reply = bytesGot(buffer, changedBytes(buffer, before), kTamberHeaderSize + entry.length);
  }
  traffic_.push_back(entry);
  return entry.answered;
}

bool TrafficRecorder::recordIPMICommand(unsigned char* bytes, int* length, int capacity,
                                        bool wait) {
  TrafficEntry entry;
  entry.kind = TrafficEntry::Kind::kIpmiCommand;
  const std::span<const unsigned char> buffer = ipmiBuffer(bytes, capacity);
  const std::span<const unsigned char> request = ipmiRequest(buffer);
  entry.command.assign(request.begin(), request.end());
  entry.answered = library_->sendIPMICommand(bytes, length, capacity, wait);
  if (entry.answered) {
    entry.length = *length;
    entry.reply = bytesGot(buffer, bytesUpToZeros(buffer), entry.length);
  }
  traffic_.push_back(entry);
  return entry.answered;
}

}  // namespace NKRXVEL20::host
