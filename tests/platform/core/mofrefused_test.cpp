// SPDX-License-Identifier: Apache-2.0
//
// MOF that is wrong or not taken, each with its place and the words about it.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "velhost/schema.h"

namespace NKRXVEL20::host {
namespace {

std::string errorOf(std::vector<SchemaFile> files) {
  try {
    parseSchema(files);
  } catch (const SchemaError& error) {
    return error.what();
  }
  return "taken";
}

// On one line before each text, so that its errors are on the second.
const std::string kQualifiers =
    "Qualifier Abstract : boolean = false, Scope(class), Flavor(Restricted);"
    "Qualifier Description : string, Scope(any);"
    "Qualifier Key : boolean = false, Scope(property), Flavor(DisableOverride, ToSubclass);"
    "Qualifier MappingStrings : string[], Scope(property);"
    "Qualifier MaxLen : uint32, Scope(property);"
    "Qualifier Override : string, Scope(property), Flavor(Restricted);"
    "Qualifier ValueMap : string[], Scope(property);"
    "Qualifier Values : string[], Scope(property);"
    "Qualifier Association : boolean, Scope(any);"
    "Qualifier Small : sint8, Scope(any);\n";

struct Case {
  const char* text;
  const char* error;  // behind the file's name
};

void expectErrors(const std::vector<Case>& cases) {
  for (const Case& c : cases) {
    EXPECT_EQ(std::string("t.mof:") + c.error, errorOf({{"t.mof", kQualifiers + c.text}}))
        << c.text;
  }
}

TEST(MofRefused, WhatIsNotTakenIsNamed) {
  expectErrors({
      {"#pragma include (\"x.mof\")",
       "2:1: compiler directives (#pragma) are not taken; every .mof file of the folder is read"},
      {"instance of A_B {};", "2:1: instances are not taken"},
      {"[Description(\"x\")] INSTANCE of A_B {};", "2:20: instances are not taken"},
      {"association A_B {};", "2:1: associations are not taken"},
      {"indication A_B {};", "2:1: indications are not taken"},
      {"structure A_B {};", "2:1: structures are not taken"},
      {"enumeration A_B {};", "2:1: enumerations are not taken"},
      {"[Association] class A_B {};", "2:2: associations are not taken"},
      {"[Indication] class A_B {};", "2:2: indications are not taken"},
      {"class A_B as $x {};", "2:11: aliases are not taken"},
      {"class A_B : $x {};", "2:13: aliases are not taken"},
      {"class A_B { uint8 f(); };", "2:20: methods are not taken"},
      {"class A_B { uint8 f(uint8 i); };", "2:20: methods are not taken"},
      {"class A_B { uint8 a[4]; };", "2:20: properties that are arrays are not taken"},
      {"class A_B { uint8 a[]; };", "2:20: properties that are arrays are not taken"},
      {"class A_B { uint8 a = 1; };", "2:21: default values are not taken"},
      {"class A_B { A_C ref c; };", "2:17: references are not taken"},
      {"class A_B { [EmbeddedObject] string s; };", "2:14: embedded objects are not taken"},
      {"class A_B { [EmbeddedInstance(\"A_C\")] string s; };",
       "2:14: embedded instances are not taken"},
      {"class A_B { uint32 u; };",
       "2:13: no property is of type \"uint32\" here; the types are string, boolean, uint8, uint16,"
       " uint64, datetime"},
      {"class A_B { real64 r; };",
       "2:13: no property is of type \"real64\" here; the types are string, boolean, uint8, uint16,"
       " uint64, datetime"},
      {"Qualifier X : real32, Scope(any);", "2:15: no qualifier is of type \"real32\" here"},
      {"[Description(\"x\" : ToSubclass)] class A_B {};", "2:18: ')' is expected, not \":\""},
      {"[Description(\"x\") : ToSubclass] class A_B {};",
       "2:19: flavors are not taken here; the declaration has them"},
      {"[Description(null)] class A_B {};", "2:14: a qualifier that is carried has a value"},
      {"[Small('a')] class A_B {};", "2:8: char16 values are not taken"},
      {"[Small(0x1F)] class A_B {};", "2:8: \"0x1F\" is not taken; numbers are whole and decimal"},
      {"[Small(017)] class A_B {};", "2:8: \"017\" is not taken; numbers are whole and decimal"},
      {"[Small(101b)] class A_B {};", "2:8: \"101b\" is not taken; numbers are whole and decimal"},
      {"[Small(1.5)] class A_B {};", "2:8: \"1\" is not taken; numbers are whole and decimal"},
      {"[Small(-)] class A_B {};", "2:8: \"-\" is not taken; numbers are whole and decimal"},
  });
}

TEST(MofRefused, WhatIsNoMofHasItsPlace) {
  expectErrors({
      {"klass A_B {};", "2:1: a class or a qualifier declaration is expected, not \"klass\""},
      {"classy A_B {};", "2:1: a class or a qualifier declaration is expected, not \"classy\""},
      {"instances A_B {};",
       "2:1: a class or a qualifier declaration is expected, not \"instances\""},
      {"\"text\"", "2:1: a class or a qualifier declaration is expected, not a string"},
      {"7", "2:1: a class or a qualifier declaration is expected, not \"7\""},
      {"[Description(\"x\")]",
       "2:19: a class or a qualifier declaration is expected, not the end of the file"},
      {"[]", "2:2: a qualifier is expected, not \"]\""},
      {"[Description(\"x\"),]", "2:19: a qualifier is expected, not \"]\""},
      {"[Description(\"x\") class A_B {};", "2:19: ']' is expected, not \"class\""},
      {"[Description()] class A_B {};", "2:14: a value is expected, not \")\""},
      {"[Description(x)] class A_B {};", "2:14: a value is expected, not \"x\""},
      {"class", "2:6: the class's name is expected, not the end of the file"},
      {"class 7 {};", "2:7: the class's name is expected, not \"7\""},
      {"class A_B : {};", "2:13: the superclass's name is expected, not \"{\""},
      {"class A_B;", "2:10: '{' is expected, not \";\""},
      {"class A_B {}", "2:13: ';' is expected, not the end of the file"},
      {"class A_B {\n  string s\n};", "4:1: ';' is expected, not \"}\""},
      {"class A_B {\n  string;\n};", "3:9: the property's name is expected, not \";\""},
      {"class A_B { ;", "2:13: a property or '}' is expected, not \";\""},
      {"class A_B { \"s\";", "2:13: a property or '}' is expected, not a string"},
      {"class A_B { [Values { \"a\", }] string s; };", "2:28: a value is expected, not \"}\""},
      {"class A_B { [Values { \"a\" \"b\" 1 }] string s; };", "2:31: '}' is expected, not \"1\""},
      {"Qualifier", "2:10: the qualifier's name is expected, not the end of the file"},
      {"Qualifier X string;", "2:13: ':' is expected, not \"string\""},
      {"Qualifier X : string;", "2:21: ',' is expected, not \";\""},
      {"Qualifier X : string[4], Scope(any);", "2:22: ']' is expected, not \"4\""},
      {"Qualifier X : string, Flavor(Restricted);", "2:23: \"Scope\" is expected, not \"Flavor\""},
      {"Qualifier X : string, Scope(klass);", "2:29: \"klass\" is not a scope"},
      {"Qualifier X : string, Scope();", "2:29: a scope is expected, not \")\""},
      {"Qualifier X : string, Scope(any), Flavor(Sweet);", "2:42: \"Sweet\" is not a flavor"},
      {"Qualifier X : string, Scope(any), Flavor(Restricted)",
       "2:53: ';' is expected, not the end of the file"},
      {"class A_B { string s? };", "2:21: unexpected '?'"},
      {"class A_B { / };", "2:13: unexpected '/'"},
      {"class \x01", "2:7: unexpected character; only strings and comments may have it"},
      {"class \x7F", "2:7: unexpected character; only strings and comments may have it"},
      {"class M\xC3\xBCller {};",
       "2:8: unexpected character; only strings and comments may have it"},
      {"/* \xC3\xBC */ ?", "2:9: unexpected '?'"},
      {"class A_B {};\n/* no end", "3:1: the comment does not end"},
      {"/*/", "2:1: the comment does not end"},
  });
}

TEST(MofRefused, TextsAndNumbersThatAreNone) {
  expectErrors({
      {"[Description(\"no end)] class A_B {};", "2:14: the string does not end on its line"},
      {"[Description(\"no end\n\")] class A_B {};", "2:14: the string does not end on its line"},
      {"[Description(\"no end\r\n\")] class A_B {};", "2:14: the string does not end on its line"},
      {"[Description(\"a\" \"no end", "2:18: the string does not end on its line"},
      {"[Description(\"\\", "2:15: no such escape in a string"},
      {"[Description(\"a\\q\")] class A_B {};", "2:16: no such escape in a string"},
      {"[Description(\"\\x\")] class A_B {};",
       "2:15: \\x needs one to four hexadecimal digits that name a character"},
      {"[Description(\"\\x0000\")] class A_B {};",
       "2:15: \\x needs one to four hexadecimal digits that name a character"},
      {"[Description(\"\\xD800\")] class A_B {};",
       "2:15: \\x needs one to four hexadecimal digits that name a character"},
      {"[Description(\"\\xDFFF\")] class A_B {};",
       "2:15: \\x needs one to four hexadecimal digits that name a character"},
      {"[Description(\"\\x-1\")] class A_B {};",
       "2:15: \\x needs one to four hexadecimal digits that name a character"},
      {"[Description(\"a\tb\")] class A_B {};",
       "2:16: a control character in a string is written as \\xHHHH"},
      {"[Small(128)] class A_B {};", "2:8: Small has values of type sint8"},
      {"[Small(-129)] class A_B {};", "2:8: Small has values of type sint8"},
      {"[Small(99999999999999999999)] class A_B {};", "2:8: Small has values of type sint8"},
  });
}

TEST(MofRefused, NumbersThatTheirTypeDoesNotHold) {
  const struct {
    const char* type;
    const char* lowest;
    const char* highest;
    const char* tooLow;
    const char* tooHigh;
  } cases[] = {
      {"uint8", "0", "255", "-1", "256"},
      {"sint8", "-128", "127", "-129", "128"},
      {"uint16", "0", "65535", "-1", "65536"},
      {"sint16", "-32768", "32767", "-32769", "32768"},
      {"uint32", "0", "4294967295", "-1", "4294967296"},
      {"sint32", "-2147483648", "2147483647", "-2147483649", "2147483648"},
      {"uint64", "0", "18446744073709551615", "-1", "18446744073709551616"},
      {"sint64", "-9223372036854775808", "9223372036854775807", "-9223372036854775809",
       "9223372036854775808"},
  };
  for (const auto& c : cases) {
    const auto used = [&](const char* value) {
      return errorOf({{"t.mof", std::string("Qualifier Mine : ") + c.type +
                                    ", Scope(any);\n[Mine(" + value + ")] class A_B {};"}});
    };
    const std::string refused = std::string("t.mof:2:7: Mine has values of type ") + c.type;
    EXPECT_EQ("taken", used(c.lowest)) << c.type;
    EXPECT_EQ("taken", used(c.highest)) << c.type;
    EXPECT_EQ(refused, used(c.tooLow)) << c.type;
    EXPECT_EQ(refused, used(c.tooHigh)) << c.type;
  }
}

TEST(MofRefused, WhatContradictsItself) {
  expectErrors({
      {"class A_B {}; class A_B {};", "2:21: the class \"A_B\" is declared already"},
      {"class A_B {}; class a_b {};", "2:21: the class \"a_b\" is declared already"},
      {"class A_B : A_C {}; class A_C {};", "2:13: the superclass \"A_C\" is not declared before"},
      {"class A_B : A_B {};", "2:13: the superclass \"A_B\" is not declared before"},
      {"class A_B { string s; uint8 S; };", "2:29: the property \"S\" is declared already"},
      {"Qualifier key : boolean, Scope(any);", "2:11: the qualifier \"key\" is declared already"},
      {"[Nothing] class A_B {};", "2:2: the qualifier \"Nothing\" is not declared"},
      {"[Key] class A_B {};", "2:2: the qualifier \"Key\" is not for classes"},
      {"class A_B { [Abstract] string s; };",
       "2:14: the qualifier \"Abstract\" is not for properties"},
      {"[Abstract, ABSTRACT] class A_B {};", "2:12: the qualifier \"ABSTRACT\" stands here twice"},
      {"[Description] class A_B {};", "2:2: Description needs one value: ( ... )"},
      {"[Description { \"x\" }] class A_B {};", "2:2: Description needs one value: ( ... )"},
      {"class A_B { [Values(\"x\")] string s; };", "2:14: Values needs a list of values: { ... }"},
      {"class A_B { [Values] string s; };", "2:14: Values needs a list of values: { ... }"},
      {"[Description(7)] class A_B {};", "2:14: Description has values of type string"},
      {"[Abstract(\"x\")] class A_B {};", "2:11: Abstract has values of type boolean"},
      {"class A_B { [Values { \"a\", 1 }] string s; };", "2:28: Values has values of type string"},
      {"Qualifier X : uint8 = \"a\", Scope(any);", "2:23: X has values of type uint8"},
      {"Qualifier X : uint8 = { 1 }, Scope(any);", "2:11: X needs one value: ( ... )"},
      {"Qualifier X : uint8[] = 1, Scope(any);", "2:11: X needs a list of values: { ... }"},
      {"Qualifier Provider : boolean, Scope(any);", "2:22: Provider is of type string"},
      {"Qualifier Provider : string[], Scope(any);", "2:22: Provider is of type string"},
      {"class A_B { [ValueMap { \"1\" }] uint8 u; };", "2:38: has 0 Values for 1 of ValueMap"},
      {"class A_B { [Values { \"a\", \"b\" }, ValueMap { \"1\" }] uint8 u; };",
       "2:59: has 2 Values for 1 of ValueMap"},
      {"class A_B { [MaxLen(3)] uint8 u; };", "2:31: is no string, so it has no MaxLen"},
  });
}

TEST(MofRefused, AListThatIsDeclaredAsOneValue) {
  for (const std::string name : {"MappingStrings", "ValueMap", "Values"}) {
    EXPECT_EQ("t.mof:2:3: " + name + " is of type string[]",
              errorOf({{"t.mof", "Qualifier " + name + " :\n  string, Scope(property);"}}));
  }
}

TEST(MofRefused, WhatContradictsTheSuperclass) {
  const std::string base =
      "class A_B { [Key] string k; uint8 u; [ValueMap { \"1\" }, Values { \"a\" }] uint8 v; };\n";
  const std::vector<Case> cases{
      {"{ uint8 u; };",
       "3:27: the superclass has \"u\"; to mean it, this one needs its name and Override(\"u\")"},
      {"{ [Override(\"U\")] uint8 U; };",
       "3:43: Override names no property of the superclass that is called so"},
      {"{ [Override(\"u\")] uint8 U; };",
       "3:43: the superclass has \"u\"; to mean it, this one needs its name and Override(\"u\")"},
      {"{ [Override(\"k\")] uint8 u; };",
       "3:43: Override names no property of the superclass that is called so"},
      {"{ [Override(\"x\")] uint8 x; };",
       "3:43: Override names no property of the superclass that is called so"},
      {"{ [Override(\"u\")] uint16 u; };", "3:37: in the superclass it is of type uint8"},
      {"{ [Override(\"k\"), Key(false)] string k; };",
       "3:56: in the superclass it is a key and stays one"},
      {"{ [Key] uint8 x; };", "3:33: cannot be a key, as the superclass has its keys"},
      {"{ [Override(\"u\"), Key] uint8 u; };",
       "3:48: cannot be a key, as the superclass has its keys"},
      {"{ [Override(\"v\"), Values { \"a\", \"b\" }] uint8 v; };",
       "3:64: has 2 Values for 1 of ValueMap"},
  };
  for (const Case& c : cases) {
    const std::string text = kQualifiers + base + "class A_D : A_B   " + c.text;
    EXPECT_EQ(std::string("t.mof:") + c.error, errorOf({{"t.mof", text}})) << c.text;
  }
}

TEST(MofRefused, OutsideClassesNothingGoesOnInTheNextFile) {
  EXPECT_EQ("a.mof:1:7: the class's name is expected, not the end of the file",
            errorOf({{"a.mof", "class "}, {"b.mof", "A_B {};"}}));
  EXPECT_EQ("a.mof:1:1: the comment does not end", errorOf({{"a.mof", "/*"}, {"b.mof", "*/"}}));
  EXPECT_EQ("a.mof:1:1: unexpected '/'", errorOf({{"a.mof", "/"}, {"b.mof", "/"}}));
  EXPECT_EQ("b.mof:1:1: unexpected '?'", errorOf({{"a.mof", ""}, {"b.mof", "?"}}));
  EXPECT_EQ("b.mof:2:3: the superclass \"X\" is not declared before",
            errorOf({{"a.mof", "class A_B {};\n"}, {"b.mof", "class A_C :\n  X {};"}}));
}

TEST(MofRefused, WhatIsNotUtf8) {
  const struct {
    const char* what;
    std::string bytes;
  } kCases[] = {
      {"a lone continuation", "\x80"},   {"overlong", "\xC0\xAF"},
      {"a surrogate", "\xED\xA0\x80"},   {"above U+10FFFF", "\xF4\x90\x80\x80"},
      {"cut off", "\xE2\x82"},           {"Latin-1", "\xFC"},
      {"a lead byte alone", "\xC3\x28"}, {"five bytes", "\xF8\x88\x80\x80\x80"},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ("t.mof:2:4: is not UTF-8", errorOf({{"t.mof", "\n// " + c.bytes}})) << c.what;
  }
}

// count times "PREFIX i SUFFIX".
std::string repeated(std::size_t count, const std::string& prefix, const std::string& suffix) {
  std::string text;
  for (std::size_t i = 0; i < count; ++i) text += prefix + std::to_string(i) + suffix;
  return text;
}

TEST(MofRefused, WhatIsTooMuch) {
  const std::string chain = [] {
    std::string text = "class A_0 {};";
    for (int i = 1; i <= 17; ++i) {
      text += "\nclass A_" + std::to_string(i) + " : A_" + std::to_string(i - 1) + " {};";
    }
    return text;
  }();
  const std::string wide = "class W {" + repeated(256, "uint8 p", ";") + "};";
  const struct {
    const char* what;
    std::string text;
    std::string error;
  } kCases[] = {
      {"text", std::string((4U << 20U) + 1, ' '), "t.mof: a schema has at most 4 MiB of text"},
      {"a long name", "class " + std::string(256, 'a') + " {};",
       "t.mof:1:7: has more than 255 characters"},
      {"a long string", "\n[X(\"" + std::string(16385, 'a') + "\")] class A {};",
       "t.mof:2:4: a string has at most 16384 bytes"},
      {"a long string in pieces", "[X(\"" + std::string(16384, 'a') + "\" \"a\")] class A {};",
       "t.mof:1:4: a string has at most 16384 bytes"},
      {"qualifiers", repeated(65, "Qualifier q", " : string, Scope(any);\n"),
       "t.mof:65:11: a schema declares at most 64 qualifiers"},
      {"superclasses", chain, "t.mof:18:14: has more than 16 superclasses"},
      {"properties of a class", "class W {" + repeated(257, "uint8 p", ";") + "};",
       "t.mof:1:7: has more than 256 properties"},
      {"inherited properties", wide + "\nclass A : W { uint8 u; };",
       "t.mof:2:7: has more than 256 properties"},
      {"properties in all", wide + '\n' + repeated(256, "class A", " : W {};\n"),
       "t.mof:257:7: the classes have more than 65536 properties, inherited ones counted"},
  };
  for (const auto& c : kCases) EXPECT_EQ(c.error, errorOf({{"t.mof", c.text}})) << c.what;
  EXPECT_EQ("taken", errorOf({{"t.mof", wide + repeated(255, "class A", " : W {};\n")}}));
}

}  // namespace
}  // namespace NKRXVEL20::host
