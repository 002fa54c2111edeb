// SPDX-License-Identifier: Apache-2.0
#include "host/recordedtraffic.h"

#include <algorithm>
#include <optional>
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

bool sameCommand(const TrafficEntry& a, const TrafficEntry& b) {
  return a.kind == b.kind && a.sp == b.sp && a.command == b.command;
}

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
  for (const TrafficEntry& entry : traffic) {
    auto known = std::ranges::find_if(conversations, [&](const Conversation& c) {
      return sameCommand(*c.request, entry) && c.request->data == entry.data;
    });
    if (known == conversations.end()) known = conversations.insert(known, {&entry, {}});
    known->replies.push_back(replyOf(entry));
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

// The conversations of one command become one where its data makes no difference.
std::optional<Bytes> dataOf(const Conversation& conversation,
                            const std::vector<Conversation>& all) {
  const bool matters = std::ranges::any_of(all, [&](const Conversation& other) {
    return &other != &conversation && sameCommand(*other.request, *conversation.request) &&
           !answeredAlike(other, conversation);
  });
  if (!matters) return std::nullopt;
  return conversation.request->data;
}

bool isFirstOfItsCommand(const Conversation& conversation, const std::vector<Conversation>& all) {
  return &conversation == &*std::ranges::find_if(all, [&](const Conversation& other) {
    return sameCommand(*other.request, *conversation.request);
  });
}

void addEntry(const Conversation& conversation, std::optional<Bytes> data, SimulatedSP& sp) {
  const TrafficEntry& request = *conversation.request;
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
  for (const Conversation& conversation : conversations) {
    auto data = dataOf(conversation, conversations);
    if (data || isFirstOfItsCommand(conversation, conversations)) {
      addEntry(conversation, std::move(data), sp);
    }
  }
  // An IPMI entry answers every request that begins with its own: the longer ones come first.
  std::ranges::stable_sort(sp.ipmiCommands, std::ranges::greater(),
                           [](const auto& entry) { return entry.request.size(); });
}

}  // namespace velhost
