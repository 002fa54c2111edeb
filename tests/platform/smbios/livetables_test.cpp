// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <stdlib.h>

#include <cerrno>
#include <fstream>
#include <string>

#include "velhost/smbios.h"

namespace NKRXVEL20::host {
namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<unsigned char>;

const Bytes kBios = {0, 4, 0x01, 0x00, 'X', 0, 0};
const Bytes kEnd = {127, 4, 0x02, 0x00, 0, 0};
const Bytes kBehind = {2, 4, 0x03, 0x00, 0, 0};

class LiveTables : public testing::Test {
 protected:
  LiveTables() {
    std::string name = (fs::temp_directory_path() / "livetables.XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder");
    folder_ = name;
  }

  ~LiveTables() override { fs::remove_all(folder_); }

  void write(const char* name, const Bytes& bytes) const {
    std::ofstream file(folder_ / name, std::ios::binary);
    for (const unsigned char byte : bytes) file.put(static_cast<char>(byte));
  }

  std::vector<Bytes> structures() const {
    std::vector<Bytes> bytes;
    for (const SmbiosStructure& structure : readLiveTables(folder_).structures) {
      bytes.push_back(structure.bytes);
    }
    return bytes;
  }

  void expectError(const std::string& text, int error) const {
    try {
      readLiveTables(folder_);
      ADD_FAILURE() << "no error, but expected " << text;
    } catch (const LiveSmbiosError& caught) {
      EXPECT_EQ(caught.what(), (folder_ / "DMI").string() + ": " + text);
      EXPECT_EQ(caught.error, error);
    }
  }

  fs::path folder_;
};

Bytes joined(const std::vector<Bytes>& parts) {
  Bytes all;
  for (const Bytes& part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}

// Legacy, for a count of 1: 0x198 + 0x13 + 0x01 = 0x1AC.
const Bytes kCountOfOne = {'_', 'D', 'M', 'I', '_', 0x54, 0x13, 0, 0, 0, 0, 0, 0x01, 0, 0};
// 64-bit: 0x191 + 0x18 + 0x03 + 0x01 + 0x13 = 0x1C0.
const Bytes kStopAtEnd = {'_',  'S', 'M', '3', '_', 0x40, 0x18, 3, 0, 0, 1, 0,
                          0x13, 0,   0,   0,   0,   0,    0,    0, 0, 0, 0, 0};

TEST_F(LiveTables, TheEntryPointLimitsTheTable) {
  const struct {
    const char* what;
    std::optional<Bytes> entryPoint;
    std::vector<Bytes> expected;
  } cases[] = {
      {"no entry point", std::nullopt, {kBios, kEnd, kBehind}},
      {"empty entry point", Bytes{}, {kBios, kEnd, kBehind}},
      {"odd entry point", Bytes(24, 0xFF), {kBios, kEnd, kBehind}},
      {"structure count", kCountOfOne, {kBios}},
      {"64-bit", kStopAtEnd, {kBios, kEnd}},
  };
  write("DMI", joined({kBios, kEnd, kBehind}));
  for (const auto& c : cases) {
    if (c.entryPoint) write("smbios_entry_point", *c.entryPoint);
    EXPECT_EQ(structures(), c.expected) << c.what;
  }
}

TEST_F(LiveTables, ReadsTablesLongerThanAPiece) {
  const Bytes block = joined({kBios, kBehind});
  Bytes table;
  for (int i = 0; i < 700; ++i) table.insert(table.end(), block.begin(), block.end());
  write("DMI", table);
  EXPECT_EQ(joined(structures()), table);
  EXPECT_EQ(structures().size(), 1400U);
}

TEST_F(LiveTables, StatusesAreThoseOfAGoodTable) {
  write("DMI", kBios);
  const SmbiosTable table = readLiveTables(folder_);
  EXPECT_EQ(table.loadStatus, 0);
  EXPECT_EQ(table.endStatus, 5);
}

TEST_F(LiveTables, NoTable) {
  write("smbios_entry_point", kStopAtEnd);
  expectError("No such file or directory", ENOENT);
}

TEST_F(LiveTables, TableThatCannotBeOpened) {
  fs::create_symlink("DMI", folder_ / "DMI");
  expectError("Too many levels of symbolic links", ELOOP);
}

TEST_F(LiveTables, TableThatCannotBeRead) {
  fs::create_directory(folder_ / "DMI");
  expectError("Is a directory", EISDIR);
}

}  // namespace
}  // namespace NKRXVEL20::host
