// SPDX-License-Identifier: Apache-2.0
//
// What holds of the recordings of every machine, and of a second request, tried on random ones.
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "tests/properties/judge.h"
#include "tests/properties/machinerun.h"
#include "tests/properties/randommachine.h"

namespace velhost::properties {
namespace {

using Json = nlohmann::ordered_json;

// The requests in a document: all but the machine's name, which redaction may change.
Json requestsIn(const std::string& document) { return Json::parse(document).at("queries"); }

// The BMC is asked anew in each request, by the collector that is there for it.
bool isAskedAnew(const Json& command) {
  constexpr char kDeviceFirmware[] = "0120060052";  // the firmware collector's question to a cKVM
  return command.at("operation") == "ipmi_command" &&
         !command.at("request").get<std::string>().starts_with(kDeviceFirmware);
}

RC_GTEST_PROP(RandomMachine, ASecondRequestPublishesTheSameAndSendsNothing, ()) {
  const std::string machine = (*randomMachine(Framework::kSound)).text;
  const Json requests = requestsIn(queried(machine, 2).document);
  RC_ASSERT(requests[0].at("instances") == requests[1].at("instances"));
  const Json& sent = requests[1].at("traffic");
  RC_ASSERT(std::ranges::all_of(sent, isAskedAnew));
  RC_ASSERT(requests[1].at("error").is_null());
}

RC_GTEST_PROP(RandomMachine, ARecordingGivesTheSameDocumentAndRecordsAsItself, ()) {
  const std::string machine = (*randomMachine(Framework::kSometimesFails)).text;
  const std::string recording = recorded(machine);
  RC_ASSERT(queried(machine).document == queried(recording).document);
  RC_ASSERT(recording == recorded(recording));
}

RC_GTEST_PROP(RandomMachine, ARedactedRecordingRecordsAsItselfAndIsRedacted, ()) {
  const std::string machine = (*randomMachine(Framework::kSometimesFails)).text;
  const std::string redacted = recorded(machine, true);
  RC_ASSERT(redacted == recorded(redacted));
  RC_ASSERT(redacted == recorded(redacted, true));
}

RC_GTEST_PROP(RandomMachine, RedactionLeavesNoKnownValue, ()) {
  const std::string machine = (*randomMachine(Framework::kSometimesFails)).text;
  const std::string redacted = recorded(machine, true);
  RC_ASSERT(Judge::instance().complaint("redaction",
                                        {{"recorded", recorded(machine)},
                                         {"document", queried(machine).document},
                                         {"redacted", redacted},
                                         {"redacted_document", queried(redacted).document}}) == "");
}

}  // namespace
}  // namespace velhost::properties
