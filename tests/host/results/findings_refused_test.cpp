// SPDX-License-Identifier: Apache-2.0
//
// What no findings are read from, and how that is said.
#include "host/results/findings.h"
#include "host/text/inputerror.h"
#include "tests/host/scratchfolder.h"

namespace velhost {
namespace {

class FindingsRefused : public ScratchFolder {
 protected:
  std::string complaintAbout(const std::string& text) const {
    const auto file = put("some.json", text);
    try {
      findingsOf(file, TEST_PROVIDERS);
    } catch (const InputError& error) {
      std::string what = error.what();
      return what.starts_with(file.string()) ? what.substr(file.string().size() + 1) : what;
    }
    return "accepted";
  }
};

struct RefusedCase {
  const char* text;
  const char* complaint;
};

TEST_F(FindingsRefused, Documents) {
  const RefusedCase cases[] = {
      {"[]", " /: must be an object"},
      {R"({ "Name": "x" })",
       " /format: must be one of \"vel-inventory/1\", \"vel-result/1\", \"vel-machine/1\""},
      {R"({ "format": "vel-inventory/2" })",
       " /format: must be one of \"vel-inventory/1\", \"vel-result/1\", \"vel-machine/1\""},
      {R"({ "format": [] })", " /format: must be a text"},
      {R"({ "format": "vel-machine/1" })", " /name: is missing"},
      {R"({ "KRXSG_Vpd": [ 5 ] })", " /KRXSG_Vpd/0: must be an object"},
      {R"({ "KRXSG_Vpd": [ { "Name": 5 } ] })", " /KRXSG_Vpd/0/Name: must be a text"},
      {R"({ "KRXSG_Vpd": [ { "Mine": [] } ] })",
       " /KRXSG_Vpd/0/Mine: must be a text, a number, true, false or null"},
      {R"({ "KRXSG_HardwareRevisionLevel": [ { "SourceNode": 256 } ] })",
       " /KRXSG_HardwareRevisionLevel/0/SourceNode: must be from 0 to 255"},
      {R"({ "KRXSG_Vpd": [], "KRXSG_Vpd": [] })", " /KRXSG_Vpd: this key is given twice"},
  };
  for (const RefusedCase& c : cases) EXPECT_EQ(c.complaint, complaintAbout(c.text)) << c.text;
}

TEST_F(FindingsRefused, Inventories) {
  constexpr char kMachine[] = R"("machine": { "source": "file", "name": "x" })";
  const RefusedCase cases[] = {
      {R"("classes": [])", " /machine: is missing"},
      {R"("machine": { "source": "file" }, "classes": [])", " /machine/name: is missing"},
      {"MACHINE", " /classes: is missing"},
      {R"(MACHINE, "classes": {})", " /classes: must be a list"},
      {R"(MACHINE, "classes": [ { "state": "absent", "instances": [] } ])",
       " /classes/0/class: is missing"},
      {R"(MACHINE, "classes": [ { "class": "C", "state": "gone", "instances": [] } ])",
       " /classes/0/state: is no state of a class"},
      {R"(MACHINE, "classes": [ { "class": "C", "state": "absent" } ])",
       " /classes/0/instances: is missing"},
      {R"(MACHINE, "classes": [ { "class": "C", "state": "absent", "instances": [] },
                                { "class": "C", "state": "absent", "instances": [] } ])",
       " /classes/1/class: stands in the document already"},
  };
  for (const RefusedCase& c : cases) {
    std::string members = c.text;
    const auto at = members.find("MACHINE");
    if (at != std::string::npos) members.replace(at, 7, kMachine);
    EXPECT_EQ(c.complaint, complaintAbout(R"({ "format": "vel-inventory/1", )" + members + "}"))
        << c.text;
  }
}

TEST_F(FindingsRefused, ResultDocuments) {
  const RefusedCase cases[] = {
      {R"("queries": [])", " /queries: has no query"},
      {R"("queries": [ { "instances": [] } ])", " /queries/0/requested: is missing"},
      {R"("queries": [ 5, { "requested": [ 5 ], "instances": [] } ])",
       " /queries/1/requested/0: must be a text"},
      {R"("queries": [ { "requested": [], "instances": [ { "class": "C", "properties":
          { "P": { "type": "uint9", "value": 1 } } } ] } ])",
       " /queries/0/instances/0/properties/P/type: is no type of CIM"},
      {R"("queries": [ { "requested": [], "instances": [ { "class": "C", "properties":
          { "P": { "type": "", "value": 1 } } } ] } ])",
       " /queries/0/instances/0/properties/P/value: the schema gives this property no type"},
      {R"("queries": [ { "requested": [], "instances": [ { "class": "C", "properties":
          { "P": { "type": "uint8", "value": 300 } } } ] } ])",
       " /queries/0/instances/0/properties/P/value: must be from 0 to 255"},
      {R"("queries": [ { "requested": [], "instances": [ { "class": "C", "properties":
          { "P": { "type": "string", "value": "", "bytes": "F" } } } ] } ])",
       " /queries/0/instances/0/properties/P/bytes: "},
  };
  for (const RefusedCase& c : cases) {
    const std::string head =
        R"({ "format": "vel-result/1", "machine": { "source": "file", "name": "x" }, )";
    const std::string complaint = complaintAbout(head + c.text + "}");
    EXPECT_EQ(c.complaint, complaint.substr(0, std::string(c.complaint).size())) << complaint;
  }
}

TEST_F(FindingsRefused, FilesThatCannotBeRead) {
  EXPECT_THROW(findingsOf(folder_ / "none.json", TEST_PROVIDERS), InputError);
  EXPECT_EQ("1:1: ", complaintAbout("").substr(0, 5));
  EXPECT_EQ("2:1: ", complaintAbout("{\n\xFF").substr(0, 5));
  EXPECT_EQ(
      " /0/0/0/0/0/0/0/0/0/0/0/0/0/0/0/0/0/0/0/0/0/0/0/0/0/0/0/0/0/0/0/0: lies deeper than 32 "
      "levels",
      complaintAbout(std::string(100, '[')));
}

// A machine file keeps its own budget of values; a result may have more.
TEST_F(FindingsRefused, TooManyValues) {
  std::string zeros = "0";
  for (int i = 0; i < 300'000; ++i) zeros += ",0";
  EXPECT_EQ(" /x/249997: the file has more than 250000 values",
            complaintAbout(R"({ "format": "vel-machine/1", "x": [)" + zeros + "]}"));
  EXPECT_EQ("accepted",
            complaintAbout(R"({ "format": "vel-inventory/1", "x": [)" + zeros +
                           R"(], "machine": { "source": "file", "name": "x" }, "classes": [] })"));
}

}  // namespace
}  // namespace velhost
