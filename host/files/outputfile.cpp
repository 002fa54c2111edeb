// SPDX-License-Identifier: Apache-2.0
#include "host/files/outputfile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <random>
#include <string>
#include <utility>

#include "host/files/interruption.h"
#include "host/files/signalsheld.h"
#include "host/files/writeall.h"
#include "host/text/inputerror.h"

namespace velhost {
namespace {

constexpr mode_t kNewFileMode = 0666;  // less the umask, as any other program's new file
constexpr mode_t kPrivateFileMode = 0600;
// What a new file takes over of the old one's mode: no set-id bits, as they are not for what we
// write, and from another user's file no leave to write for others.
constexpr mode_t kOurPermissions = 0777;
constexpr mode_t kStrangersPermissions = 0755;
constexpr int kMostNames = 100;

// Short, so that it fits where any name fits.
std::string randomName() { return ".velhost-" + std::to_string(std::random_device{}()); }

[[noreturn]] void refuseToReplace(const std::filesystem::path& file) {
  throw InputError(file.string() + ": is there already; --force replaces it");
}

bool isReplaced(const OutputTarget& target) {
  return !target.isOpenFile && (!target.status || S_ISREG(target.status->st_mode));
}

mode_t keptMode(const struct stat& old) {
  return old.st_mode & (old.st_uid == ::geteuid() ? kOurPermissions : kStrangersPermissions);
}

// A file under a name of its own, which is removed at the end unless it got another one.
class NewFile {
 public:
  NewFile(FileCalls& calls, int folder, mode_t mode) : calls_(calls), folder_(folder) {
    int file = -EEXIST;
    for (int i = 0; i < kMostNames && file == -EEXIST; ++i) {
      name_ = randomName();
      file = calls.openat(folder, name_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
    }
    error_ = file < 0 ? file : 0;
    file_ = Descriptor(calls, file);
  }
  ~NewFile() {
    if (error_ == 0 && !isRenamed_) calls_.unlinkat(folder_, name_.c_str());
  }
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  int error() const { return error_; }  // 0, or minus the errno with which it could not be made

  // Whole and on the disk, so that not even a power cut leaves a part of it under the final name.
  // 0 or minus an errno, like what follows.
  int fill(std::string_view text) {
    if (const int error = writeAll(calls_, file_.get(), text); error < 0) return error;
    if (const int error = calls_.fsync(file_.get()); error < 0) return error;
    return file_.close();
  }

  // A file system without permissions refuses; the file stays as private as it was made.
  void giveMode(mode_t mode) { static_cast<void>(calls_.fchmod(file_.get(), mode)); }

  int replace(const char* name) {
    const int error = calls_.renameat2(folder_, name_.c_str(), name, 0);
    isRenamed_ = error == 0;
    return error;
  }

  // -EEXIST for a name that has come into being meanwhile. Some file systems do not know the flag;
  // those know links.
  int takeFreeName(const char* name) {
    const int error = calls_.renameat2(folder_, name_.c_str(), name, RENAME_NOREPLACE);
    isRenamed_ = error == 0;
    if (error != -EINVAL && error != -ENOSYS) return error;
    return calls_.linkat(folder_, name_.c_str(), name);
  }

 private:
  FileCalls& calls_;
  int folder_;
  std::string name_;
  Descriptor file_;
  int error_ = 0;
  bool isRenamed_ = false;
};

}  // namespace

OutputFile::OutputFile(std::filesystem::path file, FileRules rules, FileCalls& calls)
    : calls_(calls), file_(std::move(file)), rules_(rules) {
  if (file_.empty()) throw InputError("--output needs the name of a file");
  target_ = findOutputTarget(calls_, file_);
  if (isReplaced(target_)) {
    expectRoom();
  } else {
    open();
  }
}

void OutputFile::expectRoom() const {
  if (!rules_.mayReplace && (target_.status || target_.isLinked)) refuseToReplace(file_);
  orFail(calls_.faccessat(target_.folder.get(), ".", W_OK | X_OK));
}

// Added to the end, as somebody else may write there too.
void OutputFile::open() {
  const int flags = O_WRONLY | O_APPEND | O_CLOEXEC | O_NOCTTY;
  const int follow = target_.isOpenFile ? 0 : O_NOFOLLOW;
  open_ = Descriptor(
      calls_, orFail(calls_.openat(target_.folder.get(), target_.name.c_str(), flags | follow, 0)));
}

void OutputFile::write(std::string_view text) {
  if (isReplaced(target_)) return replace(text);
  noteWritten();
  orFail(writeAll(calls_, open_.get(), text));
  orFail(open_.close());
}

// A file that takes an old one's place is ours alone until it has the old one's permissions.
void OutputFile::replace(std::string_view text) const {
  const bool keepsMode = target_.status && !rules_.isPrivate;
  const bool isOurs = target_.status || rules_.isPrivate;
  const SignalsHeld held;  // the new file would stay behind under its first name
  NewFile file(calls_, target_.folder.get(), isOurs ? kPrivateFileMode : kNewFileMode);
  orFail(file.error());
  if (keepsMode) file.giveMode(keptMode(*target_.status));
  orFail(file.fill(text));
  const char* const name = target_.name.c_str();
  const int error = rules_.mayReplace ? file.replace(name) : file.takeFreeName(name);
  if (error == -EEXIST && !rules_.mayReplace) refuseToReplace(file_);
  orFail(error);
  noteWritten();
}

int OutputFile::orFail(int result) const {
  if (result < 0) failWrite(file_, -result);
  return result;
}

}  // namespace velhost
