// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <limits>
#include <stdexcept>

#include "tests/support/mocksplibrary.h"
#include "tests/support/namespacespy.h"
#include "tests/support/pluginfixture.h"

namespace spfirmwarevpd::test {
namespace {

using namespace NKRXVEL20;
using host::CimOperation;
using host::SimulatedReply;

const Log::value_type kThere = {3, "spfirmwarevpd: There is cKVM."};
const Log::value_type kNotThere = {3, "spfirmwarevpd: There is no cKVM."};
const Log::value_type kNoDevices = {3, "spfirmwarevpd: Can't get any instance of KRXSG_USBDevice"};
const Log::value_type kNoDescription = {
    3, "spfirmwarevpd: No Description property in the current instance of KRXSG_USBDevice"};

Fault fault(CimOperation operation, const std::string& property = {},
            std::optional<unsigned> nth = std::nullopt, bool throwsRuntimeError = false) {
  return {.operation = operation,
          .className = {},
          .propertyName = property,
          .nth = nth,
          .throwsRuntimeError = throwsRuntimeError};
}

Fault otherException(CimOperation operation, std::optional<unsigned> nth = std::nullopt) {
  return fault(operation, {}, nth, true);
}

class cKVMPresenceTest : public PluginTest {
 protected:
  void addUsbDevice(const char* description) {
    ns->addCompanion("KRXSG_USBDevice", {{"Description", TCIMValue(description)}});
  }
};

TEST_F(cKVMPresenceTest, DescriptionHoldsTheFourLettersAnywhere) {
  const struct {
    const char* description;
    bool found;
  } cases[] = {
      {"cKVM", true},      {"KRX cKVM", true},  {"KRX cKVM unit", true},
      {"xcKVMx", true},    {"KRX ckvm", false}, {"KRX CKVM", false},
      {"KRX CKvm", false}, {"cKV M", false},    {"KRX Keyboard", false},
      {"cK", false},       {"", false},
  };
  for (const auto& c : cases) {
    useFaults({});
    addUsbDevice(c.description);
    plugin.cKVMExists = false;
    plugin.DeterminecKVMExist(ns);
    EXPECT_EQ(plugin.cKVMExists, c.found) << c.description;
    EXPECT_EQ(takeLog(), c.found ? Log{kThere} : Log{}) << c.description;
  }
}

TEST_F(cKVMPresenceTest, NoUsbDeviceAtAllMeansNone) {
  for (const bool earlier : {false, true}) {
    plugin.cKVMExists = earlier;
    plugin.DeterminecKVMExist(ns);
    EXPECT_FALSE(plugin.cKVMExists);
    EXPECT_EQ(takeLog(), (Log{kNotThere}));
  }
}

TEST_F(cKVMPresenceTest, DevicesWithoutAMatchKeepTheAnswerSilently) {
  addUsbDevice("KRX Keyboard");
  ns->addCompanion("KRXSG_USBDevice", {{"DeviceID", TCIMValue("cKVM")}});  // no description
  for (const bool earlier : {false, true}) {
    plugin.cKVMExists = earlier;
    plugin.DeterminecKVMExist(ns);
    EXPECT_EQ(plugin.cKVMExists, earlier);
    EXPECT_EQ(log, Log{});
  }
}

TEST_F(cKVMPresenceTest, FirstHitStopsTheWalk) {
  useFaults({otherException(CimOperation::kGetProperty, 3)});  // the third read is never made
  addUsbDevice("KRX Keyboard");
  addUsbDevice("KRX cKVM");
  addUsbDevice("KRX cKVM");
  plugin.DeterminecKVMExist(ns);
  EXPECT_TRUE(plugin.cKVMExists);
  EXPECT_EQ(log, (Log{kThere}));
}

TEST_F(cKVMPresenceTest, MissingDescriptionIsLoggedAndTheNextDeviceLookedAt) {
  useFaults({fault(CimOperation::kGetProperty, "Description", 1),
             fault(CimOperation::kGetProperty, "Description", 3)});
  addUsbDevice("KRX cKVM");
  addUsbDevice("KRX Keyboard");
  addUsbDevice("KRX cKVM");
  addUsbDevice("KRX cKVM");
  plugin.DeterminecKVMExist(ns);
  EXPECT_TRUE(plugin.cKVMExists);
  EXPECT_EQ(log, (Log{kNoDescription, kNoDescription, kThere}));
}

TEST_F(cKVMPresenceTest, NoDescriptionOnAnyDeviceKeepsTheAnswer) {
  useFaults({fault(CimOperation::kGetProperty)});
  addUsbDevice("KRX cKVM");
  addUsbDevice("KRX cKVM");
  plugin.DeterminecKVMExist(ns);
  EXPECT_FALSE(plugin.cKVMExists);
  EXPECT_EQ(log, (Log{kNoDescription, kNoDescription}));
}

TEST_F(cKVMPresenceTest, UnreadableDevicesKeepTheAnswer) {
  const struct {
    const char* what;
    std::vector<Fault> faults;
    std::vector<std::string> missing;
  } cases[] = {
      {"class missing", {}, {"KRXSG_USBDevice"}},
      {"class lookup", {fault(CimOperation::kGetClass)}, {}},
      {"enumeration", {fault(CimOperation::kEnumerateInstances)}, {}},
  };
  for (const auto& c : cases) {
    for (const bool earlier : {false, true}) {
      useFaults(c.faults, c.missing);
      plugin.cKVMExists = earlier;
      plugin.DeterminecKVMExist(ns);
      EXPECT_EQ(plugin.cKVMExists, earlier) << c.what;
      EXPECT_EQ(takeLog(), (Log{kNoDevices})) << c.what;
    }
  }
}

TEST_F(cKVMPresenceTest, OtherExceptionsPass) {
  for (const auto operation :
       {CimOperation::kGetClass, CimOperation::kEnumerateInstances, CimOperation::kGetProperty}) {
    useFaults({otherException(operation)});
    addUsbDevice("KRX cKVM");
    EXPECT_THROW(plugin.DeterminecKVMExist(ns), std::runtime_error);
    EXPECT_FALSE(plugin.cKVMExists);
    EXPECT_EQ(log, Log{});
  }
}

TEST_F(cKVMPresenceTest, ClassIsLookedUpAsAPlugin) {
  addUsbDevice("KRX Keyboard");
  addUsbDevice("KRX cKVM");
  const auto spy = boost::make_shared<NamespaceSpy>(ns);
  plugin.DeterminecKVMExist(spy);
  EXPECT_EQ(spy->takeCalls(),
            (Calls{"get KRXSG_USBDevice as a plug-in", "enumerate KRXSG_USBDevice",
                   "read KRXSG_USBDevice.Description", "read KRXSG_USBDevice.Description"}));
}

// IPMI 2.0, 22.11: request record with its head (9 bytes) and 6 bytes of data.
const Bytes kRequest = {0x01, 0x20, 0x06, 0x00, 0x52, 0x06, 0x00, 0x00,
                        0x00, 0xF5, 0x68, 0x10, 0x1D, 0x01, 0x00};
constexpr char kRequestSent[] = "012006005206000000F568101D0100";

const Log::value_type kAsking = {
    3,
    "cKVM - 0x01, 0x20, 0x06, 0x00, 0x52, 0x06, 0x00, 0x00, 0x00, 0xF5, 0x68, 0x10, 0x1D, 0x01, "
    "0x00"};
const Log::value_type kNotSent = {3, "cKVM - IPMI command failed to send successfully."};
const Log::value_type kSent = {3, "cKVM - IPMI command was sent successfully."};

// The whole record: head, IPMI completion code, three bytes, device completion code, level.
Bytes reply(const Bytes& level, unsigned char ipmiCompletion = 0,
            unsigned char deviceCompletion = 0) {
  return joined(
      {{0x01, 0x20, 0x07, 0x00, ipmiCompletion, 0x55, 0x55, 0x55, deviceCompletion}, level});
}

Bytes reply(const std::string& level, unsigned char ipmiCompletion = 0,
            unsigned char deviceCompletion = 0) {
  return reply(text(level, level.size()), ipmiCompletion, deviceCompletion);
}

Properties instance(const std::string& level) {
  return {"SoftwareElementID=cKVM", "SoftwareElementState=3", "TargetOperatingSystem=66",
          "Version=" + level, "FirmwareVersion=" + level};
}

class cKVMLevelTest : public PluginTest {
 protected:
  void useReply(const SimulatedReply& answer) {
    SimulatedSP machine;
    machine.ipmiCommands.push_back({.request = kRequest, .replies = {answer}});
    useSP(machine);
  }

  void useReply(const Bytes& bytes, std::optional<std::int32_t> length = std::nullopt) {
    useReply(SimulatedReply{.fails = false, .bytes = bytes, .length = length});
  }

  int collect() { return plugin.GetcKVMFirmwareVersion(ns).status; }
};

TEST_F(cKVMLevelTest, GoodReplyGivesTheInstance) {
  useReply(reply("1.3.11.40"));
  EXPECT_EQ(collect(), 0);
  EXPECT_EQ(plugin.cKVMFirmwareVersion, "1.3.11.40");
  EXPECT_EQ(published(plugin.cKVMInstances), (std::vector<Properties>{instance("1.3.11.40")}));
  EXPECT_EQ(log, (Log{kAsking, kSent}));
  EXPECT_EQ(failureLog, Log{});
  EXPECT_EQ(takeTraffic(), (std::vector<std::string>{kRequestSent}));
}

TEST_F(cKVMLevelTest, RequestStandsInAZeroedBufferOf256Bytes) {
  auto library = std::make_unique<testing::StrictMock<MockSPLibrary>>();
  Bytes expected = kRequest;
  expected.resize(256);
  EXPECT_CALL(*library, sendIPMICommand)
      .WillOnce([&](unsigned char* buffer, int* length, int capacity, bool wait) {
        EXPECT_EQ(Bytes(buffer, buffer + 256), expected);
        EXPECT_EQ(*length, 256);
        EXPECT_EQ(capacity, 256);
        EXPECT_TRUE(wait);
        EXPECT_EQ(log, (Log{kAsking}));
        return false;
      });
  host::setSPLibrary(std::move(library));
  EXPECT_EQ(collect(), 3);
}

TEST_F(cKVMLevelTest, LevelIsWhatIsLeftOfTheReply) {
  const std::string full(247, 'A');  // from byte 9 to the buffer's last
  const struct {
    const char* what;
    Bytes reply;
    std::optional<std::int32_t> length;
    std::string level;
  } cases[] = {
      {"blank and zero bytes behind the level", reply(text("1.3.11.37 ", 20)), std::nullopt,
       "1.3.11.37"},
      {"letters and digits behind the zero bytes", reply(joined({text("1.3", 6), text("B2", 2)})),
       std::nullopt, "1.3B2"},
      {"they count only within the length", reply(joined({text("1.3", 6), text("B2", 2)})), 7,
       "1.3B"},
      {"each kept kind", reply("azAZ09.()[]"), std::nullopt, "azAZ09.()[]"},
      {"neighbours of the kept ones", reply(std::string("!/:@`{*,\\^_-~'+ \t\x7F\x80\xFF") + "1"),
       std::nullopt, "1"},
      {"all skipped", reply(" -_- "), std::nullopt, ""},
      {"length 1", reply("1.3"), 1, "1"},
      {"length within the level", reply("1.3.11"), 3, "1.3"},
      // The length counts the record and the level starts at byte 9, so the walk goes on behind it.
      {"length of the level", reply("1.3.11"), 6, "1.3.11"},
      {"negative length", reply("1.3.11"), -1, ""},
      {"least length", reply("1.3.11"), std::numeric_limits<std::int32_t>::min(), ""},
      {"as far as the buffer's end", reply(full), std::nullopt, full},
      {"last byte left out", reply(full), 246, full.substr(1)},
      {"length 247", reply(full), 247, full},
      {"length 248", reply(full), 248, full},
      {"length 1000", reply(full), 1000, full},
      {"greatest length", reply(full), std::numeric_limits<std::int32_t>::max(), full},
      {"more bytes than the buffer holds", reply(full + "BBB"), std::nullopt, full},
      {"least printable byte", reply(" 1"), std::nullopt, "1"},
      {"greatest printable byte", reply("~1"), std::nullopt, "1"},
  };
  for (const auto& c : cases) {
    useReply(c.reply, c.length);
    plugin.cKVMInstances.clear();
    EXPECT_EQ(collect(), 0) << c.what;
    EXPECT_EQ(plugin.cKVMFirmwareVersion, c.level) << c.what;
    EXPECT_EQ(published(plugin.cKVMInstances), (std::vector<Properties>{instance(c.level)}))
        << c.what;
    EXPECT_EQ(takeLog(), (Log{kAsking, kSent})) << c.what;
  }
}

TEST_F(cKVMLevelTest, FailedSendIsLogged) {
  const auto failed = [&](const char* what) {
    plugin.cKVMFirmwareVersion = "earlier";
    EXPECT_EQ(collect(), 3) << what;
    EXPECT_EQ(plugin.cKVMFirmwareVersion, "") << what;
    EXPECT_EQ(takeLog(), (Log{kAsking, kNotSent})) << what;
    EXPECT_EQ(takeTraffic(), (std::vector<std::string>{std::string(kRequestSent) + " failed"}))
        << what;
    EXPECT_TRUE(plugin.cKVMInstances.empty()) << what;
  };
  useSP({});
  failed("nobody answers");
  useReply(SimulatedReply{.fails = true, .bytes = {}, .length = std::nullopt});
  failed("the send fails");
}

TEST_F(cKVMLevelTest, EachFailingReplyIsLoggedInTheOrderOfTheTests) {
  constexpr char kLength[] = "cKVM - Incorrect IPMI response length.";
  constexpr char kDevice[] = "cKVM - Incorrect completion code.";
  constexpr char kIpmi[] = "cKVM - Bad IPMI completion code.";
  constexpr char kData[] = "cKVM - Ineffective response data.";
  const struct {
    const char* what;
    Bytes reply;
    std::optional<std::int32_t> length;
    const char* failure;
  } cases[] = {
      {"empty reply", {}, std::nullopt, kLength},
      {"good reply of length 0", reply("1.3"), 0, kLength},
      {"length 0 before both codes", reply("\x01", 0xC1, 0xC1), 0, kLength},
      {"device refuses", reply("1.3", 0, 0xC1), std::nullopt, kDevice},
      {"device before IPMI", reply("1.3", 0xC0, 0xC1), std::nullopt, kDevice},
      {"device before data", reply("\x01", 0, 0xFF), std::nullopt, kDevice},
      {"BMC refuses", reply("1.3", 0xC1, 0), std::nullopt, kIpmi},
      {"IPMI before data", reply("\x01", 0x01, 0), std::nullopt, kIpmi},
      {"zero byte first", reply(Bytes{0, '1'}), std::nullopt, kData},
      {"below the printable bytes",
       reply("\x1F"
             "1"),
       std::nullopt, kData},
      {"above the printable bytes",
       reply("\x7F"
             "1"),
       std::nullopt, kData},
      {"first byte not ASCII",
       reply("\x80"
             "1"),
       std::nullopt, kData},
      {"all ones", reply("\xFF\xFF"), std::nullopt, kData},
      {"no level behind the head", reply(""), std::nullopt, kData},
      {"head only", {0x01, 0x20, 0x07, 0x00}, std::nullopt, kData},
  };
  for (const auto& c : cases) {
    useReply(c.reply, c.length);
    plugin.cKVMFirmwareVersion = "earlier";
    EXPECT_EQ(collect(), 3) << c.what;
    EXPECT_EQ(plugin.cKVMFirmwareVersion, "") << c.what;
    EXPECT_EQ(takeLog(), (Log{kAsking, kSent, {0, c.failure}})) << c.what;
    EXPECT_TRUE(plugin.cKVMInstances.empty()) << c.what;
  }
}

TEST_F(cKVMLevelTest, TwoCollectionsAppendTwoInstances) {
  useReply(reply("1.3"));
  EXPECT_EQ(collect(), 0);
  useReply(reply("1.4"));
  EXPECT_EQ(collect(), 0);
  EXPECT_EQ(published(plugin.cKVMInstances),
            (std::vector<Properties>{instance("1.3"), instance("1.4")}));
}

TEST_F(cKVMLevelTest, RefusedInstanceKeepsTheLevelThatWasRead) {
  useReply(reply("1.3"));
  useFaults({}, {"KRXSG_cKVM"});
  EXPECT_EQ(collect(), 3);
  EXPECT_EQ(plugin.cKVMFirmwareVersion, "1.3");
  EXPECT_EQ(takeLog(), (Log{kAsking, kSent, {0, "cKVM - Cannot create KRXSG_cKVM instance."}}));
  refuseProperty("Version");
  EXPECT_EQ(collect(), 3);
  EXPECT_EQ(plugin.cKVMFirmwareVersion, "1.3");
  EXPECT_EQ(
      takeLog(),
      (Log{kAsking, kSent, {0, "cKVM - Cannot set property value for KRXSG_cKVM instance."}}));
  EXPECT_TRUE(plugin.cKVMInstances.empty());
}

class cKVMInstanceTest : public PluginTest {
 protected:
  cKVMInstanceTest() { plugin.cKVMFirmwareVersion = "1.3.11.37"; }
};

TEST_F(cKVMInstanceTest, LevelIsSetTwice) {
  EXPECT_EQ(plugin.CreatecKVMInstance(ns).status, 0);
  EXPECT_EQ(published(plugin.cKVMInstances), (std::vector<Properties>{instance("1.3.11.37")}));
  EXPECT_EQ(log, Log{});
  EXPECT_EQ(takeTraffic(), std::vector<std::string>{});
}

TEST_F(cKVMInstanceTest, ClassIsLookedUpAsAPluginAndNothingPublished) {
  const auto spy = boost::make_shared<NamespaceSpy>(ns);
  plugin.CreatecKVMInstance(spy);
  EXPECT_EQ(
      spy->takeCalls(),
      (Calls{"get KRXSG_cKVM as a plug-in", "create KRXSG_cKVM", "set KRXSG_cKVM.SoftwareElementID",
             "set KRXSG_cKVM.SoftwareElementState", "set KRXSG_cKVM.TargetOperatingSystem",
             "set KRXSG_cKVM.Version", "set KRXSG_cKVM.FirmwareVersion"}));
}

TEST_F(cKVMInstanceTest, RefusedInstanceIsLogged) {
  const struct {
    const char* what;
    std::vector<Fault> faults;
    std::vector<std::string> missing;
  } cases[] = {
      {"class missing", {}, {"KRXSG_cKVM"}},
      {"class lookup", {fault(CimOperation::kGetClass)}, {}},
      {"creation", {fault(CimOperation::kCreateInstance)}, {}},
  };
  for (const auto& c : cases) {
    useFaults(c.faults, c.missing);
    plugin.CreatecKVMInstance(ns);
    EXPECT_EQ(takeLog(), (Log{{0, "cKVM - Cannot create KRXSG_cKVM instance."}})) << c.what;
    EXPECT_TRUE(plugin.cKVMInstances.empty()) << c.what;
  }
}

TEST_F(cKVMInstanceTest, EachRefusedPropertyIsLoggedAndDropsTheInstance) {
  unsigned setCalls = 0;
  for (const char* property : {"SoftwareElementID", "SoftwareElementState", "TargetOperatingSystem",
                               "Version", "FirmwareVersion"}) {
    ++setCalls;
    // Any call behind the refused one would end in an exception that passes.
    useFaults({fault(CimOperation::kSetProperty, property),
               otherException(CimOperation::kSetProperty, setCalls + 1)});
    plugin.CreatecKVMInstance(ns);
    EXPECT_EQ(takeLog(), (Log{{0, "cKVM - Cannot set property value for KRXSG_cKVM instance."}}))
        << property;
    EXPECT_TRUE(plugin.cKVMInstances.empty()) << property;
  }
}

TEST_F(cKVMInstanceTest, OtherExceptionsPass) {
  for (const auto operation :
       {CimOperation::kGetClass, CimOperation::kCreateInstance, CimOperation::kSetProperty}) {
    useFaults({otherException(operation)});
    EXPECT_THROW(plugin.CreatecKVMInstance(ns), std::runtime_error);
    EXPECT_EQ(log, Log{});
    EXPECT_TRUE(plugin.cKVMInstances.empty());
  }
}

// From the request to the class, on a machine type that carries the device.
class cKVMRequestTest : public cKVMLevelTest {
 protected:
  cKVMRequestTest() {
    host::setMachineType("3105");
    ns->addCompanion("KRXSG_USBDevice", {{"Description", TCIMValue("KRX cKVM")}});
    plugin.Init();
  }

  std::vector<Properties> request() {
    std::vector<boost::shared_ptr<ICIMClass>> classes = {ns->requestClass("KRXSG_cKVM")};
    plugin.GetData(ns, classes);
    std::vector<Properties> result;
    for (const auto& [className, properties] : takePublished()) result.push_back(properties);
    return result;
  }
};

TEST_F(cKVMRequestTest, DeviceThatRefusesIsPublishedWithTheFallbackLevel) {
  useReply(reply("1.3.11.40", 0, 0xC1));
  EXPECT_EQ(request(), (std::vector<Properties>{instance("1.3.11.37")}));
  const Log::value_type failure = {0, "cKVM - Incorrect completion code."};
  EXPECT_EQ(std::ranges::count(log, failure), 1);
}

TEST_F(cKVMRequestTest, SecondInitAppendsASecondInstance) {
  useReply(reply("1.3.11.40"));
  EXPECT_EQ(request(), (std::vector<Properties>{instance("1.3.11.40")}));
  plugin.Init();
  EXPECT_EQ(request(), (std::vector<Properties>{instance("1.3.11.40"), instance("1.3.11.40")}));
}

TEST_F(cKVMRequestTest, RefusedInstanceOfAReadLevelGetsNoSecondAttempt) {
  useFaults({fault(CimOperation::kSetProperty, "FirmwareVersion", 1)});
  ns->addCompanion("KRXSG_USBDevice", {{"Description", TCIMValue("KRX cKVM")}});
  useReply(reply("1.3.11.40"));
  EXPECT_EQ(request(), std::vector<Properties>{});
}

}  // namespace
}  // namespace spfirmwarevpd::test
