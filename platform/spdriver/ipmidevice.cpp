// SPDX-License-Identifier: Apache-2.0
#include "ipmidevice.h"

#include <linux/ioctl.h>
#include <linux/ipmi.h>
#include <linux/ipmi_msgdefs.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

namespace NKRXVEL20::host {

namespace {

constexpr const char* kDevices[] = {"/dev/ipmi0", "/dev/ipmi/0", "/dev/ipmidev/0"};

// The header names it "channel for talking directly with the BMC".
std::array<unsigned char, sizeof(ipmi_system_interface_addr)> bmcAddress(unsigned char lun) {
  ipmi_system_interface_addr address{};
  address.addr_type = IPMI_SYSTEM_INTERFACE_ADDR_TYPE;
  address.channel = IPMI_BMC_CHANNEL;
  address.lun = lun;
  std::array<unsigned char, sizeof address> bytes{};
  std::memcpy(bytes.data(), &address, sizeof address);
  return bytes;
}

// The request is not one that the driver sends.
bool isCallersFault(int result) { return result == -EINVAL || result == -EMSGSIZE; }

// What the kernel's driver answers when the BMC does not. A BMC may say so itself of a single
// command, but not after such a wait.
bool isGivenUp(const std::vector<unsigned char>& reply, std::chrono::milliseconds waited) {
  const bool isDrivers = reply.front() == IPMI_TIMEOUT_ERR || reply.front() == IPMI_ERR_UNSPECIFIED;
  return isDrivers && waited >= std::chrono::seconds(1);
}

}  // namespace

int IpmiDevice::retried(unsigned long operation, void* argument, Deadline deadline) {
  int result = calls_.ioctl(file_, operation, argument);
  while (result == -EINTR && calls_.now() < deadline) {
    result = calls_.ioctl(file_, operation, argument);
  }
  return result;
}

int IpmiDevice::send(const IpmiRequest& request, Deadline deadline) {
  if (request.data.size() > IPMI_MAX_MSG_LENGTH) return -EMSGSIZE;
  auto address = bmcAddress(request.lun);
  std::vector<unsigned char> data(request.data.begin(), request.data.end());
  ipmi_req message{};
  message.addr = address.data();
  message.addr_len = address.size();
  message.msgid = ++sequence_;
  message.msg.netfn = request.networkFunction;
  message.msg.cmd = request.command;
  message.msg.data_len = static_cast<unsigned short>(data.size());
  message.msg.data = data.data();
  return retried(IPMICTL_SEND_COMMAND, &message, deadline);
}

// False when the time is over, and when the device is gone (an event without input).
bool IpmiDevice::waitForMessage(Deadline deadline) {
  using std::chrono::milliseconds;
  for (;;) {
    const auto left = std::chrono::ceil<milliseconds>(deadline - calls_.now());
    if (left <= milliseconds::zero()) return false;
    pollfd waited{file_, POLLIN, 0};
    const int count = calls_.poll(waited, static_cast<int>(left.count()));
    if (count == -EINTR) continue;
    return count > 0 && (waited.revents & POLLIN) != 0;
  }
}

IpmiDevice::Received IpmiDevice::receive(std::vector<unsigned char>& reply, Deadline deadline) {
  std::array<unsigned char, sizeof(ipmi_addr)> address{};
  ipmi_recv message{};
  message.addr = address.data();
  message.addr_len = address.size();
  message.msg.data = reply.data();
  message.msg.data_len = static_cast<unsigned short>(reply.size());
  const int result = retried(IPMICTL_RECEIVE_MSG_TRUNC, &message, deadline);
  if (result == -EAGAIN) return Received::kNothingOfOurs;
  // A message that was too long for its buffer has been delivered nevertheless, cut.
  if (result < 0 && result != -EMSGSIZE) return Received::kFailure;
  // Events go to everyone who has the device open, and a request that was given up on may still
  // be answered.
  if (message.recv_type != IPMI_RESPONSE_RECV_TYPE || message.msgid != sequence_) {
    return Received::kNothingOfOurs;
  }
  if (message.msg.data_len == 0) return Received::kFailure;  // not even a completion code
  reply.resize(std::min<std::size_t>(reply.size(), message.msg.data_len));
  return Received::kReply;
}

std::optional<std::vector<unsigned char>> IpmiDevice::ask(const IpmiRequest& request,
                                                          std::size_t room,
                                                          std::optional<Deadline> latest) {
  using std::chrono::milliseconds;
  const auto start = calls_.now();
  const Deadline deadline = std::min(start + kIpmiTimeLimit, latest.value_or(Deadline::max()));
  waitedInVain_.reset();
  const int sent = send(request, deadline);
  if (isCallersFault(sent)) return std::nullopt;
  auto reply = sent < 0 ? std::nullopt : awaitReply(room, deadline);
  const auto now = calls_.now();
  if (!reply && latest && now >= *latest) return std::nullopt;  // the BMC was not waited for long
  const auto waited = std::chrono::duration_cast<milliseconds>(now - start);
  if (!reply || isGivenUp(*reply, waited)) waitedInVain_ = waited;
  return reply;
}

std::optional<std::vector<unsigned char>> IpmiDevice::awaitReply(std::size_t room,
                                                                 Deadline deadline) {
  std::vector<unsigned char> reply(std::min<std::size_t>(room, IPMI_MAX_MSG_LENGTH));
  while (waitForMessage(deadline)) {
    switch (receive(reply, deadline)) {
      case Received::kReply:
        return reply;
      case Received::kFailure:
        return std::nullopt;
      case Received::kNothingOfOurs:
        break;
    }
  }
  return std::nullopt;
}

IpmiOpening openIpmiDevice(SystemCalls& calls) {
  IpmiOpening opening;
  for (const char* path : kDevices) {
    int file = calls.open(path);
    while (file == -EINTR) file = calls.open(path);
    if (file >= 0) {
      opening.device = std::make_unique<IpmiDevice>(calls, file);
      opening.name = path;
      opening.refused.clear();
      break;
    }
    if (opening.refused.empty() && (file == -EACCES || file == -EPERM)) opening.refused = path;
  }
  return opening;
}

}  // namespace NKRXVEL20::host
