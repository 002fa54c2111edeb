// SPDX-License-Identifier: Apache-2.0
#include "host/files/filecalls.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <utility>

namespace velhost {
namespace {

template <class Result>
Result orError(Result result) {
  return result < 0 ? -errno : result;
}

class KernelFiles : public FileCalls {
 public:
  int openat(int folder, const char* name, int flags, mode_t mode) override {
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-vararg): it is declared so
    return orError(::openat(folder, name, flags, mode));
  }
  int close(int file) override { return orError(::close(file)); }
  int fstatat(int folder, const char* name, struct stat& status, int flags) override {
    return orError(::fstatat(folder, name, &status, flags));
  }
  int fstatfs(int file, struct statfs& status) override {
    return orError(::fstatfs(file, &status));
  }
  int faccessat(int folder, const char* name, int mode) override {
    return orError(::faccessat(folder, name, mode, AT_EACCESS));
  }
  int isatty(int file) override { return ::isatty(file) == 1 ? 1 : -errno; }
  int tcgetwinsize(int file, winsize& size) override {
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-vararg): the C library's tcgetwinsize is too new
    return orError(::ioctl(file, TIOCGWINSZ, &size));
  }
  ssize_t readlinkat(int folder, const char* name, std::span<char> text) override {
    return orError(::readlinkat(folder, name, text.data(), text.size()));
  }
  ssize_t read(int file, std::span<char> bytes) override {
    return orError(::read(file, bytes.data(), bytes.size()));
  }
  ssize_t write(int file, std::string_view bytes) override {
    return orError(::write(file, bytes.data(), bytes.size()));
  }
  int poll(pollfd& waited) override { return orError(::poll(&waited, 1, -1)); }
  int fchmod(int file, mode_t mode) override { return orError(::fchmod(file, mode)); }
  int fsync(int file) override { return orError(::fsync(file)); }
  int renameat2(int folder, const char* from, const char* to, unsigned flags) override {
    return orError(::renameat2(folder, from, folder, to, flags));
  }
  int linkat(int folder, const char* from, const char* to) override {
    return orError(::linkat(folder, from, folder, to, 0));
  }
  int unlinkat(int folder, const char* name) override {
    return orError(::unlinkat(folder, name, 0));
  }
};

}  // namespace

FileCalls::~FileCalls() = default;

FileCalls& kernelFiles() {
  static KernelFiles files;
  return files;
}

Descriptor::~Descriptor() { static_cast<void>(close()); }

Descriptor::Descriptor(Descriptor&& other) noexcept
    : calls_(other.calls_), file_(std::exchange(other.file_, -1)) {}

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept {
  std::swap(calls_, other.calls_);
  std::swap(file_, other.file_);
  return *this;
}

int Descriptor::close() { return file_ < 0 ? 0 : calls_->close(std::exchange(file_, -1)); }

}  // namespace velhost
