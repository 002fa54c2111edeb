// SPDX-License-Identifier: Apache-2.0
#include "host/recording/recordedtraffic.h"

#include <algorithm>
#include <map>
#include <optional>
#include <tuple>
#include <utility>

namespace velhost {
namespace {

using NKRXVEL20::host::Bytes;
using NKRXVEL20::host::SimulatedReply;
using NKRXVEL20::host::SimulatedSP;
using NKRXVEL20::host::TrafficEntry;

constexpr std::size_t kTamberHeaderSize = 3;

// One request and all its answers.
struct Conversation {
  const TrafficEntry* request;
  std::vector<SimulatedReply> replies;
};

// A collection may send a hundred thousand commands, so nothing here looks through all of them for
// each of them.
struct ByCommand {
  static auto key(const TrafficEntry& entry) {
    return std::tie(entry.kind, entry.sp, entry.command);
  }
  bool operator()(const TrafficEntry* a, const TrafficEntry* b) const { return key(*a) < key(*b); }
};

struct ByRequest {
  static auto key(const TrafficEntry& entry) {
    return std::tuple_cat(ByCommand::key(entry), std::tie(entry.data));
  }
  bool operator()(const TrafficEntry* a, const TrafficEntry* b) const { return key(*a) < key(*b); }
};

bool sameReply(const SimulatedReply& a, const SimulatedReply& b) {
  return a.fails == b.fails && a.bytes == b.bytes && a.length == b.length;
}

std::size_t trueLength(const TrafficEntry& entry) {
  const std::size_t header =
      entry.kind == TrafficEntry::Kind::kTamberCommand ? kTamberHeaderSize : 0;
  return std::max(entry.reply.size(), header) - header;
}

SimulatedReply replyOf(const TrafficEntry& entry) {
  if (!entry.answered) return {true, {}, {}};
  SimulatedReply reply{false, entry.reply, {}};
  if (!std::cmp_equal(entry.length, trueLength(entry))) reply.length = entry.length;
  return reply;
}

std::vector<Conversation> conversationsOf(const std::vector<TrafficEntry>& traffic) {
  std::vector<Conversation> conversations;
  std::map<const TrafficEntry*, std::size_t, ByRequest> places;
  for (const TrafficEntry& entry : traffic) {
    const auto [known, isNew] = places.try_emplace(&entry, conversations.size());
    if (isNew) conversations.push_back({&entry, {}});
    conversations[known->second].replies.push_back(replyOf(entry));
  }
  return conversations;
}

// An entry has one length for all its replies, and its last reply stands for all that follow.
void settle(std::vector<SimulatedReply>& replies) {
  const auto odd =
      std::ranges::find_if(replies, [](const SimulatedReply& r) { return r.length.has_value(); });
  if (odd != replies.end()) {
    const auto length = odd->length;
    for (SimulatedReply& reply : replies) reply.length = length;
  }
  while (replies.size() > 1 && sameReply(replies.back(), replies[replies.size() - 2])) {
    replies.pop_back();
  }
}

// Both are answered alike, whatever is asked when.
bool answeredAlike(const Conversation& a, const Conversation& b) {
  return a.replies.size() == 1 && b.replies.size() == 1 && sameReply(a.replies[0], b.replies[0]);
}

// The conversations of one command.
struct CommandTalk {
  const Conversation* first;
  bool dataMatters = false;  // otherwise all are answered alike and become one
};

using CommandTalks = std::map<const TrafficEntry*, CommandTalk, ByCommand>;

CommandTalks talksOf(const std::vector<Conversation>& conversations) {
  CommandTalks talks;
  for (const Conversation& conversation : conversations) {
    const auto [talk, isNew] = talks.try_emplace(conversation.request, CommandTalk{&conversation});
    if (!isNew && !answeredAlike(conversation, *talk->second.first)) {
      talk->second.dataMatters = true;
    }
  }
  return talks;
}

void addEntry(const Conversation& conversation, bool withData, SimulatedSP& sp) {
  const TrafficEntry& request = *conversation.request;
  std::optional<Bytes> data;
  if (withData) data = request.data;
  switch (request.kind) {
    case TrafficEntry::Kind::kDotCommand:
      sp.dotCommands.push_back(
          {request.sp, request.command, std::move(data), conversation.replies});
      break;
    case TrafficEntry::Kind::kTamberCommand:
      sp.tamberCommands.push_back({request.command, std::move(data), conversation.replies});
      break;
    case TrafficEntry::Kind::kIpmiCommand:
      sp.ipmiCommands.push_back({request.command, conversation.replies});
      break;
  }
}

}  // namespace

void addCommands(const std::vector<TrafficEntry>& traffic, SimulatedSP& sp) {
  std::vector<Conversation> conversations = conversationsOf(traffic);
  for (Conversation& conversation : conversations) settle(conversation.replies);
  const CommandTalks talks = talksOf(conversations);
  for (const Conversation& conversation : conversations) {
    const CommandTalk& talk = talks.at(conversation.request);
    if (talk.dataMatters || talk.first == &conversation) {
      addEntry(conversation, talk.dataMatters, sp);
    }
  }
  // An IPMI entry answers every request that begins with its own: the longer ones come first.
  std::ranges::stable_sort(sp.ipmiCommands, std::ranges::greater(),
                           [](const auto& entry) { return entry.request.size(); });
}

}  // namespace velhost
