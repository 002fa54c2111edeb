// SPDX-License-Identifier: Apache-2.0
//
// Reads the tables that the kernel offers under /sys/firmware/dmi/tables.
#include <array>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <system_error>

#include "entrypoint.h"
#include "velhost/smbios.h"

namespace NKRXVEL20::host {

namespace {

struct FileCloser {
  // NOLINTNEXTLINE(cppcoreguidelines-owning-memory): this is what owns the file
  void operator()(std::FILE* file) const { std::fclose(file); }
};

[[noreturn]] void refuse(const std::filesystem::path& path, int error) {
  throw LiveSmbiosError(path.string() + ": " + std::generic_category().message(error), error);
}

std::vector<unsigned char> readFile(const std::filesystem::path& path) {
  const std::unique_ptr<std::FILE, FileCloser> file(std::fopen(path.c_str(), "rbe"));
  if (!file) refuse(path, errno);
  std::vector<unsigned char> bytes;
  std::array<unsigned char, 4096> piece{};
  errno = 0;
  while (const std::size_t count = std::fread(piece.data(), 1, piece.size(), file.get())) {
    bytes.insert(bytes.end(), piece.data(), piece.data() + count);
  }
  if (std::ferror(file.get()) != 0) refuse(path, errno);
  return bytes;
}

// Without an entry point that can be read the table's own end is the only limit.
TableLimits readLimits(const std::filesystem::path& path) {
  try {
    return readEntryPoint(readFile(path)).limits;
  } catch (const LiveSmbiosError&) {
    return {};
  } catch (const DmiDumpError&) {
    return {};
  }
}

}  // namespace

LiveSmbiosError::LiveSmbiosError(const std::string& what, int errorNumber)
    : std::runtime_error(what), error(errorNumber) {}

LiveSmbiosError::~LiveSmbiosError() = default;

SmbiosTable readLiveTables(const std::filesystem::path& folder) {
  const std::vector<unsigned char> bytes = readFile(folder / "DMI");
  SmbiosTable table;
  table.structures = splitTable(bytes, readLimits(folder / "smbios_entry_point"));
  return table;
}

}  // namespace NKRXVEL20::host
