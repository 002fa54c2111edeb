// SPDX-License-Identifier: Apache-2.0
//
// The kernel's file calls, kept one word a call, of which the test scripts some.
#pragma once

#include <algorithm>
#include <cerrno>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "host/files/filecalls.h"

namespace velhost {

class ScriptedFiles : public FileCalls {
 public:
  // By the call's name, in turn. A negative result is given without making the call, a positive one
  // is the most that a read or write takes, 0 and what is not scripted lets the call be made.
  std::map<std::string, std::deque<int>> results;
  std::optional<int> columns;                           // of the terminal; -1: there is none
  std::function<void(const std::string& call)> before;  // each call
  std::vector<std::string> calls;

  int openat(int folder, const char* name, int flags, mode_t mode) override {
    return make("openat", [&](int) { return kernelFiles().openat(folder, name, flags, mode); });
  }
  int close(int file) override {
    const int closed = kernelFiles().close(file);  // also when it is to fail
    return make("close", [&](int) { return closed; });
  }
  int fstatat(int folder, const char* name, struct stat& status, int flags) override {
    return make("fstatat", [&](int) { return kernelFiles().fstatat(folder, name, status, flags); });
  }
  int fstatfs(int file, struct statfs& status) override {
    return make("fstatfs", [&](int) { return kernelFiles().fstatfs(file, status); });
  }
  int faccessat(int folder, const char* name, int mode) override {
    return make("faccessat", [&](int) { return kernelFiles().faccessat(folder, name, mode); });
  }
  int isatty(int file) override {
    return make("isatty", [&](int yes) { return yes > 0 ? yes : kernelFiles().isatty(file); });
  }
  int tcgetwinsize(int file, winsize& size) override {
    return make("tcgetwinsize", [&](int) {
      if (!columns) return kernelFiles().tcgetwinsize(file, size);
      size.ws_col = static_cast<unsigned short>(std::max(*columns, 0));
      return *columns < 0 ? -ENOTTY : 0;
    });
  }
  ssize_t readlinkat(int folder, const char* name, std::span<char> text) override {
    return make("readlinkat", [&](int) { return kernelFiles().readlinkat(folder, name, text); });
  }
  ssize_t read(int file, std::span<char> bytes) override {
    return make("read", [&](int most) {
      return kernelFiles().read(file,
                                most > 0 ? bytes.first(static_cast<std::size_t>(most)) : bytes);
    });
  }
  ssize_t write(int file, std::string_view bytes) override {
    return make("write", [&](int most) {
      return kernelFiles().write(
          file, most > 0 ? bytes.substr(0, static_cast<std::size_t>(most)) : bytes);
    });
  }
  int poll(pollfd& waited) override {
    return make("poll", [&](int) { return kernelFiles().poll(waited); });
  }
  int fchmod(int file, mode_t mode) override {
    return make("fchmod", [&](int) { return kernelFiles().fchmod(file, mode); });
  }
  int fsync(int file) override {
    return make("fsync", [&](int) { return kernelFiles().fsync(file); });
  }
  int renameat2(int folder, const char* from, const char* to, unsigned flags) override {
    return make("renameat2", [&](int) { return kernelFiles().renameat2(folder, from, to, flags); });
  }
  int linkat(int folder, const char* from, const char* to) override {
    return make("linkat", [&](int) { return kernelFiles().linkat(folder, from, to); });
  }
  int unlinkat(int folder, const char* name) override {
    return make("unlinkat", [&](int) { return kernelFiles().unlinkat(folder, name); });
  }

 private:
  template <class Call>
  auto make(const std::string& name, Call call) -> decltype(call(0)) {
    calls.push_back(name);
    if (before) before(name);
    auto& script = results[name];
    int result = 0;
    if (!script.empty()) {
      result = script.front();
      script.pop_front();
    }
    return result < 0 ? result : call(result);
  }
};

}  // namespace velhost
