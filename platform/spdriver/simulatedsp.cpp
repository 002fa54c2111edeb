// SPDX-License-Identifier: Apache-2.0
//
// An SP and a BMC that answer from a description.
#include <algorithm>
#include <limits>
#include <map>
#include <optional>
#include <span>
#include <utility>

#include "ipmirecord.h"
#include "printmatrix.h"
#include "timelimit.h"
#include "velhost/spdriver.h"

namespace NKRXVEL20::host {

namespace {

constexpr std::size_t kTamberReplySize = 255;
constexpr std::size_t kTamberHeaderSize = 3;
constexpr std::size_t kCommandListSize = 4096;
constexpr int kComponentKeySize = 4;
constexpr int kNotListed = -1;

// The replies of an entry, and which one is next.
struct Turn {
  std::vector<SimulatedReply> replies;
  std::size_t next = 0;

  // Null: that send fails.
  const SimulatedReply* take() {
    if (replies.empty()) return nullptr;
    const SimulatedReply& reply = replies[next];
    if (next + 1 < replies.size()) ++next;
    return reply.fails ? nullptr : &reply;
  }
};

// The entries of a kind of command whose requests are compared whole, but for the data of those that
// take any. They are looked up, as there may be as many entries as commands that are sent.
template <typename Command>
class Script {
 public:
  void add(const Command& command, const std::optional<Bytes>& data,
           std::vector<SimulatedReply> replies) {
    first_.try_emplace({command, data}, turns_.size());  // a later one would never answer
    turns_.push_back({std::move(replies)});
  }

  // The next reply of the first entry that matches; null: none matches, or that send fails.
  const SimulatedReply* answer(const Command& command, const Bytes& data) {
    const std::size_t entry = std::min(placeOf({command, data}), placeOf({command, std::nullopt}));
    return entry == kNone ? nullptr : turns_[entry].take();
  }

 private:
  using Request = std::pair<Command, std::optional<Bytes>>;
  static constexpr std::size_t kNone = std::numeric_limits<std::size_t>::max();

  std::size_t placeOf(const Request& request) const {
    const auto found = first_.find(request);
    return found == first_.end() ? kNone : found->second;
  }

  std::map<Request, std::size_t> first_;  // place of the first entry for it
  std::vector<Turn> turns_;
};

using DotCommand = std::pair<int, Bytes>;  // of that SP

// IPMI entries match by what a request begins with, and few IPMI commands are sent.
class IpmiScript {
 public:
  explicit IpmiScript(std::vector<IpmiCommandEntry> entries) {
    for (IpmiCommandEntry& entry : entries) {
      entries_.emplace_back(std::move(entry.request), Turn{std::move(entry.replies)});
    }
  }

  const SimulatedReply* answer(std::span<const unsigned char> request) {
    const auto entry = std::ranges::find_if(entries_, [&](const auto& e) {
      return e.first.size() <= request.size() &&
             std::equal(e.first.begin(), e.first.end(), request.begin());
    });
    return entry == entries_.end() ? nullptr : entry->second.take();
  }

 private:
  std::vector<std::pair<Bytes, Turn>> entries_;
};

// Copies what fits, and returns how much that was.
std::size_t write(const Bytes& bytes, std::span<unsigned char> buffer) {
  const std::size_t count = std::min(bytes.size(), buffer.size());
  std::copy_n(bytes.begin(), count, buffer.begin());
  return count;
}

int reportedLength(const SimulatedReply& reply, std::size_t trueLength) {
  return reply.length.value_or(static_cast<std::int32_t>(trueLength));
}

class SimulatedSPLibrary : public SPLibrary {
 public:
  SimulatedSPLibrary(SimulatedSP description, Clock& clock)
      : description_(std::move(description)),
        clock_(clock),
        ipmiCommands_(std::move(description_.ipmiCommands)) {
    for (DotCommandEntry& entry : description_.dotCommands) {
      dotCommands_.add({entry.sp, entry.command}, entry.data, std::move(entry.replies));
    }
    for (TamberCommandEntry& entry : description_.tamberCommands) {
      tamberCommands_.add(entry.command, entry.data, std::move(entry.replies));
    }
    description_.dotCommands.clear();
    description_.tamberCommands.clear();
  }

  int discoverSPs() override { return description_.count; }
  bool checkSPComm() override { return speaks(); }
  bool isDotcommand() override { return description_.kind == SPKind::kDotCommand; }
  bool isTamber() override { return description_.kind == SPKind::kTamber; }
  bool isTwgStop() override { return description_.twgStop; }
  bool isTvmlibrary() override { return description_.tvmLibrary; }
  bool IsBMCMachine() override { return description_.bmc; }
  bool IsIPMIDriversPresent() override { return description_.ipmiDrivers; }
  bool IsIntegratedBMC() override { return description_.integratedBmc; }
  int GetNumberBMCNode() override { return description_.bmcNodes; }

  bool buildDotCommandList(unsigned char* list0, unsigned char* list1,
                           unsigned char* list2) override;
  int getComponentdotCmdList(unsigned char* command, int commandLength, unsigned char* list0,
                             unsigned char* list1, unsigned char* list2) override;
  bool sendDotCommand(dotCmd* command, unsigned char* reply, int* replyLength, int spIndex,
                      int bufferSize) override;
  bool sendTamberCommand(TamberCmd* command, int* replyLength, unsigned char* reply) override;
  bool sendIPMICommand(unsigned char* bytes, int* length, int capacity, bool wait) override;
  void printMatrix(const unsigned char* bytes, int length) override {
    printMatrixToStderr(bytes, length);
  }

 private:
  bool speaks() const { return description_.kind != SPKind::kNone && description_.answers; }
  bool takesTime() const;

  SimulatedSP description_;
  Clock& clock_;
  Script<DotCommand> dotCommands_;
  Script<Bytes> tamberCommands_;
  IpmiScript ipmiCommands_;
};

// False when the time was over before the answer came.
bool SimulatedSPLibrary::takesTime() const {
  if (description_.latency <= std::chrono::microseconds::zero()) return true;
  const TimePoint start = clock_.now();
  const TimePoint answer = start + description_.latency;
  const TimePoint end = std::min(answer, timeLimit().value_or(answer));
  clock_.sleep(std::chrono::ceil<std::chrono::microseconds>(end - start));
  return end == answer;
}

// The component counts come from the description, so the lists are left without an entry.
bool SimulatedSPLibrary::buildDotCommandList(unsigned char* list0, unsigned char* list1,
                                             unsigned char* list2) {
  if (!speaks() || !description_.commandList) return false;
  for (unsigned char* list : {list0, list1, list2}) std::fill_n(list, kCommandListSize, 0);
  return true;
}

int SimulatedSPLibrary::getComponentdotCmdList(unsigned char* command, int commandLength,
                                               unsigned char* /*list0*/, unsigned char* /*list1*/,
                                               unsigned char* /*list2*/) {
  if (commandLength < kComponentKeySize) return kNotListed;
  const auto found = description_.components.find(Bytes(command, command + kComponentKeySize));
  return found == description_.components.end() ? kNotListed : found->second;
}

bool SimulatedSPLibrary::sendDotCommand(dotCmd* command, unsigned char* reply, int* replyLength,
                                        int spIndex, int bufferSize) {
  if (!takesTime() || !speaks()) return false;
  const SimulatedReply* answer = dotCommands_.answer({spIndex, command->command}, command->data);
  if (answer == nullptr) return false;
  const auto room = static_cast<std::size_t>(std::max(bufferSize, 0));
  *replyLength = reportedLength(*answer, write(answer->bytes, {reply, room}));
  return true;
}

bool SimulatedSPLibrary::sendTamberCommand(TamberCmd* command, int* replyLength,
                                           unsigned char* reply) {
  if (!takesTime() || !speaks()) return false;
  const SimulatedReply* answer = tamberCommands_.answer(command->command, command->data);
  if (answer == nullptr) return false;
  const std::size_t written = write(answer->bytes, {reply, kTamberReplySize});
  *replyLength =
      reportedLength(*answer, written < kTamberHeaderSize ? 0 : written - kTamberHeaderSize);
  return true;
}

bool SimulatedSPLibrary::sendIPMICommand(unsigned char* bytes, int* length, int capacity,
                                         bool /*wait*/) {
  *length = 0;
  if (!takesTime()) return false;
  const std::span<unsigned char> buffer = ipmiBuffer(bytes, capacity);
  const std::span<const unsigned char> request = ipmiRequest(buffer);
  const SimulatedReply* answer = ipmiCommands_.answer(request);
  if (answer == nullptr) return false;
  const std::size_t written = write(answer->bytes, buffer);
  std::ranges::fill(buffer.subspan(written), static_cast<unsigned char>(0));
  *length = reportedLength(*answer, written);
  return true;
}

}  // namespace

std::unique_ptr<SPLibrary> makeSimulatedSP(SimulatedSP description, Clock& clock) {
  return std::make_unique<SimulatedSPLibrary>(std::move(description), clock);
}

}  // namespace NKRXVEL20::host
