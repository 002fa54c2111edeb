// SPDX-License-Identifier: Apache-2.0
#include "host/formats/resultdocument.h"

#include <gtest/gtest.h>

#include "tests/host/resultsample.h"

namespace velhost {
namespace {

using Kind = NKRXVEL20::host::TrafficEntry::Kind;
using NKRXVEL20::host::TrafficEntry;

TrafficEntry dotCommand() {
  TrafficEntry entry;
  entry.kind = Kind::kDotCommand;
  entry.sp = 1;
  entry.type = 2;
  entry.command = {0x04, 0x03, 0x05, 0x06, 0x01};
  entry.data = {0x0A};
  entry.answered = true;
  entry.length = 40;
  return entry;
}

TrafficEntry tamberCommand() {
  TrafficEntry entry;
  entry.kind = Kind::kTamberCommand;
  entry.command = {0x01, 0xF1, 0xF1, 0x0F};
  entry.flag1 = true;
  entry.answered = true;
  entry.length = -7;
  return entry;
}

TrafficEntry failedIpmiCommand() {
  TrafficEntry entry;
  entry.kind = Kind::kIpmiCommand;
  entry.command = {0x01, 0x20, 0x06, 0x00, 0x52};
  return entry;
}

TEST(ResultDocument, TellsAllOfARequest) {
  QueryResult result;
  result.requested = {"KRXSG_SystemBIOSElement"};
  result.instances = {sampleBios()};
  result.error = RequestError{"TVELException", 2, "not \xFF served"};
  result.coreLog = {{0, "failed"}, {100, "a\nb \x80"}};
  result.failureLog = {{3, "not available"}};
  result.traffic = {dotCommand(), tamberCommand(), failedIpmiCommand()};
  ResultDocument document(sampleContext());
  document.add(result);
  EXPECT_EQ(R"({
  "format": "vel-result/1",
  "machine": {
    "source": "file",
    "name": "a server"
  },
  "plugin": {
    "name": "SPFirmwareVPD",
    "version": "1.0",
    "interface_version": "1.0",
    "type": 0
  },
  "queries": [
    {
      "requested": [
        "KRXSG_SystemBIOSElement"
      ],
      "instances": [
        {
          "class": "KRXSG_SystemBIOSElement",
          "properties": {
            "Version": {
              "type": "string",
              "value": "1.08"
            },
            "Name": {
              "type": "string",
              "value": ")"
            "M\xEF\xBF\xBDller\\n"
            R"(",
              "bytes": "4DFC6C6C65720A"
            },
            "SourceNode": {
              "type": "uint8",
              "value": 2
            },
            "TargetOperatingSystem": {
              "type": "uint16",
              "value": 36
            },
            "LoadedEndingAddress": {
              "type": "uint64",
              "value": 18446744073709551615
            },
            "PrimaryBIOS": {
              "type": "boolean",
              "value": true
            },
            "ReleaseDate": {
              "type": "datetime",
              "value": "20070315000000.000000+000"
            }
          }
        }
      ],
      "error": {
        "exception": "TVELException",
        "code": 2,
        "what": ")"
            "not \xEF\xBF\xBD served"
            R"("
      },
      "core_log": [
        {
          "severity": 0,
          "text": "failed"
        },
        {
          "severity": 100,
          "text": ")"
            "a\\nb \xEF\xBF\xBD"
            R"("
        }
      ],
      "failure_log": [
        {
          "severity": 3,
          "text": "not available"
        }
      ],
      "traffic": [
        {
          "operation": "dot_command",
          "sp": 1,
          "type": 2,
          "command": "0403050601",
          "data": "0A",
          "answered": true,
          "length": 40
        },
        {
          "operation": "tamber_command",
          "command": "01F1F10F",
          "data": "",
          "flags": [
            false,
            true
          ],
          "answered": true,
          "length": -7
        },
        {
          "operation": "ipmi_command",
          "request": "0120060052",
          "answered": false,
          "length": 0
        }
      ]
    }
  ]
}
)",
            document.text());
}

// As the caller's buffer got them, however long the reply was said to be.
TEST(ResultDocument, RepliesAreShownWhereTheyAreAskedFor) {
  QueryResult result;
  result.traffic = {dotCommand(), tamberCommand(), failedIpmiCommand()};
  result.traffic[0].reply = {0x00, 0x4B, 0xFF};
  ResultDocument document(sampleContext(), Replies::kShown);
  document.add(result);
  const auto shown = nlohmann::ordered_json::parse(document.text());
  EXPECT_EQ(R"([{"operation":"dot_command","sp":1,"type":2,"command":"0403050601","data":"0A",)"
            R"("answered":true,"length":40,"reply":"004BFF"},)"
            R"({"operation":"tamber_command","command":"01F1F10F","data":"","flags":[false,true],)"
            R"("answered":true,"length":-7,"reply":""},)"
            R"({"operation":"ipmi_command","request":"0120060052","answered":false,"length":0,)"
            R"("reply":""}])",
            shown.at("queries")[0].at("traffic").dump());
}

TEST(ResultDocument, AnExceptionOfAnotherTypeHasNoCode) {
  QueryResult result;
  result.error = RequestError{"std::runtime_error", std::nullopt, "broke"};
  ResultDocument document(sampleContext());
  document.add(result);
  document.add({});
  const auto queries = nlohmann::ordered_json::parse(document.text()).at("queries");
  EXPECT_EQ(R"([{"requested":[],"instances":[],)"
            R"("error":{"exception":"std::runtime_error","what":"broke"},)"
            R"("core_log":[],"failure_log":[],"traffic":[]},)"
            R"({"requested":[],"instances":[],"error":null,)"
            R"("core_log":[],"failure_log":[],"traffic":[]}])",
            queries.dump());
}

TEST(ResultDocument, WithoutRequestsTheListIsEmpty) {
  const auto document = nlohmann::ordered_json::parse(ResultDocument(sampleContext()).text());
  EXPECT_EQ("[]", document.at("queries").dump());
}

}  // namespace
}  // namespace velhost
