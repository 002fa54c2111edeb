// SPDX-License-Identifier: Apache-2.0
#include "host/files/outputtarget.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>

#include "host/files/writeall.h"
#include "host/text/inputerror.h"

namespace velhost {
namespace {

namespace fs = std::filesystem;

constexpr int kMostLinks = 40;  // the kernel's own limit
constexpr mode_t kSharedFolder = S_ISVTX | S_IWOTH;

// One name on the way, and the name that the person gave.
struct Step {
  FileCalls& calls;
  const fs::path& file;
  fs::path at;
};

template <class Result>
Result orFail(const Step& step, Result result) {
  if (result < 0) failWrite(step.file, static_cast<int>(-result));
  return result;
}

Descriptor openFolder(const Step& step) {
  const fs::path folder = step.at.has_parent_path() ? step.at.parent_path() : ".";
  return {step.calls, orFail(step, step.calls.openat(AT_FDCWD, folder.c_str(),
                                                     O_PATH | O_DIRECTORY | O_CLOEXEC, 0))};
}

std::optional<struct stat> statusOf(const Step& step, const OutputTarget& target) {
  struct stat status {};
  const int found =
      step.calls.fstatat(target.folder.get(), target.name.c_str(), status, AT_SYMLINK_NOFOLLOW);
  if (found == -ENOENT) return std::nullopt;
  orFail(step, found);
  return status;
}

bool isStrangers(const struct stat& entry, const struct stat& folder) {
  return (folder.st_mode & kSharedFolder) == kSharedFolder && entry.st_uid != ::geteuid() &&
         entry.st_uid != folder.st_uid;
}

// A regular file may be a stranger's: its place is taken, it is not written to.
void refuseStrangers(const Step& step, const OutputTarget& target) {
  if (S_ISREG(target.status->st_mode) || S_ISDIR(target.status->st_mode)) return;
  struct stat folder {};
  orFail(step, step.calls.fstatat(target.folder.get(), "", folder, AT_EMPTY_PATH));
  if (isStrangers(*target.status, folder)) {
    throw InputError(step.file.string() + ": cannot be written: " + step.at.string() +
                     " is another user's, in a folder that everyone may write to");
  }
}

bool isInProc(const Step& step, const OutputTarget& target) {
  struct statfs system {};
  orFail(step, step.calls.fstatfs(target.folder.get(), system));
  return system.f_type == PROC_SUPER_MAGIC;
}

fs::path whereTheLinkLeads(const Step& step, const OutputTarget& target) {
  std::array<char, PATH_MAX> text{};
  const ssize_t size =
      orFail(step, step.calls.readlinkat(target.folder.get(), target.name.c_str(), text));
  return step.at.parent_path() / std::string(text.data(), static_cast<std::size_t>(size));
}

void look(const Step& step, OutputTarget& target) {
  target.folder = openFolder(step);
  target.name = step.at.has_filename() ? step.at.filename().string() : ".";
  target.status = statusOf(step, target);
  if (target.status) refuseStrangers(step, target);
}

}  // namespace

OutputTarget findOutputTarget(FileCalls& calls, const fs::path& file) {
  Step step{calls, file, file};
  OutputTarget target;
  for (int links = 0; links <= kMostLinks; ++links) {
    look(step, target);
    if (!target.status || !S_ISLNK(target.status->st_mode)) return target;
    target.isLinked = true;
    target.isOpenFile = isInProc(step, target);
    if (target.isOpenFile) return target;
    step.at = whereTheLinkLeads(step, target);
  }
  failWrite(file, ELOOP);
}

}  // namespace velhost
