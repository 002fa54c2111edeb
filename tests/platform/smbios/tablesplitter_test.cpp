// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "velhost/smbios.h"

namespace NKRXVEL20::host {
namespace {

using Table = std::vector<unsigned char>;
using Structures = std::vector<Table>;

// Type 0 of 5 bytes with the strings "A" and "B"; type 11 of 4 bytes without a string; type 127.
const Table kBios = {0, 5, 0x10, 0x00, 1, 'A', 0, 'B', 0, 0};
const Table kOem = {11, 4, 0x11, 0x00, 0, 0};
const Table kEnd = {127, 4, 0x12, 0x00, 0, 0};

Table joined(const Structures& parts) {
  Table table;
  for (const Table& part : parts) table.insert(table.end(), part.begin(), part.end());
  return table;
}

const TableLimits kNone;
const TableLimits kNoStructure{.structureCount = 0, .stopAtEndOfTable = false};
const TableLimits kTwo{.structureCount = 2, .stopAtEndOfTable = false};
const TableLimits kNine{.structureCount = 9, .stopAtEndOfTable = false};
const TableLimits kToEnd{.structureCount = std::nullopt, .stopAtEndOfTable = true};

const struct {
  const char* what;
  Table table;
  TableLimits limits;
  Structures expected;
} kCases[] = {
    {"empty table", {}, kNone, {}},
    {"one structure", kBios, kNone, {kBios}},
    {"no limit reads behind type 127", joined({kBios, kEnd, kOem}), kNone, {kBios, kEnd, kOem}},
    {"type 127 ends the table and belongs to it",
     joined({kBios, kEnd, kOem}),
     kToEnd,
     {kBios, kEnd}},
    {"count ends the table", joined({kBios, kEnd, kOem}), kTwo, {kBios, kEnd}},
    {"count of none", kBios, kNoStructure, {}},
    {"count beyond the table", joined({kBios, kOem}), kNine, {kBios, kOem}},
    {"three bytes are no header", {0, 4, 0x10}, kNone, {}},
    {"header with nothing behind it", {0, 4, 0x10, 0}, kNone, {{0, 4, 0x10, 0}}},
    {"Length 0 behind a good one", joined({kOem, {1, 0, 0, 0, 0, 0}}), kNone, {kOem}},
    {"Length 3", {1, 3, 0, 0, 0, 0}, kNone, {}},
    {"Length one past the end", {1, 7, 0, 0, 0, 0}, kNone, {}},
    {"Length up to the end", {1, 6, 0, 0, 0, 0}, kNone, {{1, 6, 0, 0, 0, 0}}},
    {"Length 255 in a short table", {1, 255, 0, 0, 0, 0}, kNone, {}},
    {"string set of one zero", {1, 4, 0, 0, 0}, kNone, {{1, 4, 0, 0, 0}}},
    {"string without its zeros", {1, 4, 0, 0, 'A', 'B'}, kNone, {{1, 4, 0, 0, 'A', 'B'}}},
    {"string set without its second zero",
     {1, 4, 0, 0, 'A', 'B', 0},
     kNone,
     {{1, 4, 0, 0, 'A', 'B', 0}}},
    {"zeros of the formatted area do not end the set",
     {1, 6, 0, 0, 0, 0, 'A', 0, 0, 9},
     kNone,
     {{1, 6, 0, 0, 0, 0, 'A', 0, 0}}},
    {"bytes behind the last structure that are no header", joined({kBios, {1, 4}}), kNone, {kBios}},
    {"all zero", Table(64, 0), kNone, {}},
    {"all ones", Table(64, 0xFF), kNone, {}},
};

TEST(SplitTable, CutsAtTheDoubleZeros) {
  for (const auto& c : kCases) {
    Structures actual;
    for (const SmbiosStructure& structure : splitTable(c.table, c.limits)) {
      EXPECT_EQ(structure.status, 0) << c.what;
      actual.push_back(structure.bytes);
    }
    EXPECT_EQ(actual, c.expected) << c.what;
  }
}

}  // namespace
}  // namespace NKRXVEL20::host
