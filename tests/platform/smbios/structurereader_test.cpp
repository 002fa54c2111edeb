// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <algorithm>

#include "vel/smbios.h"
#include "velhost/smbios.h"

namespace NKRXVEL20 {
namespace {

using Bytes = std::vector<unsigned char>;
using host::SmbiosTable;

constexpr unsigned char kUntouched = 0xEE;
constexpr std::size_t kBufferSize = 12;

struct Read {
  int status;
  Bytes buffer;  // what was written; behind it the buffer must be as it was

  bool operator==(const Read&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Read& read) {
  return out << read.status << ' ' << testing::PrintToString(read.buffer);
}

class StructureReader : public testing::Test {
 protected:
  ~StructureReader() override {
    smBiosClose(&handle_);
    host::setSmbiosTable(std::nullopt);
  }

  void load(const SmbiosTable& table) {
    host::setSmbiosTable(table);
    ASSERT_EQ(smBiosLoad(nullptr, &handle_), 0);
  }

  Read first(int type, int capacity = kBufferSize) {
    return read(capacity, [&](unsigned char* buffer, int* size) {
      return smBiosGetFirst(handle_, type, buffer, size);
    });
  }

  Read next(int capacity = kBufferSize) {
    return read(capacity, [&](unsigned char* buffer, int* size) {
      return smBiosGetNext(handle_, buffer, size);
    });
  }

  TSmBiosHandle* handle_ = nullptr;

 private:
  template <typename Call>
  Read read(int capacity, Call call) {
    Bytes buffer(kBufferSize, kUntouched);
    int size = capacity;
    const int status = call(buffer.data(), &size);
    EXPECT_EQ(size, capacity);
    while (!buffer.empty() && buffer.back() == kUntouched) buffer.pop_back();
    return {status, buffer};
  }
};

const Bytes kFirstOem = {11, 5, 0x01, 0x00, 1, 'A', 0, 0};
const Bytes kSecondOem = {11, 5, 0x02, 0x00, 0, 0, 0};
const Bytes kBios = {0, 4, 0x03, 0x00, 0, 0};

SmbiosTable tableOf(std::vector<host::SmbiosStructure> structures) {
  return {std::move(structures), 0, 5};
}

const SmbiosTable kMixed = tableOf({{kFirstOem, 0}, {kBios, 0}, {kSecondOem, 0}});

TEST_F(StructureReader, WalksTheStructuresOfAType) {
  load(kMixed);
  EXPECT_EQ(first(11), (Read{0, kFirstOem}));
  EXPECT_EQ(next(), (Read{0, kSecondOem}));
  EXPECT_EQ(next(), (Read{5, {}}));
  EXPECT_EQ(next(), (Read{5, {}}));
}

TEST_F(StructureReader, GetFirstStartsAgain) {
  load(kMixed);
  EXPECT_EQ(first(11), (Read{0, kFirstOem}));
  EXPECT_EQ(first(0), (Read{0, kBios}));
  EXPECT_EQ(next(), (Read{5, {}}));
  EXPECT_EQ(first(11), (Read{0, kFirstOem}));
}

TEST_F(StructureReader, TypesThatAreNotThere) {
  load(kMixed);
  for (const int type : {1, 127, 255, 256, 267, -1, -245}) {
    EXPECT_EQ(first(type), (Read{5, {}})) << type;
  }
}

TEST_F(StructureReader, WritesNoMoreThanTheCapacity) {
  load(tableOf({{kFirstOem, 0}, {kFirstOem, 0}}));
  const struct {
    int capacity;
    Bytes written;
  } cases[] = {
      {8, kFirstOem}, {7, {11, 5, 0x01, 0x00, 1, 'A', 0}}, {1, {11}}, {0, {}}, {-1, {}},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(first(11, c.capacity), (Read{0, c.written})) << c.capacity;
    EXPECT_EQ(next(c.capacity), (Read{0, c.written})) << c.capacity;
  }
}

TEST_F(StructureReader, DeliversStructuresWithTheirStatus) {
  load(tableOf({{kFirstOem, 3}, {kSecondOem, 17}, {kFirstOem, 5}, {kSecondOem, -2}}));
  EXPECT_EQ(first(11), (Read{3, kFirstOem}));
  EXPECT_EQ(next(), (Read{17, kSecondOem}));
  EXPECT_EQ(next(), (Read{5, {}})) << "no more leaves the buffer alone";
  EXPECT_EQ(next(), (Read{-2, kSecondOem}));
}

TEST_F(StructureReader, HostileStructures) {
  load(tableOf({{{}, 0}, {{0}, 0}, {{0, 200}, 0}, {{}, 9}}));
  EXPECT_EQ(first(0), (Read{0, {0}}));
  EXPECT_EQ(next(), (Read{0, {0, 200}}));
  EXPECT_EQ(next(), (Read{5, {}}));
}

TEST_F(StructureReader, EndStatusOfTheMachine) {
  SmbiosTable table = kMixed;
  table.endStatus = 3;
  load(table);
  EXPECT_EQ(first(4), (Read{3, {}}));
}

TEST_F(StructureReader, NextWithoutFirstFails) {
  load(kMixed);
  EXPECT_EQ(next(), (Read{kSmBiosReadFailed, {}}));
}

TEST_F(StructureReader, NullHandleFails) {
  EXPECT_EQ(first(11), (Read{kSmBiosReadFailed, {}}));
  EXPECT_EQ(next(), (Read{kSmBiosReadFailed, {}}));
  EXPECT_EQ(smBiosClose(&handle_), 0);
  EXPECT_EQ(handle_, nullptr);
}

TEST_F(StructureReader, CloseNullsTheHandle) {
  load(kMixed);
  EXPECT_NE(handle_, nullptr);
  EXPECT_EQ(smBiosClose(&handle_), 0);
  EXPECT_EQ(handle_, nullptr);
}

TEST_F(StructureReader, LoadThatFailsLeavesTheHandle) {
  load(kMixed);
  TSmBiosHandle* const before = handle_;
  host::setSmbiosTable(std::nullopt);
  EXPECT_EQ(smBiosLoad(nullptr, &handle_), 1);
  EXPECT_EQ(handle_, before);
  for (const int status : {2, -7}) {
    SmbiosTable refused = kMixed;
    refused.loadStatus = status;
    host::setSmbiosTable(refused);
    EXPECT_EQ(smBiosLoad(nullptr, &handle_), status);
    EXPECT_EQ(handle_, before);
  }
}

TEST_F(StructureReader, OpenHandlesKeepTheirTable) {
  load(kMixed);
  EXPECT_EQ(first(11), (Read{0, kFirstOem}));
  host::setSmbiosTable(tableOf({{kBios, 0}}));
  EXPECT_EQ(next(), (Read{0, kSecondOem}));
  host::setSmbiosTable(std::nullopt);
  EXPECT_EQ(first(0), (Read{0, kBios}));
}

TEST_F(StructureReader, ShowsTheHostTheTableThatIsSet) {
  host::setSmbiosTable(kMixed);
  ASSERT_NE(host::smbiosTable(), nullptr);
  EXPECT_EQ(host::smbiosTable()->structures.size(), kMixed.structures.size());
  host::setSmbiosTable(std::nullopt);
  EXPECT_EQ(host::smbiosTable(), nullptr);
}

TEST_F(StructureReader, HandlesWalkByThemselves) {
  load(kMixed);
  TSmBiosHandle* other = nullptr;
  ASSERT_EQ(smBiosLoad(nullptr, &other), 0);
  EXPECT_EQ(first(11), (Read{0, kFirstOem}));
  Bytes buffer(kBufferSize);
  int size = kBufferSize;
  EXPECT_EQ(smBiosGetFirst(other, 0, buffer.data(), &size), 0);
  EXPECT_EQ(next(), (Read{0, kSecondOem}));
  EXPECT_EQ(smBiosClose(&other), 0);
}

}  // namespace
}  // namespace NKRXVEL20
