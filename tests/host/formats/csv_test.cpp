// SPDX-License-Identifier: Apache-2.0
#include "host/formats/csv.h"

#include <gtest/gtest.h>

#include "tests/host/formats/formatsample.h"

namespace velhost {
namespace {

const std::string kHead = "machine,class,node,instance,name,property,value,state,reason\r\n";

TEST(Csv, HasARecordAPropertyAndOneForEachClassWithoutInstances) {
  EXPECT_EQ(
      kHead +
          "a server,KRXSG_SystemBIOSElement,1,1,Node 1 : UEFI,SourceNode,1,present,\r\n"
          "a server,KRXSG_SystemBIOSElement,1,1,Node 1 : UEFI,Name,Node 1 : UEFI,present,\r\n"
          "a server,KRXSG_SystemBIOSElement,1,1,Node 1 : UEFI,Version,104,present,\r\n"
          "a server,KRXSG_SystemBIOSElement,1,1,Node 1 : UEFI,BuildNumber,KRE104C,present,\r\n"
          "a server,KRXSG_SystemBIOSElement,1,1,Node 1 : UEFI,PrimaryBIOS,true,present,\r\n"
          "a server,KRXSG_SystemBIOSElement,2,2,Node 2 : UEFI,SourceNode,2,present,\r\n"
          "a server,KRXSG_SystemBIOSElement,2,2,Node 2 : UEFI,Name,Node 2 : UEFI,present,\r\n"
          "a server,KRXSG_SystemBIOSElement,2,2,Node 2 : UEFI,Version,104,present,\r\n"
          "a server,KRXSG_SystemBIOSElement,2,2,Node 2 : UEFI,BuildNumber,KRE104C,present,\r\n"
          "a server,KRXSG_SystemBIOSElement,2,2,Node 2 : UEFI,PrimaryBIOS,true,present,\r\n"
          "a server,KRXSG_Vpd,2,1,Node 2: DIMM 1,Name,Node 2: DIMM 1,partial,"
          "\"slot 2 is empty, as its \"\"type\"\" says\"\r\n"
          "a server,KRXSG_Vpd,2,1,Node 2: DIMM 1,PartNumber,R4G72,partial,"
          "\"slot 2 is empty, as its \"\"type\"\" says\"\r\n"
          "a server,KRXSG_cKVM,,,,,,absent,\"no cKVM device, by the machine type\"\r\n"
          "a server,KRXSG_DeviceDriver,,,,,,unused,\r\n",
      csvText(sampleContext(), sampleResult()));
}

TEST(Csv, AnInstanceWithoutPropertiesHasARecord) {
  EXPECT_EQ(kHead + "a server,KRXSG_Vpd,,1,,,,present,\r\n",
            csvText(sampleContext(), resultOf("KRXSG_Vpd", {{}})));
}

TEST(Csv, NothingRequestedIsTheRecordOfNames) { EXPECT_EQ(kHead, csvText(sampleContext(), {})); }

TEST(Csv, CellsOfAnyKind) {
  const struct {
    const char* what;
    TCIMValue value;
    const char* cell;
  } cases[] = {
      {"empty value", TCIMValue(), ""},
      {"empty text", TCIMValue(""), ""},
      {"blank", TCIMValue(" "), " "},
      {"comma", TCIMValue("a,b"), "\"a,b\""},
      {"quote", TCIMValue("a\"b"), "\"a\"\"b\""},
      {"line feed", TCIMValue("a\nb\n"), "\"a\nb\n\""},
      {"line feed alone", TCIMValue("\n"), "\"\n\""},
      {"carriage return", TCIMValue("a\r\nb"), "\"a\\r\nb\""},
      {"tab", TCIMValue("a\tb"), "a\\tb"},
      {"control character", TCIMValue("\x1B[31m"), "\\x1b[31m"},
      {"line separator", TCIMValue("a\xE2\x80\xA8"), "a\\u2028"},
      {"HTML", TCIMValue("<b>&amp;</b>"), "<b>&amp;</b>"},
      {"no UTF-8", TCIMValue("\xFFx\xC3"), "\xEF\xBF\xBDx\xEF\xBF\xBD"},
      {"backslash", TCIMValue("a\\b"), "a\\b"},
      {"number", TCIMValue(std::uint64_t{18446744073709551615U}), "18446744073709551615"},
      {"boolean", TCIMValue(false), "false"},
      {"day", TCIMValue(TCIMDateTime("20070315000000.000000+000")), "2007-03-15"},
      {"formula", TCIMValue("=1+1"), "'=1+1"},
      {"formula with a comma", TCIMValue("=HYPERLINK(\"x\",1)"), "\"'=HYPERLINK(\"\"x\"\",1)\""},
      {"plus", TCIMValue("+1"), "'+1"},
      {"minus", TCIMValue("-1"), "'-1"},
      {"at", TCIMValue("@SUM(A1)"), "'@SUM(A1)"},
      {"wide equals sign", TCIMValue("\xEF\xBC\x9D\x31"), "'\xEF\xBC\x9D\x31"},
      {"wide plus", TCIMValue("\xEF\xBC\x8B"), "'\xEF\xBC\x8B"},
      {"wide minus", TCIMValue("\xEF\xBC\x8D"), "'\xEF\xBC\x8D"},
      {"wide at", TCIMValue("\xEF\xBC\xA0"), "'\xEF\xBC\xA0"},
      {"formula behind blanks", TCIMValue("  =1"), "'  =1"},
      {"formula behind a line feed", TCIMValue("\n=1"), "\"'\n=1\""},
      {"apostrophe", TCIMValue("'=1"), "''=1"},
      {"sign further back", TCIMValue("1=1"), "1=1"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(kHead + "a server,KRXSG_Vpd,,1,,Vendor," + c.cell + ",present,\r\n",
              csvText(sampleContext(), resultOf("KRXSG_Vpd", {{{"Vendor", c.value}}})))
        << c.what;
  }
}

TEST(Csv, NamesAndReasonsAreCellsLikeOthers) {
  QueryResult result = resultOf("KRXSG_Vpd", {{{"Name", TCIMValue("-")}}});
  result.states[0] = {"KRXSG_Vpd", "", State::kPartial, "=\xFF"};
  EXPECT_EQ(kHead + "\"'@a,b\",KRXSG_Vpd,,1,'-,Name,'-,partial,'=\xEF\xBF\xBD\r\n",
            csvText({"file", "@a,b", {}}, result));
}

}  // namespace
}  // namespace velhost
