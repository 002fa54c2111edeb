// SPDX-License-Identifier: Apache-2.0
#include "host/wholefile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <system_error>
#include <utility>

#include "host/inputerror.h"
#include "host/writeall.h"

namespace velhost {
namespace {

constexpr std::size_t kLargestFile = std::size_t{64} << 20U;
constexpr mode_t kNewFileMode = 0666;  // less the umask, as any other program's new file
constexpr mode_t kPrivateFileMode = 0600;

struct CloseFile {
  void operator()(std::FILE* file) const noexcept {
    static_cast<void>(std::fclose(file));  // NOLINT(*-owning-memory): FileHandle owns it
  }
};
using FileHandle = std::unique_ptr<std::FILE, CloseFile>;

[[noreturn]] void failRead(int error) { throw std::system_error(error, std::generic_category()); }

// /dev/stdout and its like lead to files that somebody has open already.
bool isDeviceName(const std::filesystem::path& file) {
  const std::string name = std::filesystem::absolute(file).lexically_normal().string();
  return name.starts_with("/dev/") || name.starts_with("/proc/");
}

bool replaceable(const std::filesystem::path& file) {
  if (isDeviceName(file)) return false;
  std::error_code ignored;
  const auto status = std::filesystem::status(file, ignored);
  return !std::filesystem::exists(status) || std::filesystem::is_regular_file(status);
}

// The file that the name leads to, so that a symbolic link stays one.
std::filesystem::path resolved(const std::filesystem::path& file) {
  std::error_code failed;
  auto real = std::filesystem::canonical(file, failed);
  return failed ? file : real;
}

[[noreturn]] void refuseToReplace(const std::filesystem::path& file) {
  throw InputError(file.string() + ": is there already; --force replaces it");
}

bool isThere(const std::filesystem::path& file) {
  std::error_code ignored;
  return std::filesystem::exists(std::filesystem::symlink_status(file, ignored));
}

// False with errno, EEXIST for a target that has come into being meanwhile. Some file systems do not
// know the flag; those know links.
bool moveWithoutReplacing(const std::filesystem::path& from, const std::filesystem::path& to) {
  if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return true;
  if (errno != EINVAL && errno != ENOSYS) return false;
  return ::link(from.c_str(), to.c_str()) == 0 && ::unlink(from.c_str()) == 0;
}

// The new file gets the permissions of the one whose place it takes.
void copyMode(const std::filesystem::path& from, int to) {
  struct stat status {};
  if (::stat(from.c_str(), &status) == 0) static_cast<void>(::fchmod(to, status.st_mode & 07777U));
}

}  // namespace

std::string readWholeFile(const std::filesystem::path& file) {
  const FileHandle handle(std::fopen(file.c_str(), "rbe"));
  if (!handle) failRead(errno);
  std::string text;
  std::array<char, 65536> block{};
  for (;;) {
    errno = 0;
    const std::size_t count = std::fread(block.data(), 1, block.size(), handle.get());
    text.append(block.data(), count);
    if (text.size() > kLargestFile) failRead(EFBIG);
    if (count == block.size()) continue;
    if (std::ferror(handle.get()) != 0) failRead(errno);
    return text;
  }
}

OutputFile::OutputFile(std::filesystem::path file, FileRules rules)
    : target_(std::move(file)), rules_(rules) {
  if (target_.empty()) throw InputError("--output needs the name of a file");
  int flags = O_WRONLY | O_CLOEXEC;
  if (replaceable(target_)) {
    if (!rules_.mayReplace && isThere(target_)) refuseToReplace(target_);
    target_ = resolved(target_);
    written_ = target_;
    written_ += ".velhost-" + std::to_string(::getpid());
    flags |= O_CREAT | O_EXCL;
  } else {
    written_ = target_;
    flags |= O_APPEND;
  }
  const mode_t mode = rules_.isPrivate ? kPrivateFileMode : kNewFileMode;
  // NOLINTNEXTLINE(*-vararg): the system call has no other form
  descriptor_ = ::open(written_.c_str(), flags, mode);
  if (descriptor_ < 0) failWrite(target_, errno);
  if (written_ != target_ && !rules_.isPrivate) copyMode(target_, descriptor_);
}

OutputFile::~OutputFile() {
  if (descriptor_ >= 0) ::close(descriptor_);
  if (!written_.empty() && written_ != target_) ::unlink(written_.c_str());
}

void OutputFile::write(std::string_view text) {
  const int error = writeAll(kernelFiles(), descriptor_, text);
  if (error < 0) failWrite(target_, -error);
  const bool isNew = written_ != target_;
  if (isNew && ::fsync(descriptor_) != 0) failWrite(target_, errno);
  if (::close(std::exchange(descriptor_, -1)) != 0) failWrite(target_, errno);
  if (isNew) takePlace();
}

void OutputFile::takePlace() {
  const bool moved = rules_.mayReplace ? ::rename(written_.c_str(), target_.c_str()) == 0
                                       : moveWithoutReplacing(written_, target_);
  if (!moved && !rules_.mayReplace && errno == EEXIST) refuseToReplace(target_);
  if (!moved) failWrite(target_, errno);
  written_.clear();
}

}  // namespace velhost
