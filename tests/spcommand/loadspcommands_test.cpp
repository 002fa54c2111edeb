// SPDX-License-Identifier: Apache-2.0
#include <numeric>

#include "spcommand/descriptorline.h"
#include "tests/support/pluginfixture.h"

namespace spfirmwarevpd::test {
namespace {

class LoadSPCommandsTest : public PluginTest {
 protected:
  LoadSPCommandsTest() { plugin.loadSPCommands(); }

  // The lines that stand behind the command line at `index`, up to the next one.
  std::vector<std::string> group(std::size_t index) const {
    const auto begin = plugin.spCommandTable.begin() + static_cast<std::ptrdiff_t>(index) + 1;
    const auto end = std::find_if(begin, plugin.spCommandTable.end(),
                                  [](const std::string& line) { return line.starts_with("d|"); });
    return {begin, end};
  }
};

TEST_F(LoadSPCommandsTest, HoldsThe31LinesInOrder) {
  const std::vector<std::string> expected = {
      "d|5|4|3|5|6|1|KRXSG_SPROMFirmwareVPDMain|",
      "a|7|BuildNumber|",
      "r|3|Reserved|",
      "a|12|FileName|",
      "b|1|Checksum|",
      "a|8|BuildDate|",
      "b|1|Version|",
      "a|8|PartNumber|",
      "d|5|4|3|5|6|2|KRXSG_SPROMFirmwareVPDBootROM|",
      "a|7|BuildNumber|",
      "r|3|Reserved|",
      "a|12|FileName|",
      "b|1|Checksum|",
      "a|8|BuildDate|",
      "b|1|Version|",
      "a|8|PartNumber|",
      "d|4|4|3|5|7|KRXSG_HardwareRevisionLevel|",
      "b|1|Hardwarelevel|",
      "d|5|4|3|5|1|1|KRXSG_DiagnosticVPD|",
      "a|2|Header|",
      "a|3|Signature",
      "b|1|Length|",
      "r|7|Reserved|",
      "a|9|BuildNumber|",
      "a|7|SerialNumber|",
      "a|11|UniqueID|",
      "a|7|MachineTypeModel|",
      "b|1|Checksum|",
      "a|8|BuildDate|",
      "a|12|FileName|",
      "b|1|Version|",
  };
  EXPECT_EQ(plugin.spCommandTable, expected);
}

TEST_F(LoadSPCommandsTest, SignatureLineHasNoClosingBar) {
  EXPECT_EQ(plugin.spCommandTable.at(20), "a|3|Signature");
}

TEST_F(LoadSPCommandsTest, FieldLengthsOfTheGroupsAddUp) {
  const struct {
    std::size_t commandLine;
    int size;
  } cases[] = {{0, 40}, {8, 40}, {16, 1}, {18, 69}};
  for (const auto& c : cases) {
    int size = 0;
    for (const std::string& line : group(c.commandLine)) {
      FieldLine field;
      field.read(line);
      size += field.length;
    }
    EXPECT_EQ(size, c.size) << plugin.spCommandTable[c.commandLine];
  }
}

TEST_F(LoadSPCommandsTest, SecondCallDoublesTheTable) {
  const std::vector<std::string> once = plugin.spCommandTable;
  plugin.loadSPCommands();
  ASSERT_EQ(plugin.spCommandTable.size(), 62U);
  EXPECT_TRUE(std::equal(once.begin(), once.end(), plugin.spCommandTable.begin() + 31));
}

TEST(DescriptorLineTest, TokensEndAtBars) {
  std::string line = "d|5||last";
  EXPECT_EQ(takeToken(line), "d");
  EXPECT_EQ(takeToken(line), "5");
  EXPECT_EQ(takeToken(line), "");
  EXPECT_EQ(takeToken(line), std::nullopt);
  EXPECT_EQ(line, "last");
}

TEST(DescriptorLineTest, PartsWithoutABarKeepTheirValueAndTheNameIsEmptied) {
  const struct {
    const char* line;
    const char* type;
    int length;
    const char* name;
  } cases[] = {
      {"a|3|Signature|", "a", 3, "Signature"},
      {"a|3|Signature", "a", 3, ""},
      {"a|3", "a", 12, ""},
      {"a", "b", 12, ""},
      {"", "b", 12, ""},
      {"r|x|Reserved|", "r", 0, "Reserved"},
  };
  for (const auto& c : cases) {
    FieldLine field{.type = "b", .length = 12, .name = "Before"};
    field.read(c.line);
    EXPECT_EQ(field.type, c.type) << c.line;
    EXPECT_EQ(field.length, c.length) << c.line;
    EXPECT_EQ(field.name, c.name) << c.line;
  }
}

}  // namespace
}  // namespace spfirmwarevpd::test
