// SPDX-License-Identifier: Apache-2.0
//
// The plug-in against an SP driver library of its own: this program defines the library's functions
// that are no virtual operations, and they take the place of the real ones.
#include <functional>

#include "tests/support/mocksplibrary.h"
#include "tests/support/pluginfixture.h"
#include "velhost/log.h"

namespace {

struct ScriptedDriver {
  NKRXVEL20::SPLibrary* library = nullptr;
  std::vector<std::string> calls;
};

ScriptedDriver driver;  // NOLINT

// "04 03", or "null".
std::string hex(const unsigned char* bytes, int size) {
  if (bytes == nullptr) return "null";
  std::string result;
  for (int i = 0; i < size; ++i) {
    char pair[4];
    std::snprintf(pair, sizeof pair, i == 0 ? "%02X" : " %02X", bytes[i]);
    result += pair;
  }
  return result;
}

}  // namespace

namespace NKRXVEL20 {

SPLibrary* SPLibrary::GetSplibraryInstance(int reserved) {
  driver.calls.push_back("instance " + std::to_string(reserved));
  return driver.library;
}

dotCmd::dotCmd(unsigned char requestType, int commandLength, int dataLength,
               const unsigned char* commandBytes, const unsigned char* dataBytes)
    : type(requestType) {
  driver.calls.push_back("request " + std::to_string(requestType) + ": " +
                         std::to_string(commandLength) + " of [" +
                         hex(commandBytes, commandLength) + "], " + std::to_string(dataLength) +
                         " of [" + hex(dataBytes, 1) + "]");
}

dotCmd::~dotCmd() { driver.calls.emplace_back("request ends"); }

}  // namespace NKRXVEL20

namespace spfirmwarevpd::test {
namespace {

using namespace NKRXVEL20;
using ::testing::NiceMock;

class SPDriverCallsTest : public PluginTest {
 protected:
  SPDriverCallsTest() {
    driver = {};
    driver.library = &library;
  }

  NiceMock<MockSPLibrary> library;  // a machine without an SP
};

TEST_F(SPDriverCallsTest, LibraryIsAskedForWithZero) {
  const struct {
    const char* what;
    std::function<void()> call;
  } cases[] = {
      {"the collection", [this] { plugin.gatherSPdata(ns); }},
      {"the IPMI FRU probe", [this] { plugin.DetermineIPMIFRUExist(ns); }},
      {"the cKVM level", [this] { plugin.GetcKVMFirmwareVersion(ns); }},
  };
  for (const auto& c : cases) {
    driver.calls.clear();
    c.call();
    EXPECT_EQ(driver.calls, std::vector<std::string>{"instance 0"}) << c.what;
  }
}

// One request for each command line: it goes out again when it failed, and it lives until its
// fields are read. It carries no data, and points to one zero byte of it.
TEST_F(SPDriverCallsTest, DescribedCommandIsOneRequest) {
  plugin.spCommandTable = {"d|2|4|3|KRXSG_Test|", "b|1|Number|",      "d|1|8|KRXSG_Other|",
                           "b|1|Level|",          "d|0|KRXSG_Empty|", "b|1|Last|"};
  bool answers = false;
  ON_CALL(library, discoverSPs).WillByDefault([] {
    driver.calls.emplace_back("discover");
    return 1;
  });
  ON_CALL(library, sendDotCommand).WillByDefault([&] {
    driver.calls.emplace_back(answers ? "send" : "send fails");
    return std::exchange(answers, true);
  });
  host::setCoreLogSink([](const host::LogEntry& entry) {
    if (entry.text.find("parsing") != std::string::npos) driver.calls.emplace_back("field");
  });
  EXPECT_EQ(plugin.getParseVPD(&library, ns).size(), 3U);
  EXPECT_EQ(driver.calls, (std::vector<std::string>{
                              "discover",
                              "request 2: 2 of [04 03], 0 of [00]",
                              "send fails",
                              "send",
                              "field",  // the number
                              "field",  // the next command line
                              "request ends",
                              "request 2: 1 of [08], 0 of [00]",
                              "send",
                              "field",
                              "field",
                              "request ends",
                              "request 2: 0 of [], 0 of [00]",
                              "send",
                              "field",
                              "request ends",
                          }));
}

}  // namespace
}  // namespace spfirmwarevpd::test
