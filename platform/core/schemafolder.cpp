// SPDX-License-Identifier: Apache-2.0
//
// The folder of MOF files. A program reads it at each start, so it is opened once and each file goes
// straight to its place behind the others.
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <system_error>
#include <vector>

#include "mofschema.h"
#include "velhost/schema.h"

namespace NKRXVEL20::host {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLargestFile = std::size_t{4} << 20U;

[[noreturn]] void failRead(const std::string& path, const std::string& why) {
  throw SchemaError(path + ": cannot be read: " + why);
}

[[noreturn]] void failRead(const std::string& path, int error) {
  failRead(path, std::generic_category().message(error));
}

struct CloseFolder {
  void operator()(DIR* folder) const { ::closedir(folder); }
};
using Folder = std::unique_ptr<DIR, CloseFolder>;

bool isMofFile(std::string_view name) {
  constexpr std::string_view kExtension = ".mof";
  return name.size() > kExtension.size() && name.ends_with(kExtension);
}

std::vector<std::string> mofFiles(DIR* folder, const std::string& path) {
  std::vector<std::string> names;
  errno = 0;
  while (const dirent* entry = ::readdir(folder)) {
    if (isMofFile(entry->d_name)) names.emplace_back(entry->d_name);
  }
  if (errno != 0) failRead(path, errno);
  std::ranges::sort(names);
  return names;
}

// A file of the folder, which is opened there by its name.
struct MofFile {
  int folder;
  const std::string& name;
  std::string path;  // for errors
};

class Descriptor {
 public:
  explicit Descriptor(const MofFile& file)
      // NOLINTNEXTLINE(*-vararg): the system call has no other form
      : number_(::openat(file.folder, file.name.c_str(), O_RDONLY | O_CLOEXEC)) {}
  ~Descriptor() {
    if (number_ >= 0) ::close(number_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int number() const { return number_; }

 private:
  int number_;
};

// The size of a regular file: of others none is known, and reading them may never end.
std::size_t sizeOf(const MofFile& file) {
  struct stat status {};
  if (::fstatat(file.folder, file.name.c_str(), &status, 0) != 0) failRead(file.path, errno);
  if (!S_ISREG(status.st_mode)) failRead(file.path, "it is no regular file");
  const auto size = static_cast<std::size_t>(status.st_size);
  if (size > kLargestFile) failRead(file.path, "it is larger than 4 MiB");
  return size;
}

void readInto(std::span<char> room, const MofFile& file) {
  const Descriptor descriptor(file);
  if (descriptor.number() < 0) failRead(file.path, errno);
  while (!room.empty()) {
    const ssize_t count = ::read(descriptor.number(), room.data(), room.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) failRead(file.path, errno);
    if (count == 0) failRead(file.path, "it became shorter meanwhile");
    room = room.subspan(static_cast<std::size_t>(count));
  }
}

}  // namespace

SchemaPtr readSchema(const fs::path& path) {
  const Folder folder(::opendir(path.c_str()));
  if (!folder) failRead(path, errno);
  mof::Source source;
  for (const std::string& name : mofFiles(folder.get(), path)) {
    const MofFile file{::dirfd(folder.get()), name, path.native() + '/' + name};
    source.add(file.path, sizeOf(file), [&](std::span<char> room) { readInto(room, file); });
  }
  if (source.fileCount() == 0) throw SchemaError(path.native() + ": has no .mof file");
  return mof::schemaOf(std::move(source));
}

}  // namespace NKRXVEL20::host
