// SPDX-License-Identifier: Apache-2.0
#include "systemcalls.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>

namespace NKRXVEL20::host {

namespace {

int orError(int result) { return result < 0 ? -errno : result; }

class KernelCalls : public SystemCalls {
 public:
  // NOLINTBEGIN(cppcoreguidelines-pro-type-vararg): open() and ioctl() are declared so
  int open(const char* path) override { return orError(::open(path, O_RDWR | O_CLOEXEC)); }
  int ioctl(int file, unsigned long request, void* argument) override {
    return orError(::ioctl(file, request, argument));
  }
  // NOLINTEND(cppcoreguidelines-pro-type-vararg)
  void close(int file) override { ::close(file); }
  int poll(pollfd& waited, int milliseconds) override {
    return orError(::poll(&waited, 1, milliseconds));
  }
  bool exists(const char* path) override { return ::access(path, F_OK) == 0; }
  std::chrono::steady_clock::time_point now() override { return std::chrono::steady_clock::now(); }
};

}  // namespace

SystemCalls::~SystemCalls() = default;

SystemCalls& kernelCalls() {
  static KernelCalls calls;
  return calls;
}

}  // namespace NKRXVEL20::host
