// SPDX-License-Identifier: Apache-2.0
#include "host/wholefile.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <system_error>

namespace velhost {
namespace {

constexpr std::size_t kLargestFile = std::size_t{64} << 20U;

struct CloseFile {
  void operator()(std::FILE* file) const noexcept {
    static_cast<void>(std::fclose(file));  // NOLINT(*-owning-memory): FileHandle owns it
  }
};
using FileHandle = std::unique_ptr<std::FILE, CloseFile>;

[[noreturn]] void failRead(int error) { throw std::system_error(error, std::generic_category()); }

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

}  // namespace velhost
