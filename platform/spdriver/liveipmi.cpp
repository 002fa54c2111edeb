// SPDX-License-Identifier: Apache-2.0
//
// The SP library of the machine that the program runs on: no service processor that speaks dot
// commands or Tamber, and the BMC that the kernel's IPMI driver reaches.
#include "liveipmi.h"

#include <linux/ipmi.h>

#include <algorithm>
#include <optional>
#include <utility>

#include "ipmidevice.h"
#include "ipmirecord.h"
#include "printmatrix.h"
#include "timelimit.h"

namespace NKRXVEL20::host {

namespace {

// The kernel makes it where the machine was started by UEFI.
constexpr const char* kFirmwareOfUefi = "/sys/firmware/efi";

// The completion code and the 15 bytes of IPMI 2.0, table 20-2.
constexpr std::size_t kDeviceIdReplySize = 16;

class LiveIpmiLibrary : public SPLibrary {
 public:
  LiveIpmiLibrary(SystemCalls& calls, IpmiOpening opening)
      : calls_(calls), device_(std::move(opening.device)), name_(std::move(opening.name)) {}

  std::shared_ptr<const std::optional<SilentBmc>> silence() const { return silence_; }

  int discoverSPs() override { return 0; }
  bool checkSPComm() override { return false; }
  bool isDotcommand() override { return false; }
  bool isTamber() override { return false; }
  bool isTwgStop() override { return false; }
  bool isTvmlibrary() override { return false; }
  bool IsBMCMachine() override;
  bool IsIPMIDriversPresent() override { return device_ != nullptr; }
  bool IsIntegratedBMC() override { return calls_.exists(kFirmwareOfUefi); }
  int GetNumberBMCNode() override { return 0; }
  bool buildDotCommandList(unsigned char* /*list0*/, unsigned char* /*list1*/,
                           unsigned char* /*list2*/) override {
    return false;
  }
  int getComponentdotCmdList(unsigned char* /*command*/, int /*commandLength*/,
                             unsigned char* /*list0*/, unsigned char* /*list1*/,
                             unsigned char* /*list2*/) override {
    return -1;
  }
  bool sendDotCommand(dotCmd* /*command*/, unsigned char* /*reply*/, int* /*replyLength*/,
                      int /*spIndex*/, int /*bufferSize*/) override {
    return false;
  }
  bool sendTamberCommand(TamberCmd* /*command*/, int* /*replyLength*/,
                         unsigned char* /*reply*/) override {
    return false;
  }
  bool sendIPMICommand(unsigned char* bytes, int* length, int capacity, bool wait) override;
  void printMatrix(const unsigned char* bytes, int length) override {
    printMatrixToStderr(bytes, length);
  }

 private:
  std::optional<Bytes> ask(const IpmiRequest& request, std::size_t room);
  bool answersGetDeviceId();
  bool isOver() const { return timeLimit() && calls_.now() >= *timeLimit(); }

  SystemCalls& calls_;
  std::unique_ptr<IpmiDevice> device_;
  std::string name_;
  std::shared_ptr<std::optional<SilentBmc>> silence_ = std::make_shared<std::optional<SilentBmc>>();
  std::optional<bool> bmc_;  // asked once
};

std::optional<Bytes> LiveIpmiLibrary::ask(const IpmiRequest& request, std::size_t room) {
  if (!device_ || *silence_ || isOver()) return std::nullopt;
  auto reply = device_->ask(request, room, timeLimit());
  if (const auto waited = device_->waitedInVain()) *silence_ = SilentBmc{name_, *waited};
  return reply;
}

bool LiveIpmiLibrary::answersGetDeviceId() {
  const auto reply =
      ask({IPMI_NETFN_APP_REQUEST, 0, IPMI_GET_DEVICE_ID_CMD, {}}, kDeviceIdReplySize);
  return reply && reply->front() == IPMI_CC_NO_ERROR;
}

bool LiveIpmiLibrary::IsBMCMachine() {
  if (bmc_) return *bmc_;
  const bool answers = answersGetDeviceId();
  if (answers || !isOver()) bmc_ = answers;
  return answers;
}

bool LiveIpmiLibrary::sendIPMICommand(unsigned char* bytes, int* length, int capacity,
                                      bool /*wait*/) {
  *length = 0;
  const std::span<unsigned char> buffer = ipmiBuffer(bytes, capacity);
  if (buffer.size() < kIpmiRequestDataOffset) return false;
  const std::size_t dataLength = ipmiDataLength(buffer);
  if (dataLength > buffer.size() - kIpmiRequestDataOffset) return false;
  const IpmiRequest request = {buffer[kIpmiNetworkFunctionOffset], buffer[kIpmiLunOffset],
                               buffer[kIpmiCommandOffset],
                               buffer.subspan(kIpmiRequestDataOffset, dataLength)};
  const std::span<unsigned char> answer = buffer.subspan(kIpmiCompletionCodeOffset);
  const auto reply = ask(request, answer.size());
  if (!reply) return false;
  const auto behind = std::ranges::copy(*reply, answer.begin()).out;
  std::fill(behind, answer.end(), static_cast<unsigned char>(0));
  *length = static_cast<int>(kIpmiCompletionCodeOffset + reply->size());
  return true;
}

}  // namespace

LiveIpmi makeLiveIpmi(SystemCalls& calls) {
  IpmiOpening opening = openIpmiDevice(calls);
  std::string refused = std::move(opening.refused);
  auto library = std::make_unique<LiveIpmiLibrary>(calls, std::move(opening));
  auto silence = library->silence();
  return {std::move(library), std::move(refused), std::move(silence)};
}

LiveIpmi makeLiveIpmi() { return makeLiveIpmi(kernelCalls()); }

}  // namespace NKRXVEL20::host
