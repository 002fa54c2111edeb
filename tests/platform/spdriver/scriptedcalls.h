// SPDX-License-Identifier: Apache-2.0
//
// System calls that answer from a script and keep what they were asked, one line a call.
#pragma once

#include <gtest/gtest.h>
#include <linux/ioctl.h>
#include <linux/ipmi.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <deque>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "platform/spdriver/systemcalls.h"

namespace NKRXVEL20::host {

// What the device has for IPMICTL_RECEIVE_MSG_TRUNC.
struct Message {
  long sequence = 0;
  std::vector<unsigned char> data;  // completion code first; longer than the buffer: -EMSGSIZE
  int type = IPMI_RESPONSE_RECV_TYPE;
  int error = 0;  // minus the errno; no message then
};

// The result of one poll, and how long it took.
struct Poll {
  int result = 1;
  short events = POLLIN;
  std::chrono::milliseconds takes{0};
};

class ScriptedCalls : public SystemCalls {
 public:
  static constexpr int kFile = 7;

  std::map<std::string, std::deque<int>> opens;  // by path; -ENOENT when there is none
  std::deque<int> sends;                         // 0 when there is none
  std::deque<Poll> polls;                        // time out when there is none
  std::deque<Message> messages;                  // -EAGAIN when there is none
  std::set<std::string> files;
  std::chrono::milliseconds ioctlTakes{0};

  // The calls since the last time.
  std::vector<std::string> takeCalls() { return std::exchange(calls_, {}); }

  int open(const char* path) override {
    calls_.push_back(std::string("open ") + path);
    return next(opens[path], -ENOENT);
  }

  void close(int file) override { calls_.push_back("close " + std::to_string(file)); }

  int ioctl(int file, unsigned long request, void* argument) override {
    EXPECT_EQ(file, kFile);
    now_ += ioctlTakes;
    if (request == IPMICTL_SEND_COMMAND) return send(*static_cast<ipmi_req*>(argument));
    if (request == IPMICTL_RECEIVE_MSG_TRUNC) return receive(*static_cast<ipmi_recv*>(argument));
    ADD_FAILURE() << "ioctl " << request;
    return -ENOTTY;
  }

  int poll(pollfd& waited, int milliseconds) override {
    EXPECT_EQ(waited.fd, kFile);
    EXPECT_EQ(waited.events, POLLIN);
    calls_.push_back("poll " + std::to_string(milliseconds));
    const Poll answer = next(polls, Poll{0, 0, std::chrono::milliseconds(milliseconds)});
    now_ += answer.takes;
    waited.revents = answer.events;
    return answer.result;
  }

  bool exists(const char* path) override { return files.contains(path); }

  std::chrono::steady_clock::time_point now() override { return now_; }

 private:
  template <typename Answer>
  static Answer next(std::deque<Answer>& script, Answer otherwise) {
    if (script.empty()) return otherwise;
    Answer answer = script.front();
    script.pop_front();
    return answer;
  }

  static std::string hex(const unsigned char* bytes, std::size_t count) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i) {
      text += "0123456789ABCDEF"[bytes[i] / 16];
      text += "0123456789ABCDEF"[bytes[i] % 16];
    }
    return text;
  }

  int send(const ipmi_req& request) {
    ipmi_system_interface_addr address{};
    EXPECT_EQ(request.addr_len, sizeof address);
    std::memcpy(&address, request.addr, sizeof address);
    EXPECT_EQ(address.addr_type, IPMI_SYSTEM_INTERFACE_ADDR_TYPE);
    EXPECT_EQ(address.channel, IPMI_BMC_CHANNEL);
    calls_.push_back("send " + std::to_string(request.msgid) + " lun " +
                     std::to_string(address.lun) + " netfn " + std::to_string(request.msg.netfn) +
                     " cmd " + std::to_string(request.msg.cmd) + " data " +
                     hex(request.msg.data, request.msg.data_len));
    return next(sends, 0);
  }

  // As the kernel does it: what does not fit is lost, and reported.
  int receive(ipmi_recv& received) {
    calls_.push_back("receive " + std::to_string(received.msg.data_len));
    EXPECT_GE(received.addr_len, sizeof(ipmi_system_interface_addr));
    const Message message = next(messages, Message{0, {}, 0, -EAGAIN});
    if (message.error != 0) return message.error;
    const auto count = std::min<std::size_t>(message.data.size(), received.msg.data_len);
    std::copy_n(message.data.begin(), count, received.msg.data);
    received.recv_type = message.type;
    received.msgid = message.sequence;
    received.msg.data_len = static_cast<unsigned short>(count);
    return count < message.data.size() ? -EMSGSIZE : 0;
  }

  std::vector<std::string> calls_;
  std::chrono::steady_clock::time_point now_{std::chrono::hours(1)};
};

}  // namespace NKRXVEL20::host
