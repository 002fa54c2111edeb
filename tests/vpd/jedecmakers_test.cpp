// SPDX-License-Identifier: Apache-2.0
#include "vpd/jedecmakers.h"

#include <algorithm>
#include <fstream>
#include <sstream>

#include "tests/support/pluginfixture.h"
#include "vpd/jedectypes.h"

namespace spfirmwarevpd::test {
namespace {

constexpr unsigned char kContinuation = 0x7F;

// `count` continuation codes, then the rest.
Bytes identity(std::size_t count, const Bytes& rest) {
  Bytes bytes(count, kContinuation);
  bytes.insert(bytes.end(), rest.begin(), rest.end());
  bytes.resize(bytes.size() + 8);
  return bytes;
}

struct PublishedCode {
  std::size_t bank;    // from 1
  unsigned char code;  // without its parity bit
  std::string maker;
};

std::vector<PublishedCode> readPublishedCodes() {
  std::ifstream file(TEST_DATA_DIR "/jep106.tsv");
  std::vector<PublishedCode> codes;
  std::string line;
  std::getline(file, line);  // the columns' names
  while (std::getline(file, line)) {
    std::istringstream fields(line);
    std::string bank;
    std::string code;
    std::string maker;
    std::getline(fields, bank, '\t');
    std::getline(fields, code, '\t');
    std::getline(fields, maker);
    codes.push_back(
        {std::stoul(bank), static_cast<unsigned char>(std::stoul(code, nullptr, 16)), maker});
  }
  return codes;
}

class JedecMakersTest : public PluginTest {
 protected:
  std::string maker(Bytes id) { return plugin.getMDManufacturer(id.data()); }
};

TEST_F(JedecMakersTest, EveryPublishedCodeNamesItsMakerWithAndWithoutItsParityBit) {
  const auto codes = readPublishedCodes();
  ASSERT_EQ(codes.size(), 882U);
  for (std::size_t i = 0; i < codes.size(); ++i) {
    const auto& [bank, code, name] = codes[i];
    // The list is complete and in order: 126 codes a bank.
    ASSERT_EQ(bank, i / 126 + 1);
    ASSERT_EQ(code, i % 126 + 1);
    EXPECT_EQ(maker(identity(bank - 1, {code})), name) << bank << ", " << int{code};
    const auto withParity = static_cast<unsigned char>(code | 0x80U);
    EXPECT_EQ(maker(identity(bank - 1, {withParity})), name) << bank << ", " << int{withParity};
    EXPECT_EQ(jedecMaker(bank - 1, code), name) << bank << ", " << int{code};
    EXPECT_EQ(jedecMaker(bank - 1, withParity), name) << bank << ", " << int{withParity};
  }
}

TEST_F(JedecMakersTest, OnlyTheLastEntryHoldsNoText) {
  ASSERT_EQ(JEDEC_Types.size(), 882U);
  EXPECT_EQ(JEDEC_Types.back(), nullptr);
  EXPECT_EQ(std::ranges::count(JEDEC_Types, nullptr), 1);
}

TEST_F(JedecMakersTest, IdentitiesByHand) {
  const struct {
    const char* what;
    Bytes id;
    const char* maker;
  } cases[] = {
      {"first code of bank 1", identity(0, {0x01}), "AMD"},
      {"parity bit set", identity(0, {0xCE}), "Samsung"},
      {"parity bit not set", identity(0, {0x2C}), "Micron Technology"},
      {"last code of bank 1", identity(0, {0xFE}), "Level One Communication"},
      {"first code of bank 2", identity(1, {0x01}), "Cirrus Logic"},
      {"7F 7F 9E: bank 3, code 1E", identity(2, {0x9E}), "Corsair"},
      {"first code of bank 4", identity(3, {0x01}), "Solectron"},
      {"last code of bank 6", identity(5, {0xFE}), "W5 Networks"},
      {"last name of bank 7", identity(6, {0xFD}), "Provigent"},
      {"bytes behind the code do not matter", identity(2, {0x9E, 0x7F, 0x01}), "Corsair"},
      {"null last entry", identity(6, {0x7E}), ""},
      {"null last entry, parity bit set", identity(6, {0xFE}), ""},
      {"code 0", identity(0, {0x00}), ""},
      {"code 0 with the parity bit", identity(0, {0x80}), ""},
      {"code 127 with the parity bit", identity(0, {0xFF}), ""},
      {"code 0 in a later bank", identity(4, {0x80}), ""},
      {"code 127 in bank 7", identity(6, {0xFF}), ""},
      {"bank 8", identity(7, {0x01}), ""},
      {"all eight bytes are continuations", identity(8, {0x01}), ""},
      {"continuations run on behind the field", identity(1976, {0x01}), ""},
  };
  for (const auto& c : cases) EXPECT_EQ(maker(c.id), c.maker) << c.what;
}

TEST(JedecMakerTest, CountsAndCodesThatNameNobody) {
  const struct {
    std::size_t continuations;
    unsigned char code;
  } cases[] = {
      {0, 0x00},
      {0, 0x80},
      {0, 0x7F},
      {0, 0xFF},
      {6, 0x7E},
      {6, 0xFE},
      {6, 0x7F},
      {7, 0x00},
      {7, 0x01},
      {7, 0x7E},
      {8, 0x01},
      {0x7F, 0x01},
      {~std::size_t{0}, 0x01},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(jedecMaker(c.continuations, c.code), "") << c.continuations << ", " << int{c.code};
  }
}

TEST_F(JedecMakersTest, NamesAreKeptAsTheyWerePublished) {
  for (const char* name :
       {"Gadzoox Nteworks", "Multi Dimensional Cons.", "Novafora, Ic", "Lattice Semi."}) {
    EXPECT_EQ(std::ranges::count_if(JEDEC_Types,
                                    [&](const char* maker) {
                                      return maker != nullptr && maker == std::string(name);
                                    }),
              1)
        << name;
  }
}

}  // namespace
}  // namespace spfirmwarevpd::test
