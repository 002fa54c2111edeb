// SPDX-License-Identifier: Apache-2.0
//
// What the reader of MOF takes, and that what is printed reads as the same.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "velhost/schema.h"

namespace NKRXVEL20::host {
namespace {

SchemaPtr parse(const std::string& text) {
  const SchemaFile file{"t.mof", text};
  return parseSchema({&file, 1});
}

std::string listed(TextList texts) {
  std::string all;
  for (const std::string_view text : texts) all += (all.empty() ? "" : ",") + std::string(text);
  return all;
}

// Everything that is in effect for a class, a line a property.
std::string inEffect(const ClassSchema& cimClass) {
  std::string text(cimClass.name);
  if (cimClass.superclass != nullptr) text += ":" + std::string(cimClass.superclass->name);
  text += " d=" + std::string(cimClass.description) + " p=" + std::string(cimClass.provider);
  text += cimClass.isAbstract ? " abstract" : "";
  text += " inherited=" + std::to_string(cimClass.inherited) + '\n';
  for (const PropertySchema& property : cimClass.properties) {
    text += ' ' + std::string(typeName(property.type)) + ' ' + std::string(property.name);
    text += " d=" + std::string(property.description) + " len=" + std::to_string(property.maxLen);
    text += " m=" + listed(property.mappingStrings) + " v=" + listed(property.valueMap) + "/" +
            listed(property.values) + (property.isKey ? " key" : "") + '\n';
  }
  return text;
}

std::string inEffect(const Schema& schema) {
  std::string text;
  for (const ClassSchema& cimClass : schema.classes) text += inEffect(cimClass);
  return text;
}

const std::string kQualifiers = R"(
  Qualifier Abstract : boolean = false, Scope(class), Flavor(Restricted);
  Qualifier Description : string, Scope(any);
  Qualifier Key : boolean = false, Scope(property), Flavor(DisableOverride, ToSubclass);
  Qualifier MappingStrings : string[], Scope(property);
  Qualifier MaxLen : uint32, Scope(property);
  Qualifier Override : string, Scope(property), Flavor(Restricted);
  Qualifier Provider : string, Scope(class), Flavor(Restricted);
  Qualifier ValueMap : string[], Scope(property);
  Qualifier Values : string[], Scope(property);
)";

TEST(Mof, IsReadInWhateverFormItIsWritten) {
  const struct {
    const char* what;
    const char* text;
    const char* inEffect;
  } kCases[] = {
      {"a class without properties", "class A_B { };", "A_B d= p= inherited=0\n"},
      {"the types", "class A_B { string s; boolean b; uint8 u; uint16 v; uint64 w; datetime d; };",
       "A_B d= p= inherited=0\n string s d= len=0 m= v=/\n boolean b d= len=0 m= v=/\n"
       " uint8 u d= len=0 m= v=/\n uint16 v d= len=0 m= v=/\n uint64 w d= len=0 m= v=/\n"
       " datetime d d= len=0 m= v=/\n"},
      {"keywords, types and qualifiers in any case",
       "[aBSTRACT, DESCRIPTION(\"x\")] CLASS A_B { [kEY] STRING s; };",
       "A_B d=x p= abstract inherited=0\n string s d= len=0 m= v=/ key\n"},
      {"no blanks where none are needed", "[Abstract]class A_B{[Key,MaxLen(3)]string s;};",
       "A_B d= p= abstract inherited=0\n string s d= len=3 m= v=/ key\n"},
      {"comments between all tokens", "/* a ** / */class//b\nA_B/**/{//c\n}/*d*/;//e",
       "A_B d= p= inherited=0\n"},
      {"line ends of other systems", "class A_B\r\n{\r\n};\r\n", "A_B d= p= inherited=0\n"},
      {"values in full",
       "[Abstract(TRUE)] class A_B { [Key(false), MaxLen(+4294967295)] string s; };",
       "A_B d= p= abstract inherited=0\n string s d= len=4294967295 m= v=/\n"},
      {"a text in pieces",
       "[Description(\"one \" \"two\" /* and */ \"\"\n\" three\")] class A_B {};",
       "A_B d=one two three p= inherited=0\n"},
      {"escapes", R"([Description("q\" b\\ t\t s\' \x41 \X42 \x20AC4 \xe9g")] class A_B {};)",
       "A_B d=q\" b\\ t\t s' A B \xE2\x82\xAC"
       "4 \xC3\xA9g p= inherited=0\n"},
      {"escapes beside the surrogates", R"([Description("\xD7FF\xE000")] class A_B {};)",
       "A_B d=\xED\x9F\xBF\xEE\x80\x80 p= inherited=0\n"},
      {"what looks like a comment in a text", "[Description(\"/* // */\")] class A_B {};",
       "A_B d=/* // */ p= inherited=0\n"},
      {"characters beyond ASCII", "[Description(\"M\xC3\xBCller \xF0\x9F\x96\xA5\")] class A_B {};",
       "A_B d=M\xC3\xBCller \xF0\x9F\x96\xA5 p= inherited=0\n"},
      {"lists",
       "class A_B { [MappingStrings { \"a\", \"\", \"c\" }, ValueMap { \"1\" }, Values { \"One\" }]"
       " uint8 u; [MappingStrings {}] uint8 v; };",
       "A_B d= p= inherited=0\n uint8 u d= len=0 m=a,,c v=1/One\n uint8 v d= len=0 m= v=/\n"},
      {"words that mean something elsewhere",
       "class class { string string; uint8 Qualifier; uint8 as; };",
       "class d= p= inherited=0\n string string d= len=0 m= v=/\n"
       " uint8 Qualifier d= len=0 m= v=/\n uint8 as d= len=0 m= v=/\n"},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(c.inEffect, inEffect(*parse(kQualifiers + c.text))) << c.what;
  }
}

TEST(Mof, InheritedPropertiesStandFirstAndOverriddenOnesWhereTheTextHasThem) {
  const SchemaPtr schema = parse(kQualifiers + R"(
    [Abstract, Description("base"), Provider("P")]
    class A_Base {
      [Key, Description("a of base"), MaxLen(5), MappingStrings { "m" }] string a;
      [Description("b of base"), ValueMap { "1", "2" }, Values { "One", "Two" }] uint8 b;
      string c;
    };
    class A_Derived : A_Base {
      string d;
      [Override("c"), Description("c of derived")] string c;
      [Override("b")] uint8 b;
    };
    [Description("leaf")]
    class A_Leaf : a_derived {
      [Override("d"), MaxLen(1)] string d;
      [Override("a"), Description("a of leaf"), MappingStrings { "n" }] string a;
    };)");
  EXPECT_EQ(
      "A_Base d=base p=P abstract inherited=0\n"
      " string a d=a of base len=5 m=m v=/ key\n"
      " uint8 b d=b of base len=0 m= v=1,2/One,Two\n"
      " string c d= len=0 m= v=/\n"
      "A_Derived:A_Base d=base p= inherited=1\n"
      " string a d=a of base len=5 m=m v=/ key\n"
      " string d d= len=0 m= v=/\n"
      " string c d=c of derived len=0 m= v=/\n"
      " uint8 b d=b of base len=0 m= v=1,2/One,Two\n"
      "A_Leaf:A_Derived d=leaf p= inherited=2\n"
      " string c d=c of derived len=0 m= v=/\n"
      " uint8 b d=b of base len=0 m= v=1,2/One,Two\n"
      " string d d= len=1 m= v=/\n"
      " string a d=a of leaf len=5 m=n v=/ key\n",
      inEffect(*schema));
}

TEST(Mof, ARestrictedQualifierIsNotInherited) {
  EXPECT_EQ(
      "A_B d=x p= inherited=0\n string s d=y len=0 m= v=/\n"
      "A_C:A_B d= p= inherited=1\n string s d= len=0 m= v=/\n"
      "A_D:A_B d= p= inherited=0\n string s d= len=0 m= v=/\n",
      inEffect(*parse("Qualifier Description : string, Scope(any), Flavor(Restricted);"
                      "Qualifier Override : string, Scope(property);"
                      "[Description(\"x\")] class A_B { [Description(\"y\")] string s; };"
                      "class A_C : A_B {}; class A_D : A_B { [Override(\"s\")] string s; };")));
}

TEST(Mof, IsPrintedAsItIsTaken) {
  EXPECT_EQ(R"(Qualifier Description : string, Scope(any);
Qualifier Key : boolean = FALSE, Scope(property, reference), Flavor(DisableOverride, ToSubclass);
Qualifier Mine : sint8[] = {
  -1,
  2 }, Scope(class);
Qualifier None : string[] = { }, Scope(any);
Qualifier Override : string, Scope(property);
Qualifier Text : string = "a \"b\" \\ \x000A\x007F", Scope(any);

[Description("one"),
 Mine { -128 }]
class A_B {
  [Key]
  string s;
  [None {
     "x",
     "y" }]
  uint8 u;
};

class A_C : A_B {
  [Override("s"),
   Description("an \\ and end")]
  string s;
};
)",
            mofText(*parse(R"(
  qualifier Description : String, Scope(ANY);
  Qualifier Key : boolean = false, Scope(reference, property), Flavor(ToSubclass, DisableOverride);
  Qualifier Mine : sint8[] = { -1, 2 }, Scope(class);
  Qualifier None : string[] = {}, Scope(any);
  Qualifier Override : string = null, Scope(property);
  Qualifier Text : string = "a \"b\" \\ \n\x7F", Scope(any);
  [description("o" "ne"), mine { -128 }] class A_B { [key(true)] STRING s; [none{"x","y"}] uint8 u; };
  class A_C : A_B { [Override("s"), Description("an \\ " "and end")] string s; };)")));
}

// Escapes, quotes, control characters, comments in texts, every form of qualifier, three levels.
const std::string kNasty = kQualifiers + R"(
  Qualifier Mine : sint64[] = { -9223372036854775808, 9223372036854775807 }, Scope(class, property);
  Qualifier Flags : boolean[], Scope(any), Flavor(EnableOverride, Translatable);
  Qualifier Whole : uint64 = 18446744073709551615, Scope(any);
  [Abstract, Description("/* \"no\" comment */ // \\ \x1\x1F\x7F\x80\xFFFF"), Mine { 0 }]
  class _A { [Key, Flags { true, FALSE }, Whole(0)] string _; };
  [Abstract(false), Provider(""), Flags {}]
  class A_1 : _A { [Override("_"), Description("|" "]};" "[{(")] string _; boolean __; };
  class A_2 : A_1 { [Override("__"), ValueMap { "", "\t" }, Values { "a,b", "\r\n" }] boolean __;
    [Mine { -1, +1 }, MappingStrings { "" }, MaxLen(0), Description("TRUE")] string x9; };
)";

void expectSameAfterPrinting(const Schema& schema, const char* what) {
  const std::string printed = mofText(schema);
  const SchemaPtr again = parse(printed);
  EXPECT_EQ(inEffect(schema), inEffect(*again)) << what;
  EXPECT_EQ(printed, mofText(*again)) << what;
  EXPECT_EQ(schema.qualifiers.size(), again->qualifiers.size()) << what;
}

TEST(Mof, WhatIsPrintedReadsAsTheSame) {
  expectSameAfterPrinting(*currentSchema(), "the whole schema");
  expectSameAfterPrinting(*parse(kNasty), "a nasty one");
  expectSameAfterPrinting(*parse(""), "an empty one");
}

TEST(Mof, ClassesWithoutQualifiersBeginTheText) {
  EXPECT_EQ("class A_B {\n};\n\nclass A_C {\n  string s;\n};\n",
            mofText(*parse("class A_B {}; class A_C { string s; };")));
}

TEST(Mof, ClassesArePrintedWithWhatTheyNeed) {
  const SchemaPtr schema = parse(kNasty + "class Z { uint8 u; };");
  const ClassSchema* const chosen[] = {findClass(*schema, "Z"), findClass(*schema, "A_1")};
  const SchemaPtr again = parse(mofText(*schema, chosen));
  EXPECT_EQ(inEffect(*findClass(*schema, "_A")) + inEffect(*chosen[1]) + inEffect(*chosen[0]),
            inEffect(*again));
  std::vector<std::string_view> qualifiers;
  for (const QualifierDeclaration& row : again->qualifiers) qualifiers.push_back(row.name);
  EXPECT_EQ((std::vector<std::string_view>{"Abstract", "Description", "Key", "Override", "Provider",
                                           "Mine", "Flags", "Whole"}),
            qualifiers);
}

TEST(Mof, FilesAreReadOneBehindTheOther) {
  const SchemaFile files[] = {
      {"a.mof", "class A_B {};"}, {"b.mof", ""}, {"c.mof", "class A_C : A_B {}; // no line end"}};
  EXPECT_EQ("A_B d= p= inherited=0\nA_C:A_B d= p= inherited=0\n", inEffect(*parseSchema(files)));
}

}  // namespace
}  // namespace NKRXVEL20::host
