// SPDX-License-Identifier: Apache-2.0
//
// The folder of MOF files.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <vector>

#include "velhost/schema.h"

namespace NKRXVEL20::host {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLargestFile = std::size_t{4} << 20U;

[[noreturn]] void failRead(const fs::path& path, const std::string& why) {
  throw SchemaError(path.string() + ": cannot be read: " + why);
}

std::vector<fs::path> mofFiles(const fs::path& folder) {
  std::error_code failed;
  std::vector<fs::path> files;
  for (fs::directory_iterator entry(folder, failed), end; !failed && entry != end;
       entry.increment(failed)) {
    if (entry->path().extension() == ".mof") files.push_back(entry->path());
  }
  if (failed) failRead(folder, failed.message());
  std::ranges::sort(files);
  return files;
}

class Descriptor {
 public:
  // NOLINTNEXTLINE(*-vararg): the system call has no other form
  explicit Descriptor(const fs::path& file) : number_(::open(file.c_str(), O_RDONLY | O_CLOEXEC)) {}
  ~Descriptor() {
    if (number_ >= 0) ::close(number_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int number() const { return number_; }

 private:
  int number_;
};

std::string systemText(int error) { return std::generic_category().message(error); }

// The size of a regular file: of others none is known, and reading them may never end.
std::size_t sizeOf(const fs::path& file) {
  struct stat status {};
  if (::stat(file.c_str(), &status) != 0) failRead(file, systemText(errno));
  if (!S_ISREG(status.st_mode)) failRead(file, "it is no regular file");
  const auto size = static_cast<std::size_t>(status.st_size);
  if (size > kLargestFile) failRead(file, "it is larger than 4 MiB");
  return size;
}

std::string textOf(const fs::path& file) {
  std::string text(sizeOf(file), '\0');
  const Descriptor descriptor(file);
  if (descriptor.number() < 0) failRead(file, systemText(errno));
  std::size_t have = 0;
  while (have < text.size()) {
    const ssize_t count = ::read(descriptor.number(), text.data() + have, text.size() - have);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) failRead(file, systemText(errno));
    if (count == 0) failRead(file, "it became shorter meanwhile");
    have += static_cast<std::size_t>(count);
  }
  return text;
}

}  // namespace

SchemaPtr readSchema(const fs::path& folder) {
  std::vector<SchemaFile> files;
  for (const fs::path& file : mofFiles(folder)) files.push_back({file.string(), textOf(file)});
  if (files.empty()) throw SchemaError(folder.string() + ": has no .mof file");
  return parseSchema(files);
}

}  // namespace NKRXVEL20::host
