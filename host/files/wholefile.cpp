// SPDX-License-Identifier: Apache-2.0
#include "host/files/wholefile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <vector>

namespace velhost {
namespace {

constexpr std::size_t kLargestFile = std::size_t{64} << 20U;
constexpr std::size_t kBlockSize = 65536;

constexpr struct {
  mode_t type;
  const char* name;
} kFileTypes[] = {
    {S_IFDIR, "a folder"}, {S_IFIFO, "a pipe"},    {S_IFCHR, "a device"},
    {S_IFBLK, "a device"}, {S_IFSOCK, "a socket"},
};

[[noreturn]] void fail(int error) { throw FileReadError(std::generic_category().message(error)); }

[[noreturn]] void refuse(mode_t type) {
  std::string name = "something else";
  for (const auto& row : kFileTypes) {
    if (row.type == type) name = row.name;
  }
  throw FileReadError("it is " + name + ", not a regular file");
}

mode_t typeOf(FileCalls& calls, int folder, const char* name, int flags) {
  struct stat status {};
  if (const int error = calls.fstatat(folder, name, status, flags); error < 0) fail(-error);
  return status.st_mode & S_IFMT;
}

void expectReadable(mode_t type, ReadFrom from) {
  const bool isStream = type == S_IFIFO || type == S_IFCHR;
  if (type == S_IFREG || (isStream && from == ReadFrom::kFileOrStream)) return;
  refuse(type);
}

// The type is looked at before the file is opened, as some devices act when they are (a watchdog
// starts, a tape rewinds), and again after, as another file may have taken the name.
Descriptor openToRead(FileCalls& calls, const char* name, ReadFrom from) {
  expectReadable(typeOf(calls, AT_FDCWD, name, 0), from);
  const int flags = O_RDONLY | O_CLOEXEC | O_NOCTTY;
  const int file =
      calls.openat(AT_FDCWD, name, from == ReadFrom::kRegularFile ? flags | O_NONBLOCK : flags, 0);
  if (file < 0) fail(-file);
  Descriptor opened(calls, file);
  const mode_t type = typeOf(calls, file, "", AT_EMPTY_PATH);
  expectReadable(type, from);
  if (type == S_IFCHR && calls.isatty(file) != 1) refuse(type);
  return opened;
}

// The number of bytes read, 0 at the end. EAGAIN is an error: some files of /proc and tracefs call
// themselves regular and wait for what happens next.
std::size_t readBlock(FileCalls& calls, int file, std::span<char> block) {
  for (;;) {
    const ssize_t count = calls.read(file, block);
    if (count >= 0) return static_cast<std::size_t>(count);
    if (count != -EINTR) fail(static_cast<int>(-count));
  }
}

std::string readToEnd(FileCalls& calls, int file) {
  std::string text;
  std::vector<char> block(kBlockSize);
  while (const std::size_t count = readBlock(calls, file, block)) {
    text.append(block.data(), count);
    if (text.size() > kLargestFile) fail(EFBIG);
  }
  return text;
}

}  // namespace

std::string readWholeFile(const std::filesystem::path& file, ReadFrom from, FileCalls& calls) {
  const Descriptor opened = openToRead(calls, file.c_str(), from);
  return readToEnd(calls, opened.get());
}

std::string readStandardInput(FileCalls& calls) { return readToEnd(calls, STDIN_FILENO); }

}  // namespace velhost
