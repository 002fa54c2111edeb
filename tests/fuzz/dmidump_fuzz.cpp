// SPDX-License-Identifier: Apache-2.0
//
// The first byte chooses an entry point, whose checksums are put right so that the bytes behind
// them are reached; the rest is the dump. A dump is read or refused with a DmiDumpError. Its structures stand
// in it one behind the other, and there are no more than were allowed. The same bytes in the two files that
// the kernel shows (smbios_entry_point and DMI) give structures that begin the second one.
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <numeric>
#include <optional>
#include <string_view>

#include "tests/fuzz/require.h"
#include "velhost/smbios.h"

using namespace NKRXVEL20::host;

namespace {

using fuzz::require;
using Dump = std::vector<unsigned char>;

void put(Dump& dump, std::size_t at, std::string_view text) {
  std::copy(text.begin(), text.end(), dump.begin() + static_cast<std::ptrdiff_t>(at));
}

void mend(Dump& dump, std::size_t begin, std::size_t size, std::size_t checksum) {
  const auto first = dump.begin() + static_cast<std::ptrdiff_t>(begin);
  dump[checksum] = 0;
  const unsigned sum = std::accumulate(first, first + static_cast<std::ptrdiff_t>(size), 0U);
  dump[checksum] = static_cast<unsigned char>(256 - sum % 256);
}

void makePlausible(Dump& dump, unsigned kind) {
  if (dump.size() < 0x20 || kind == 0) return;
  if (kind == 1) {
    put(dump, 0, "_SM3_");
    dump[6] = 0x18;
    mend(dump, 0, 0x18, 5);
  } else if (kind == 2) {
    put(dump, 0, "_SM_");
    put(dump, 0x10, "_DMI_");
    dump[5] = 0x1F;
    mend(dump, 0x10, 0x0F, 0x15);
    mend(dump, 0, 0x1F, 4);
  } else {
    put(dump, 0, "_DMI_");
    mend(dump, 0, 0x0F, 5);
  }
}

std::optional<SmbiosTable> parsed(const Dump& dump, std::optional<std::size_t> most) {
  try {
    return parseDmiDump(dump, most);
  } catch (const DmiDumpError& error) {
    require(*error.what() != 0, "a refusal has a reason");
    return std::nullopt;
  }
}

// Where the table begins, its structures stand without a gap.
void checkPlace(const SmbiosTable& table, const Dump& dump) {
  Dump all;
  for (const SmbiosStructure& structure : table.structures) {
    require(structure.bytes.size() >= 4 && structure.status == 0, "a structure has its header");
    all.insert(all.end(), structure.bytes.begin(), structure.bytes.end());
  }
  require(
      all.empty() || std::search(dump.begin(), dump.end(), all.begin(), all.end()) != dump.end(),
      "the structures stand in the dump");
}

void checkMost(const SmbiosTable& table, const Dump& dump) {
  const std::size_t count = table.structures.size();
  require(parsed(dump, count).has_value(), "as many as there are may be");
  require(count == 0 || !parsed(dump, count - 1), "one too many is refused");
}

// Of this process; gone with it.
class KernelsFolder {
 public:
  KernelsFolder() { std::filesystem::create_directories(path_); }
  ~KernelsFolder() { std::filesystem::remove_all(path_); }
  KernelsFolder(const KernelsFolder&) = delete;
  KernelsFolder& operator=(const KernelsFolder&) = delete;

  void write(const char* name, std::span<const unsigned char> bytes) const {
    std::ofstream(path_ / name, std::ios::binary) << std::string(bytes.begin(), bytes.end());
  }
  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_ =
      std::filesystem::temp_directory_path() / ("dmidump_fuzz." + std::to_string(::getpid()));
};

void checkLive(std::span<const unsigned char> dump) {
  static const KernelsFolder folder;
  const std::size_t entrySize = std::min<std::size_t>(dump.size(), 0x20);
  folder.write("smbios_entry_point", dump.first(entrySize));
  const auto rest = dump.subspan(entrySize);
  folder.write("DMI", rest);
  auto at = rest.begin();
  for (const auto& structure : readLiveTables(folder.path()).structures) {
    const auto& bytes = structure.bytes;
    require(bytes.size() <= static_cast<std::size_t>(rest.end() - at), "no byte is made up");
    require(std::equal(bytes.begin(), bytes.end(), at), "a structure is what the file has");
    at += static_cast<std::ptrdiff_t>(bytes.size());
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  Dump dump(data + 1, data + size);
  makePlausible(dump, *data % 4);
  checkLive(dump);
  const auto table = parsed(dump, std::nullopt);
  if (!table) return 0;
  checkPlace(*table, dump);
  checkMost(*table, dump);
  return 0;
}
