// SPDX-License-Identifier: Apache-2.0
//
// A kernel whose IPMI device answers with whatever the bytes are: errors, events, answers to other requests,
// replies of any length. A command gets the reply that came for it, behind its own four bytes and with
// zeros behind it, or it fails and its buffer is as it was. Nobody waits longer than the limit, and a BMC
// that owes an answer is not asked again.
#include <linux/ioctl.h>
#include <linux/ipmi.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>

#include "platform/spdriver/ipmidevice.h"
#include "platform/spdriver/liveipmi.h"
#include "tests/fuzz/bytesource.h"
#include "tests/fuzz/require.h"

namespace {

using namespace NKRXVEL20::host;
using fuzz::ByteSource;
using fuzz::require;
using NKRXVEL20::SPLibrary;
using std::chrono::milliseconds;

constexpr int kFile = 7;
constexpr std::array kErrors{EINTR,  EAGAIN, EIO,    EMSGSIZE, EINVAL,
                             ENODEV, EACCES, EFAULT, EBUSY,    ENOMEM};

class AnyKernel : public SystemCalls {
 public:
  explicit AnyKernel(ByteSource& bytes) : bytes_(bytes) {}

  int open(const char* /*path*/) override { return result(kFile); }
  void close(int file) override {
    require(file == kFile && !isClosed_, "the device is closed once");
    isClosed_ = true;
  }
  bool exists(const char* /*path*/) override { return bytes_.flag(); }
  std::chrono::steady_clock::time_point now() override { return now_; }

  int ioctl(int file, unsigned long request, void* argument) override {
    require(file == kFile && !isClosed_, "the device is open");
    ++calls_;
    now_ += milliseconds(1);
    if (request == IPMICTL_SEND_COMMAND) return send(*static_cast<const ipmi_req*>(argument));
    require(request == IPMICTL_RECEIVE_MSG_TRUNC, "no other calls are known");
    return receive(*static_cast<ipmi_recv*>(argument));
  }

  int poll(pollfd& waited, int most) override {
    require(most > 0 && waited.fd == kFile, "a wait has an end");
    const bool isLast = bytes_.isEmpty();
    now_ += milliseconds(isLast ? most : std::min(bytes_.byte() * 8, most));
    waited.revents = static_cast<short>(bytes_.byte() % 16 == 15 ? POLLHUP : POLLIN);
    return isLast ? 0 : result(1);
  }

  std::size_t calls() const { return calls_; }
  bool isClosed() const { return isClosed_; }
  // What came last for the last request that was sent; empty: nothing has.
  const std::vector<std::uint8_t>& reply() const { return reply_; }

 private:
  int result(int good) {
    const std::uint8_t choice = bytes_.byte();
    return choice < 192 ? good : -kErrors[choice % kErrors.size()];
  }

  int send(const ipmi_req& message) {
    require(message.msg.data_len <= IPMI_MAX_MSG_LENGTH, "a request fits the kernel's buffer");
    sum_ = 0;  // each byte of it can be read
    for (unsigned i = 0; i < message.msg.data_len; ++i) sum_ += message.msg.data[i];
    sequence_ = message.msgid;
    reply_.clear();
    return result(0);
  }

  int receive(ipmi_recv& message) {
    require(message.msg.data_len <= IPMI_MAX_MSG_LENGTH, "a reply fits the kernel's buffer");
    const bool isOurs = bytes_.byte() % 4 != 0;
    message.recv_type =
        isOurs || bytes_.flag() ? IPMI_RESPONSE_RECV_TYPE : IPMI_ASYNC_EVENT_RECV_TYPE;
    message.msgid = isOurs ? sequence_ : bytes_.byte();
    const auto data = bytes_.bytes(std::min<std::size_t>(bytes_.byte(), message.msg.data_len));
    std::ranges::copy(data, message.msg.data);
    message.msg.data_len = static_cast<unsigned short>(data.size());
    const int status = result(0);
    const bool isDelivered = status == 0 || status == -EMSGSIZE;
    const bool isReply = message.recv_type == IPMI_RESPONSE_RECV_TYPE && message.msgid == sequence_;
    if (isDelivered && isReply) reply_ = data;
    return status;
  }

  ByteSource& bytes_;
  std::chrono::steady_clock::time_point now_{std::chrono::hours(1)};
  std::size_t calls_ = 0;
  bool isClosed_ = false;
  unsigned sum_ = 0;
  long sequence_ = 0;
  std::vector<std::uint8_t> reply_;
};

using Buffer = std::vector<unsigned char>;

// The buffer behind a command that was answered.
Buffer answered(Buffer request, const std::vector<std::uint8_t>& reply) {
  std::fill(request.begin() + 4, request.end(), 0);
  std::copy_n(reply.begin(), std::min(reply.size(), request.size() - 4), request.begin() + 4);
  return request;
}

void command(SPLibrary& library, ByteSource& bytes, const AnyKernel& kernel) {
  Buffer buffer = bytes.bytes(bytes.byte());
  const Buffer request = buffer;
  int length = -1;
  const bool isAnswered =
      library.sendIPMICommand(buffer.data(), &length, static_cast<int>(buffer.size()), true);
  if (!isAnswered) {
    require(length == 0 && buffer == request, "a command that failed leaves its buffer");
    return;
  }
  require(buffer == answered(request, kernel.reply()), "the reply is the one that came");
  require(length == static_cast<int>(4 + kernel.reply().size()), "its length is told");
}

void converse(LiveIpmi& live, ByteSource& bytes, AnyKernel& kernel) {
  live.library->IsBMCMachine();
  for (unsigned count = 0; count < 8 && !bytes.isEmpty(); ++count) {
    const bool wasSilent = live.silence->has_value();
    const std::size_t calls = kernel.calls();
    const auto start = kernel.now();
    command(*live.library, bytes, kernel);
    require(kernel.now() - start <= kIpmiTimeLimit + milliseconds(1), "a wait ends in time");
    require(!wasSilent || kernel.calls() == calls, "a silent BMC is not asked again");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  ByteSource bytes(data, size);
  AnyKernel kernel(bytes);
  bool isOpen = false;
  {
    LiveIpmi live = makeLiveIpmi(kernel);
    isOpen = live.library->IsIPMIDriversPresent();
    converse(live, bytes, kernel);
  }
  require(kernel.isClosed() == isOpen, "what was opened is closed");
  return 0;
}
