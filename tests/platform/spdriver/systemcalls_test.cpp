// SPDX-License-Identifier: Apache-2.0
#include "platform/spdriver/systemcalls.h"

#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>

namespace NKRXVEL20::host {
namespace {

// Two ends that are connected; the first is the one that the calls get.
class KernelCalls : public testing::Test {
 protected:
  KernelCalls() {
    if (socketpair(AF_UNIX, SOCK_STREAM, 0, ends_.data()) != 0) throw std::runtime_error("socket");
  }
  ~KernelCalls() override {
    closeEnd(0);
    closeEnd(1);
  }

  void closeEnd(std::size_t end) {
    if (ends_[end] >= 0) ::close(ends_[end]);
    ends_[end] = -1;
  }

  SystemCalls& calls_ = kernelCalls();
  std::array<int, 2> ends_{-1, -1};
};

TEST_F(KernelCalls, OpenAndClose) {
  const int file = calls_.open("/dev/null");
  ASSERT_GE(file, 0);
  EXPECT_EQ(::write(file, "x", 1), 1) << "open for writing too";
  calls_.close(file);
  pollfd waited{file, POLLIN, 0};
  EXPECT_EQ(calls_.poll(waited, 0), 1);
  EXPECT_EQ(waited.revents, POLLNVAL) << "closed";
}

TEST_F(KernelCalls, OpenFails) {
  EXPECT_EQ(calls_.open("/dev/null/nothing"), -ENOTDIR);
  EXPECT_EQ(calls_.open("/"), -EISDIR) << "a folder cannot be written";
}

TEST_F(KernelCalls, Ioctl) {
  ASSERT_EQ(::write(ends_[1], "abc", 3), 3);
  int waiting = 0;
  EXPECT_EQ(calls_.ioctl(ends_[0], FIONREAD, &waiting), 0);
  EXPECT_EQ(waiting, 3);
  EXPECT_EQ(calls_.ioctl(-1, FIONREAD, &waiting), -EBADF);
}

TEST_F(KernelCalls, Poll) {
  pollfd waited{ends_[0], POLLIN, 0};
  const auto start = calls_.now();
  EXPECT_EQ(calls_.poll(waited, 5), 0);
  EXPECT_GE(calls_.now() - start, std::chrono::milliseconds(5));
  ASSERT_EQ(::write(ends_[1], "a", 1), 1);
  EXPECT_EQ(calls_.poll(waited, 5000), 1);
  EXPECT_EQ(waited.revents, POLLIN);
  closeEnd(1);
  EXPECT_EQ(calls_.poll(waited, 5000), 1);
  EXPECT_EQ(waited.revents, POLLIN | POLLHUP);
}

TEST_F(KernelCalls, Exists) {
  EXPECT_TRUE(calls_.exists("/dev"));
  EXPECT_FALSE(calls_.exists("/dev/null/nothing"));
}

}  // namespace
}  // namespace NKRXVEL20::host
