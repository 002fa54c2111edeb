// SPDX-License-Identifier: Apache-2.0
#include "host/formats/shownvalue.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>

namespace velhost {
namespace {

using NKRXVEL20::TCIMDateTime;
using NKRXVEL20::TCIMValue;
using NKRXVEL20::host::findClass;
using NKRXVEL20::host::SchemaFile;

struct ValueCase {
  const char* what;
  const char* className;
  const char* property;
  TCIMValue value;
  const char* shown;
};

constexpr char kBios[] = "KRXSG_SystemBIOSElement";

TEST(ShownValue, IsAsPeopleReadIt) {
  const ValueCase cases[] = {
      {"never set", kBios, "Version", TCIMValue(), ""},
      {"text", kBios, "Version", TCIMValue("1.08"), "1.08"},
      {"empty text", kBios, "Version", TCIMValue(""), ""},
      {"blanks", kBios, "Version", TCIMValue("   "), ""},
      {"padded text", kBios, "Version", TCIMValue(" 1.08  "), " 1.08"},
      {"controls, quotes, a line feed", kBios, "Version", TCIMValue("\x1B[1m\"<b>\n"),
       "\\x1b[1m\"<b>\\n"},
      {"bytes that are no text", kBios, "Version", TCIMValue("M\xFCller"), "M\\xfcller"},
      {"a number's name", kBios, "SoftwareElementState", TCIMValue(std::uint16_t{3}), "Running"},
      {"the first name", kBios, "SoftwareElementState", TCIMValue(std::uint16_t{0}), "Deployable"},
      {"a number without a name", kBios, "SoftwareElementState", TCIMValue(std::uint16_t{4}), "4"},
      {"a name that is inherited", "KRXSG_cKVM", "TargetOperatingSystem",
       TCIMValue(std::uint16_t{66}), "Not applicable"},
      {"a number that is not to be named", kBios, "SourceNode", TCIMValue(std::uint8_t{3}), "3"},
      {"an address", kBios, "LoadedStartingAddress", TCIMValue(std::uint64_t{0xE0000000}),
       "0xE0000000"},
      {"the lowest address", kBios, "LoadedEndingAddress", TCIMValue(std::uint64_t{0}), "0x0"},
      {"the highest address", kBios, "LoadedEndingAddress",
       TCIMValue(std::numeric_limits<std::uint64_t>::max()), "0xFFFFFFFFFFFFFFFF"},
      {"a text in an address's place", kBios, "LoadedEndingAddress", TCIMValue("255"), "255"},
      {"a number", "KRXSG_PhysicalMemory", "Capacity", TCIMValue(std::uint64_t{17179869184}),
       "17179869184"},
      {"true", kBios, "PrimaryBIOS", TCIMValue(true), "yes"},
      {"false", kBios, "PrimaryBIOS", TCIMValue(false), "no"},
      {"a date", kBios, "ReleaseDate", TCIMValue(TCIMDateTime("20070315000000.000000+000")),
       "2007-03-15"},
      {"a date and time", kBios, "ReleaseDate",
       TCIMValue(TCIMDateTime("20070315123059.000000+000")), "2007-03-15 12:30:59"},
      {"no date", kBios, "ReleaseDate", TCIMValue(TCIMDateTime("00000000000000.000000+000")), ""},
      {"a property that the class lacks", kBios, "Colour", TCIMValue(true), "yes"},
      {"a class that the schema lacks", "KRXSG_Nothing", "SoftwareElementState",
       TCIMValue(std::uint16_t{3}), "3"},
  };
  for (const ValueCase& c : cases) {
    EXPECT_EQ(c.shown, shownValue(findClass(c.className), c.property, c.value)) << c.what;
  }
}

// Hexadecimal goes down to subclasses, which may take it back, and Values go before it.
TEST(ShownValue, TheSchemaOfAClassIsThatOfItsSuperclassesToo) {
  const std::array<SchemaFile, 1> files{{{"a.mof", R"mof(
    Qualifier Hexadecimal : boolean = false, Scope(property), Flavor(EnableOverride, ToSubclass);
    Qualifier Override : string, Scope(property), Flavor(Restricted);
    Qualifier ValueMap : string[], Scope(property), Flavor(EnableOverride, ToSubclass);
    Qualifier Values : string[], Scope(property), Flavor(EnableOverride, ToSubclass);
    class A {
      [Hexadecimal, ValueMap { "0" }, Values { "None\t" }] uint16 Base;
      [ValueMap { "on" }, Values { "Switched on" }] string Switch;
      [ValueMap { "true" }, Values { "" }] boolean Nameless;
    };
    class B : A {};
    class C : B { [Override("Base")] uint16 Base; };
    class D : C { [Override("Base"), Hexadecimal(FALSE)] uint16 Base; };
    class E : D { [Override("Base"), Hexadecimal(TRUE)] uint16 Base; };
  )mof"}}};
  const auto schema = NKRXVEL20::host::parseSchema(files);
  const ValueCase cases[] = {
      {"of its own", "A", "Base", TCIMValue(std::uint16_t{2748}), "0xABC"},
      {"inherited", "B", "Base", TCIMValue(std::uint16_t{2748}), "0xABC"},
      {"overridden", "C", "Base", TCIMValue(std::uint16_t{2748}), "0xABC"},
      {"taken back", "D", "Base", TCIMValue(std::uint16_t{2748}), "2748"},
      {"said again", "E", "Base", TCIMValue(std::uint16_t{2748}), "0xABC"},
      {"a name with a control", "C", "Base", TCIMValue(std::uint16_t{0}), "None\\t"},
      {"a text's name", "A", "Switch", TCIMValue("on"), "Switched on"},
      {"a text without a name", "A", "Switch", TCIMValue("On"), "On"},
      {"a name that says nothing", "A", "Nameless", TCIMValue(true), "yes"},
  };
  for (const ValueCase& c : cases) {
    EXPECT_EQ(c.shown, shownValue(findClass(*schema, c.className), c.property, c.value)) << c.what;
  }
}

}  // namespace
}  // namespace velhost
