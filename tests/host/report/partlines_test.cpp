// SPDX-License-Identifier: Apache-2.0
#include "host/report/partlines.h"

#include <gtest/gtest.h>

#include "tests/host/formats/formatsample.h"

namespace velhost {
namespace {

std::string lines(const PropertyList& properties, const std::vector<Fact>& shown) {
  std::string text;
  for (const auto& [name, value] : partLines({"MINE_Part", properties}, shown)) {
    text += name + '=' + value + ';';
  }
  return text;
}

PropertyList capacity(std::uint64_t bytes) { return {{"Capacity", TCIMValue(bytes)}}; }

TEST(PartLines, WhatSaysMostStandsFirst) {
  const struct {
    const char* what;
    PropertyList properties;
    std::vector<Fact> shown;
    const char* lines;
  } cases[] = {
      {"nothing", {}, {}, ""},
      {"what else there is", {}, {{"Checksum", "12"}}, ""},
      {"of a component",
       {},
       {{"SerialNumber", "S1"}, {"Vendor", "KRX"}, {"PartNumber", "P1"}, {"FRUNumber", "F1"}},
       "Maker=KRX;Part=P1;Serial=S1;FRU=F1;"},
      {"of a FRU, the product before the board",
       {},
       {{"BoardManufacturer", "B"}, {"ProductManufacturer", "P"}, {"BoardSerialNumber", "S"}},
       "Maker=P;Serial=S;"},
      {"what was wrong with it", {}, {{"Notes", "no board area"}}, "Note=no board area;"},
      {"memory", capacity(32ULL << 30U), {{"MemoryType", "DDR5"}}, "=32 GiB DDR5;"},
      {"empty slot", capacity(0), {}, ""},
  };
  for (const auto& c : cases) EXPECT_EQ(c.lines, lines(c.properties, c.shown)) << c.what;
}

TEST(PartLines, SizesAreWholeNumbersOfTheLargestUnit) {
  const struct {
    std::uint64_t bytes;
    const char* lines;
  } cases[] = {
      {1, "=1 bytes;"},         {1023, "=1023 bytes;"},         {1024, "=1 KiB;"},
      {1536, "=1536 bytes;"},   {256ULL << 20U, "=256 MiB;"},   {32767ULL << 20U, "=32767 MiB;"},
      {1ULL << 40U, "=1 TiB;"}, {1ULL << 63U, "=8388608 TiB;"},
  };
  for (const auto& c : cases) EXPECT_EQ(c.lines, lines(capacity(c.bytes), {})) << c.bytes;
}

}  // namespace
}  // namespace velhost
