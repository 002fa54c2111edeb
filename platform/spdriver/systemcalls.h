// SPDX-License-Identifier: Apache-2.0
//
// What the live driver asks of the kernel, so that tests can script each answer and each error.
#pragma once

#include <poll.h>

#include <chrono>

namespace NKRXVEL20::host {

// Each call that returns int gives what the system call of that name does, and minus its errno
// where it fails.
class SystemCalls {
 public:
  SystemCalls() = default;
  virtual ~SystemCalls();
  SystemCalls(const SystemCalls&) = delete;
  SystemCalls& operator=(const SystemCalls&) = delete;

  virtual int open(const char* path) = 0;  // for reading and writing
  virtual void close(int file) = 0;
  virtual int ioctl(int file, unsigned long request, void* argument) = 0;
  virtual int poll(pollfd& waited, int milliseconds) = 0;
  virtual bool exists(const char* path) = 0;
  virtual std::chrono::steady_clock::time_point now() = 0;
};

// The kernel's own.
SystemCalls& kernelCalls();

}  // namespace NKRXVEL20::host
