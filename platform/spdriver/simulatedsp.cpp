// SPDX-License-Identifier: Apache-2.0
//
// An SP and a BMC that answer from a description.
#include <algorithm>
#include <thread>
#include <utility>

#include "ipmirecord.h"
#include "printmatrix.h"
#include "velhost/spdriver.h"

namespace NKRXVEL20::host {

namespace {

constexpr std::size_t kTamberReplySize = 255;
constexpr std::size_t kTamberHeaderSize = 3;
constexpr std::size_t kCommandListSize = 4096;
constexpr int kComponentKeySize = 4;
constexpr int kNotListed = -1;

// The entries of one kind of command, each with the place of its next reply.
template <typename Entry>
class Script {
 public:
  explicit Script(std::vector<Entry> entries)
      : entries_(std::move(entries)), turns_(entries_.size(), 0) {}

  // The next reply of the first entry that matches; null: none matches, or that send fails.
  template <typename Matches>
  const SimulatedReply* answer(Matches matches) {
    const auto entry = std::find_if(entries_.begin(), entries_.end(), matches);
    if (entry == entries_.end() || entry->replies.empty()) return nullptr;
    std::size_t& turn = turns_[static_cast<std::size_t>(entry - entries_.begin())];
    const SimulatedReply& reply = entry->replies[turn];
    if (turn + 1 < entry->replies.size()) ++turn;
    return reply.fails ? nullptr : &reply;
  }

 private:
  std::vector<Entry> entries_;
  std::vector<std::size_t> turns_;
};

bool dataMatches(const std::optional<Bytes>& expected, const Bytes& data) {
  return !expected || *expected == data;
}

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
  explicit SimulatedSPLibrary(SimulatedSP description)
      : description_(std::move(description)),
        dotCommands_(std::move(description_.dotCommands)),
        tamberCommands_(std::move(description_.tamberCommands)),
        ipmiCommands_(std::move(description_.ipmiCommands)) {}

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
  void takeTime() const { std::this_thread::sleep_for(description_.latency); }

  SimulatedSP description_;
  Script<DotCommandEntry> dotCommands_;
  Script<TamberCommandEntry> tamberCommands_;
  Script<IpmiCommandEntry> ipmiCommands_;
};

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
  takeTime();
  if (!speaks()) return false;
  const SimulatedReply* answer = dotCommands_.answer([&](const DotCommandEntry& entry) {
    return entry.sp == spIndex && entry.command == command->command &&
           dataMatches(entry.data, command->data);
  });
  if (answer == nullptr) return false;
  const auto room = static_cast<std::size_t>(std::max(bufferSize, 0));
  *replyLength = reportedLength(*answer, write(answer->bytes, {reply, room}));
  return true;
}

bool SimulatedSPLibrary::sendTamberCommand(TamberCmd* command, int* replyLength,
                                           unsigned char* reply) {
  takeTime();
  if (!speaks()) return false;
  const SimulatedReply* answer = tamberCommands_.answer([&](const TamberCommandEntry& entry) {
    return entry.command == command->command && dataMatches(entry.data, command->data);
  });
  if (answer == nullptr) return false;
  const std::size_t written = write(answer->bytes, {reply, kTamberReplySize});
  *replyLength =
      reportedLength(*answer, written < kTamberHeaderSize ? 0 : written - kTamberHeaderSize);
  return true;
}

bool SimulatedSPLibrary::sendIPMICommand(unsigned char* bytes, int* length, int capacity,
                                         bool /*wait*/) {
  takeTime();
  const std::span<unsigned char> buffer = ipmiBuffer(bytes, capacity);
  const std::span<const unsigned char> request = ipmiRequest(buffer);
  const SimulatedReply* answer = ipmiCommands_.answer([&](const IpmiCommandEntry& entry) {
    return entry.request.size() <= request.size() &&
           std::equal(entry.request.begin(), entry.request.end(), request.begin());
  });
  *length = 0;
  if (answer == nullptr) return false;
  const std::size_t written = write(answer->bytes, buffer);
  std::ranges::fill(buffer.subspan(written), static_cast<unsigned char>(0));
  *length = reportedLength(*answer, written);
  return true;
}

}  // namespace

std::unique_ptr<SPLibrary> makeSimulatedSP(SimulatedSP description) {
  return std::make_unique<SimulatedSPLibrary>(std::move(description));
}

}  // namespace NKRXVEL20::host
