// SPDX-License-Identifier: Apache-2.0
#include "host/formats/element.h"

#include <gtest/gtest.h>

#include <array>

#include "tests/host/formats/formatsample.h"
#include "velhost/schema.h"

namespace velhost {
namespace {

namespace host = NKRXVEL20::host;

// Classes of somebody else beside those of this project, while it lives.
class OthersSchema {
 public:
  OthersSchema() : before_(host::currentSchema()) {
    const std::array files{host::SchemaFile{"all.mof", host::mofText(*before_) + R"(
      class MINE_Fan {
        [Key] uint16 SourceNode;
        [Key] string Rack;
        [Key] uint8 Fan;
        string FirmwareVersion;
      };
      class MINE_Board { string ElementName; string Version; string BuildNumber; };
      class MINE_Lamp { string Colour; };
    )"}};
    host::setSchema(host::parseSchema(files));
  }
  ~OthersSchema() { host::setSchema(before_); }
  OthersSchema(const OthersSchema&) = delete;
  OthersSchema& operator=(const OthersSchema&) = delete;

 private:
  host::SchemaPtr before_;
};

PublishedInstance vpd(const char* name) { return {"KRXSG_Vpd", {{"Name", TCIMValue(name)}}}; }

TEST(Element, TheNodeIsTheNumberInSourceNodeOrInTheLabel) {
  const OthersSchema schema;
  const struct {
    const char* what;
    PublishedInstance instance;
    std::optional<std::uint64_t> node;
  } cases[] = {
      {"number", {kBios, {{"SourceNode", TCIMValue(std::uint8_t{255})}}}, 255},
      {"wider number", {"MINE_Fan", {{"SourceNode", TCIMValue(std::uint16_t{1000})}}}, 1000},
      {"number before label",
       {kBios, {{"Name", TCIMValue("Node 2: x")}, {"SourceNode", TCIMValue(std::uint8_t{1})}}},
       1},
      {"unset, and Name has no label", {kBios, {{"Name", TCIMValue("Node 2: x")}}}, {}},
      {"empty", {kBios, {{"SourceNode", TCIMValue()}}}, {}},
      {"text", {kBios, {{"SourceNode", TCIMValue("2")}}}, {}},
      {"label", vpd("Node 8: DIMM 254"), 8},
      {"no label", vpd("DIMM 1"), {}},
      {"label without blank", vpd("Node 8:DIMM 1"), {}},
      {"label cut off", vpd("Node 8"), {}},
      {"label without number", vpd("Node : DIMM 1"), {}},
      {"number with a sign", vpd("Node -8: DIMM 1"), {}},
      {"number too large", vpd("Node 256: DIMM 1"), {}},
      {"label further back", vpd(" Node 8: DIMM 1"), {}},
      {"class that the schema does not have",
       {"MINE_None", {{"Name", TCIMValue("Node 1: x")}}},
       {}},
  };
  for (const auto& c : cases) EXPECT_EQ(c.node, nodeOf(c.instance)) << c.what;
}

TEST(Element, TheNameIsNameOrElementNameOrTheKeys) {
  const OthersSchema schema;
  const struct {
    const char* what;
    PublishedInstance instance;
    const char* name;
  } cases[] = {
      {"Name", vpd("DIMM 1"), "DIMM 1"},
      {"padded Name", vpd("  DIMM 1  "), "  DIMM 1"},
      {"blank Name", vpd("  "), ""},
      {"unset Name", {"KRXSG_Vpd", {{"Vendor", TCIMValue("KRX")}}}, ""},
      {"ElementName", {"MINE_Board", {{"ElementName", TCIMValue("Planar")}}}, "Planar"},
      {"keys but SourceNode",
       {"MINE_Fan",
        {{"Fan", TCIMValue(std::uint8_t{3})},
         {"SourceNode", TCIMValue(std::uint16_t{1})},
         {"Rack", TCIMValue("B ")}}},
       "B, 3"},
      {"one key", {"MINE_Fan", {{"Fan", TCIMValue(std::uint8_t{3})}}}, "3"},
      {"key of a class without Name",
       {"KRXSG_cKVM", {{"SoftwareElementID", TCIMValue("cKVM")}}},
       "cKVM"},
      {"neither", {"MINE_Lamp", {{"Colour", TCIMValue("red")}}}, ""},
      {"class that the schema does not have", {"MINE_None", {{"Name", TCIMValue("x")}}}, "x"},
  };
  for (const auto& c : cases) EXPECT_EQ(c.name, nameOf(c.instance)) << c.what;
}

TEST(Element, TheLevelIsVersionOrFirmwareVersionAndBuildNumber) {
  const struct {
    const char* what;
    PropertyList properties;
    const char* version;
    const char* build;
  } cases[] = {
      {"both",
       {{"Version", TCIMValue("104 ")}, {"BuildNumber", TCIMValue("KRE104C")}},
       "104",
       "KRE104C"},
      {"FirmwareVersion", {{"FirmwareVersion", TCIMValue("2.13")}}, "2.13", ""},
      {"Version first",
       {{"FirmwareVersion", TCIMValue("1")}, {"Version", TCIMValue("2")}},
       "2",
       ""},
      {"blank Version",
       {{"Version", TCIMValue(" ")}, {"FirmwareVersion", TCIMValue("1")}},
       "1",
       ""},
      {"number",
       {{"Version", TCIMValue(std::uint64_t{18446744073709551615U})}},
       "18446744073709551615",
       ""},
      {"nothing", {}, "", ""},
  };
  for (const auto& c : cases) {
    const PublishedInstance instance{"KRXSG_cKVM", c.properties};
    EXPECT_EQ(c.version, versionOf(instance)) << c.what;
    EXPECT_EQ(c.build, buildOf(instance)) << c.what;
  }
}

TEST(Element, ClassesHaveALevelThatHaveAPropertyForIt) {
  const OthersSchema schema;
  const struct {
    const char* className;
    bool hasLevel;
  } cases[] = {
      {kBios, true},        {"KRXSG_cKVM", true}, {"KRXSG_Vpd", false}, {"KRXSG_USBDevice", false},
      {"MINE_Board", true}, {"MINE_Fan", true},   {"MINE_Lamp", false}, {"MINE_None", false},
  };
  for (const auto& c : cases) EXPECT_EQ(c.hasLevel, hasLevel(c.className)) << c.className;
}

TEST(Element, ANameWithoutItsNode) {
  const struct {
    const char* name;
    const char* title;
  } cases[] = {
      {"Node 2: DIMM 5", "DIMM 5"},
      {"Node 1 : System BIOS", "System BIOS"},
      {"Node 1 : ", ""},
      {"DIMM 5", "DIMM 5"},
      {"Node X: y", "Node X: y"},
      {"Node 1", "Node 1"},
      {"Node : x", "Node : x"},
      {"", ""},
  };
  for (const auto& c : cases) EXPECT_EQ(c.title, withoutNode(c.name)) << c.name;
}

}  // namespace
}  // namespace velhost
