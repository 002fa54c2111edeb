// SPDX-License-Identifier: Apache-2.0
//
// What the host asks of the kernel about files, so that tests can make each call fail.
#pragma once

#include <poll.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <sys/vfs.h>

#include <span>
#include <string_view>

namespace velhost {

// Each call does what the system call of its name does, and gives minus its errno where it fails.
// Two names are in one folder.
class FileCalls {
 public:
  FileCalls() = default;
  virtual ~FileCalls();
  FileCalls(const FileCalls&) = delete;
  FileCalls& operator=(const FileCalls&) = delete;

  virtual int openat(int folder, const char* name, int flags, mode_t mode) = 0;
  virtual int close(int file) = 0;
  virtual int fstatat(int folder, const char* name, struct stat& status, int flags) = 0;
  virtual int fstatfs(int file, struct statfs& status) = 0;
  virtual int faccessat(int folder, const char* name, int mode) = 0;  // by the effective user
  virtual int isatty(int file) = 0;                                   // 1 for a terminal
  virtual int tcgetwinsize(int file, winsize& size) = 0;
  virtual ssize_t readlinkat(int folder, const char* name, std::span<char> text) = 0;
  virtual ssize_t read(int file, std::span<char> bytes) = 0;
  virtual ssize_t write(int file, std::string_view bytes) = 0;
  virtual int poll(pollfd& waited) = 0;  // without a limit of time
  virtual int fchmod(int file, mode_t mode) = 0;
  virtual int fsync(int file) = 0;
  virtual int renameat2(int folder, const char* from, const char* to, unsigned flags) = 0;
  virtual int linkat(int folder, const char* from, const char* to) = 0;
  virtual int unlinkat(int folder, const char* name) = 0;
};

// The kernel's own.
FileCalls& kernelFiles();

// An open file; none (-1) when it has been closed or was never opened.
class Descriptor {
 public:
  Descriptor() = default;
  Descriptor(FileCalls& calls, int file) : calls_(&calls), file_(file) {}
  ~Descriptor();
  Descriptor(Descriptor&& other) noexcept;
  Descriptor& operator=(Descriptor&& other) noexcept;
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int get() const { return file_; }

  // 0, or minus an errno: some file systems tell only here that something was not written.
  int close();

 private:
  FileCalls* calls_ = nullptr;
  int file_ = -1;
};

}  // namespace velhost
