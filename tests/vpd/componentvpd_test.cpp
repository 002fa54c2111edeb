// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <functional>
#include <stdexcept>

#include "tests/support/mocksplibrary.h"
#include "tests/support/pluginfixture.h"
#include "vel/exception.h"
#include "velhost/log.h"

namespace spfirmwarevpd::test {
namespace {

using namespace NKRXVEL20;
using host::SimulatedReply;

constexpr unsigned char kDimm = 0x0B;
constexpr unsigned char kPowerSupply = 0x0C;
constexpr unsigned char kPowerBackplane = 0x0D;
constexpr unsigned char kProcessorCard = 0x03;
constexpr unsigned char kDasdBackplane = 0x0E;
constexpr unsigned char kPlanar = 0x02;

const Log::value_type kListBuilt = {3, "1.1 command passed : got dotcommand list "};
const Log::value_type kDimmNotice = {3, "get DIMM info only from QLA"};
const Log::value_type kBackplaneNotice = {3, "get power backplane info only from QLA"};
const Log::value_type kUnread = {3, "getMachineType() completed."};

// A part number for each decoder, where that decoder alone looks for it.
const Bytes kRecord = joined({
    zeros(6), text("BOARD", 8),  // byte 6: planar
    text("COMMON", 12),          // byte 14: power supply, backplane, processor card
    zeros(47), text("SPD", 18),  // byte 73: DIMM
});

const SimulatedReply kGood = {.fails = false, .bytes = kRecord, .length = std::nullopt};
const SimulatedReply kFails = {.fails = true, .bytes = {}, .length = std::nullopt};

SimulatedReply withLength(std::int32_t length) {
  return {.fails = false, .bytes = kRecord, .length = length};
}

std::string valueOf(const Properties& instance, const std::string& name) {
  for (const std::string& property : instance) {
    if (property.starts_with(name + "=")) return property.substr(name.size() + 1);
  }
  return "(" + name + " is not set)";
}

class ComponentVpdTest : public PluginTest {
 protected:
  void SetUp() override { count(1, 1, 1); }

  // How many of each kind every SP has.
  void count(int dimms, int powerSupplies, int dasdBackplanes) {
    machine.components = {{{4, 3, 5, kDimm}, dimms},
                          {{4, 3, 5, kPowerSupply}, powerSupplies},
                          {{4, 3, 5, kDasdBackplane}, dasdBackplanes}};
  }

  void script(unsigned char code, unsigned char number, const std::vector<SimulatedReply>& replies,
              int spIndex = 0) {
    machine.dotCommands.push_back({.sp = spIndex,
                                   .command = {4, 3, 5, code, number},
                                   .data = std::nullopt,
                                   .replies = replies});
  }

  // Every kind answers alike, instances 1 to 4.
  void scriptAll(const SimulatedReply& reply) {
    for (int spIndex = 0; spIndex < machine.count; ++spIndex) {
      for (const unsigned char code :
           {kDimm, kPowerSupply, kPowerBackplane, kProcessorCard, kDasdBackplane, kPlanar}) {
        for (unsigned char number = 1; number <= 4; ++number) {
          script(code, number, {reply}, spIndex);
        }
      }
    }
  }

  // Name, part number and location of every instance.
  std::vector<std::string> collect() {
    useSP(machine);
    EXPECT_EQ(plugin.getVPDdata(sp(), ns).status, 0);
    std::vector<std::string> result;
    for (const Properties& instance : published(plugin.vpdInstances)) {
      result.push_back(valueOf(instance, "Name") + " | " + valueOf(instance, "PartNumber") + " | " +
                       valueOf(instance, "Location"));
    }
    return result;
  }

  SimulatedSP machine = dotCommandSP();
};

using Texts = std::vector<std::string>;

TEST_F(ComponentVpdTest, OneSPHasNoNodeLabelAndEveryKindIsReadInOrder) {
  count(2, 2, 2);
  scriptAll(kGood);
  EXPECT_EQ(collect(), (Texts{"DIMM 1 | SPD | ", "DIMM 2 | SPD | ", "Power Supply 1 | COMMON | ",
                              "Power Supply 2 | COMMON | ", "Power BackPlane | COMMON | ",
                              "Processor Card | COMMON | ", "DASD BackPlane | COMMON | ",
                              "DASD BackPlane | COMMON | ", "Planar | BOARD | "}));
  EXPECT_EQ(takeTraffic(), (Texts{"0403050B01 00007F00 to SP 0", "0403050B02 00007F00 to SP 0",
                                  "0403050C01 00008000 to SP 0", "0403050C02 00008000 to SP 0",
                                  "0403050D01 00008100 to SP 0", "0403050301 0000A000 to SP 0",
                                  "0403050E01 00007000 to SP 0", "0403050E02 00007000 to SP 0",
                                  "0403050201 10001000 to SP 0"}));
  EXPECT_EQ(log, (Log{kListBuilt, kDimmNotice, kBackplaneNotice}));
  EXPECT_EQ(failureLog, Log{});
}

TEST_F(ComponentVpdTest, TwoSPsAreNode1AndNode2AndTheNumbersContinue) {
  machine.count = 2;
  count(2, 1, 1);
  scriptAll(kGood);
  EXPECT_EQ(
      collect(),
      (Texts{
          "Node 1: DIMM 1 | SPD | Node 1: ", "Node 1: DIMM 2 | SPD | Node 1: ",
          "Node 1: Power Supply 1 | COMMON | Node 1", "Node 1: Power BackPlane | COMMON | Node 1",
          "Node 1: Processor Card | COMMON | Node 1", "Node 1: DASD BackPlane | COMMON | Node 1",
          "Node 1: Planar | BOARD | Node 1", "Node 2: DIMM 3 | SPD | Node 2: ",
          "Node 2: DIMM 4 | SPD | Node 2: ", "Node 2: Power Supply 2 | COMMON | Node 2",
          "Node 2: Power BackPlane | COMMON | Node 2", "Node 2: Processor Card | COMMON | Node 2",
          "Node 2: DASD BackPlane | COMMON | Node 2", "Node 2: Planar | BOARD | Node 2"}));
  EXPECT_EQ(takeTraffic(), (Texts{"0403050B01 00007F00 to SP 0", "0403050B02 00007F00 to SP 0",
                                  "0403050C01 00008000 to SP 0", "0403050D01 00008100 to SP 0",
                                  "0403050301 0000A000 to SP 0", "0403050E01 00007000 to SP 0",
                                  "0403050201 10001000 to SP 0", "0403050B03 00007F00 to SP 1",
                                  "0403050B04 00007F00 to SP 1", "0403050C02 00008000 to SP 1",
                                  "0403050D01 00008100 to SP 1", "0403050301 0000A000 to SP 1",
                                  "0403050E02 00007000 to SP 1", "0403050201 10001000 to SP 1"}));
  EXPECT_EQ(log, (Log{kListBuilt, kDimmNotice, kBackplaneNotice, kDimmNotice, kBackplaneNotice}));
}

TEST_F(ComponentVpdTest, NumbersStartAnewWithEachCollection) {
  scriptAll(kGood);
  collect();
  collect();
  const auto instances = published(plugin.vpdInstances);
  ASSERT_EQ(instances.size(), 12U);
  EXPECT_EQ(valueOf(instances[6], "Name"), "DIMM 1");
}

TEST_F(ComponentVpdTest, NumberBehind255Is0) {
  count(257, 0, 0);
  collect();
  const auto traffic = takeTraffic();
  ASSERT_GE(traffic.size(), 257U);
  EXPECT_EQ(traffic[254], "0403050BFF 00007F00 to SP 0 failed");
  EXPECT_EQ(traffic[255], "0403050B00 00007F00 to SP 0 failed");
  EXPECT_EQ(traffic[256], "0403050B01 00007F00 to SP 0 failed");
  ASSERT_GE(log.size(), 259U);
  EXPECT_EQ(log[256].second, "DIMM  255 VPD sendDotCommand failed ");
  EXPECT_EQ(log[257].second, "DIMM  0 VPD sendDotCommand failed ");
  EXPECT_EQ(log[258].second, "DIMM  1 VPD sendDotCommand failed ");
}

TEST_F(ComponentVpdTest, NoSPOrANegativeNumberOfThemSendsNothing) {
  for (const int found : {0, -1}) {
    machine.count = found;
    EXPECT_EQ(collect(), Texts{}) << found;
    EXPECT_EQ(takeTraffic(), Texts{}) << found;
    EXPECT_TRUE(host::componentsAsked().empty()) << found;
    EXPECT_EQ(takeLog(), (Log{kListBuilt})) << found;
    EXPECT_EQ(failureLog, Log{}) << found;
  }
}

TEST_F(ComponentVpdTest, BmcWithIpmiDriversIsNotAskedForDimmsAndPowerBackplane) {
  machine.bmc = true;
  machine.ipmiDrivers = true;
  scriptAll(kGood);
  EXPECT_EQ(collect(), (Texts{"Power Supply 1 | COMMON | ", "Processor Card | COMMON | ",
                              "DASD BackPlane | COMMON | ", "Planar | BOARD | "}));
  EXPECT_EQ(takeTraffic(), (Texts{"0403050C01 00008000 to SP 0", "0403050301 0000A000 to SP 0",
                                  "0403050E01 00007000 to SP 0", "0403050201 10001000 to SP 0"}));
  EXPECT_EQ(log, (Log{kListBuilt}));
  EXPECT_FALSE(host::componentsAsked().contains({4, 3, 5, kDimm}));
}

TEST_F(ComponentVpdTest, BmcOrIpmiDriversAloneAreAskedForEverything) {
  scriptAll(kGood);
  for (const bool bmc : {true, false}) {
    machine.bmc = bmc;
    machine.ipmiDrivers = !bmc;
    plugin.vpdInstances.clear();
    EXPECT_EQ(collect().size(), 6U) << bmc;
    EXPECT_EQ(takeLog(), (Log{kListBuilt, kDimmNotice, kBackplaneNotice})) << bmc;
  }
}

TEST_F(ComponentVpdTest, UnbuiltCommandListIsLoggedAndTheCountsAreAskedFor) {
  machine.commandList = false;
  scriptAll(kGood);
  EXPECT_EQ(collect().size(), 6U);
  EXPECT_EQ(log, (Log{{3, "1.1 command failed: can not build dotcommand list "},
                      kDimmNotice,
                      kBackplaneNotice}));
}

TEST_F(ComponentVpdTest, CountBelowOneSkipsTheKindSilently) {
  scriptAll(kGood);
  for (const int none : {0, -1, -2}) {
    count(none, none, none);
    plugin.vpdInstances.clear();
    EXPECT_EQ(collect(), (Texts{"Power BackPlane | COMMON | ", "Processor Card | COMMON | ",
                                "Planar | BOARD | "}))
        << none;
    EXPECT_EQ(takeLog(), (Log{kListBuilt, kDimmNotice, kBackplaneNotice})) << none;
    EXPECT_EQ(failureLog, Log{}) << none;
  }
}

TEST_F(ComponentVpdTest, DimmThatIsNotReadTellsAFailedSendFromAnEmptyReply) {
  const struct {
    const char* what;
    SimulatedReply reply;
    Log::value_type expected;
  } cases[] = {
      {"failed send", kFails, {0, "DIMM  3 VPD sendDotCommand failed "}},
      {"reply of length 0", withLength(0), {3, "DIMM  3 VPD not populated."}},
      {"reply of negative length", withLength(-1), {3, "DIMM  3 VPD not populated."}},
  };
  for (const auto& c : cases) {
    machine = dotCommandSP();
    count(4, 0, 0);
    script(kDimm, 3, {c.reply});
    scriptAll(kGood);
    plugin.vpdInstances.clear();
    EXPECT_EQ(collect(), (Texts{"DIMM 1 | SPD | ", "DIMM 2 | SPD | ", "DIMM 4 | SPD | ",
                                "Power BackPlane | COMMON | ", "Processor Card | COMMON | ",
                                "Planar | BOARD | "}))
        << c.what;
    EXPECT_EQ(takeLog(), (Log{kListBuilt, kDimmNotice, c.expected, kBackplaneNotice})) << c.what;
    EXPECT_EQ(failureLog, Log{}) << c.what;
  }
}

TEST_F(ComponentVpdTest, ReplyOfOneByteIsARecord) {
  scriptAll(withLength(1));
  EXPECT_EQ(collect().size(), 6U);
  EXPECT_EQ(failureLog, Log{});
}

TEST_F(ComponentVpdTest, EveryKindThatIsNotReadIsReportedAndTheNextIsTried) {
  const struct {
    const char* what;
    SimulatedReply reply;
    Log::value_type dimm;
  } cases[] = {
      {"failed send", kFails, {0, "DIMM  1 VPD sendDotCommand failed "}},
      {"reply of length 0", withLength(0), {3, "DIMM  1 VPD not populated."}},
      {"reply of negative length", withLength(-5), {3, "DIMM  1 VPD not populated."}},
  };
  for (const auto& c : cases) {
    machine = dotCommandSP();
    count(1, 2, 2);
    scriptAll(c.reply);
    EXPECT_EQ(collect(), Texts{}) << c.what;
    EXPECT_EQ(takeLog(), (Log{kListBuilt, kDimmNotice, c.dimm,     //
                              kUnread, kUnread,                    // power supplies
                              kBackplaneNotice, kUnread, kUnread,  // both data sets
                              kUnread,                             // processor card
                              kUnread, kUnread,                    // DASD backplanes
                              kUnread}))                           // planar
        << c.what;
    EXPECT_EQ(std::exchange(failureLog, {}),
              (Log{{3, "Power Supply  1 VPD not available "},
                   {3, "Power Supply  2 VPD not available "},
                   {3, "power backplane VPD not available...trying alternate data set"},
                   {3, "Power backplane VPD not available"},
                   {3, "Processor Card VPD not available"},
                   {3, "DASD backplane VPD not available"},
                   {3, "DASD backplane VPD not available"},
                   {3, "planar VPD not available"}}))
        << c.what;
    EXPECT_EQ(takeTraffic().size(), 9U) << c.what;
  }
}

TEST_F(ComponentVpdTest, PowerBackplaneIsReadWithTheAlternateDataSetWhenTheFirstFails) {
  const struct {
    const char* what;
    SimulatedReply reply;
    const char* outcome;
  } cases[] = {
      {"failed send", kFails, " failed"},
      {"reply of length 0", withLength(0), ""},
      {"reply of negative length", withLength(-1), ""},
  };
  for (const auto& c : cases) {
    machine = dotCommandSP();
    count(0, 0, 0);
    script(kPowerBackplane, 1, {c.reply, kGood});
    scriptAll(kGood);
    plugin.vpdInstances.clear();
    EXPECT_EQ(collect(), (Texts{"Power BackPlane | COMMON | ", "Processor Card | COMMON | ",
                                "Planar | BOARD | "}))
        << c.what;
    EXPECT_EQ(takeTraffic(), (Texts{std::string("0403050D01 00008100 to SP 0") + c.outcome,
                                    "0403050D01 00008000 to SP 0", "0403050301 0000A000 to SP 0",
                                    "0403050201 10001000 to SP 0"}))
        << c.what;
    EXPECT_EQ(takeLog(), (Log{kListBuilt, kDimmNotice, kBackplaneNotice, kUnread})) << c.what;
    EXPECT_EQ(std::exchange(failureLog, {}),
              (Log{{3, "power backplane VPD not available...trying alternate data set"}}))
        << c.what;
  }
}

TEST_F(ComponentVpdTest, NothingOfAnEarlierReplyShowsInALaterOne) {
  count(0, 2, 0);
  script(kPowerSupply, 1, {kGood});
  script(kPowerSupply, 2, {{.fails = false, .bytes = {'x'}, .length = std::nullopt}});
  script(kPowerBackplane, 1,
         {withLength(0), {.fails = false, .bytes = {'x'}, .length = std::nullopt}});
  EXPECT_EQ(collect(),
            (Texts{"Power Supply 1 | COMMON | ", "Power Supply 2 |  | ", "Power BackPlane |  | "}));
}

TEST_F(ComponentVpdTest, IpmiFruSourceLeavesNothingToPublishButTheCommandsAreSent) {
  plugin.ipmiFruExists = true;
  scriptAll(kGood);
  EXPECT_EQ(collect(), Texts{});
  EXPECT_EQ(takeTraffic().size(), 6U);
  EXPECT_EQ(log, (Log{kListBuilt, kDimmNotice, kBackplaneNotice}));
}

TEST_F(ComponentVpdTest, DecoderThatFailsStopsNothing) {
  scriptAll(kGood);
  useFaults({}, {"KRXSG_Vpd"});
  EXPECT_EQ(collect(), Texts{});
  EXPECT_EQ(takeTraffic().size(), 6U);
  const Log::value_type refused = {0, "Error adding KRXSG_VPD class"};
  EXPECT_EQ(log, (Log{kListBuilt, kDimmNotice, refused, refused, kBackplaneNotice, refused, refused,
                      refused, refused}));
  EXPECT_EQ(failureLog, Log{});
}

TEST_F(ComponentVpdTest, OtherExceptionOfADecoderPasses) {
  scriptAll(kGood);
  useSP(machine);
  useFaults({{.operation = host::CimOperation::kSetProperty,
              .className = "KRXSG_Vpd",
              .propertyName = {},
              .nth = std::nullopt,
              .throwsRuntimeError = true}});
  EXPECT_THROW(plugin.getVPDdata(sp(), ns), std::runtime_error);
  EXPECT_EQ(takeTraffic().size(), 1U);
}

// What the SP driver gets to see of the plug-in's own storage.
class ComponentStorageTest : public PluginTest {
 protected:
  static constexpr std::size_t kListSize = 4096;
  static constexpr int kReplySize = 2048;

  static bool isZero(const unsigned char* bytes, std::size_t size) {
    return std::all_of(bytes, bytes + size, [](unsigned char byte) { return byte == 0; });
  }

  testing::NiceMock<MockSPLibrary> library;
};

TEST_F(ComponentStorageTest, DriverGetsItsThreeListsBackAsItFilledThem) {
  using testing::_;
  std::vector<unsigned char*> built;
  ON_CALL(library, discoverSPs).WillByDefault(testing::Return(1));
  EXPECT_CALL(library, buildDotCommandList)
      .WillOnce([&](unsigned char* list0, unsigned char* list1, unsigned char* list2) {
        built = {list0, list1, list2};
        for (unsigned char* list : built) EXPECT_TRUE(isZero(list, kListSize));
        for (unsigned char i = 0; i < 3; ++i) std::fill_n(built[i], kListSize, i + 1);
        return true;
      });
  std::vector<Bytes> asked;
  EXPECT_CALL(library, getComponentdotCmdList)
      .Times(3)
      .WillRepeatedly([&](unsigned char* command, int commandLength, unsigned char* list0,
                          unsigned char* list1, unsigned char* list2) {
        EXPECT_EQ(commandLength, 5);
        asked.emplace_back(command, command + 5);
        const std::vector<unsigned char*> lists = {list0, list1, list2};
        EXPECT_EQ(lists, built);
        for (unsigned char i = 0; i < 3; ++i) {
          EXPECT_EQ(std::count(lists[i], lists[i] + kListSize, i + 1),
                    static_cast<std::ptrdiff_t>(kListSize));
        }
        return -1;
      });
  EXPECT_EQ(plugin.getVPDdata(&library, ns).status, 0);
  EXPECT_EQ(asked,
            (std::vector<Bytes>{
                {4, 3, 5, kDimm, 1}, {4, 3, 5, kPowerSupply, 1}, {4, 3, 5, kDasdBackplane, 1}}));
}

TEST_F(ComponentStorageTest, EverySendGetsAClearedBufferOf2048BytesAndIsOfType2) {
  ON_CALL(library, discoverSPs).WillByDefault(testing::Return(2));
  ON_CALL(library, getComponentdotCmdList).WillByDefault(testing::Return(1));
  std::vector<int> spIndexes;
  std::vector<int> lengths;
  EXPECT_CALL(library, sendDotCommand)
      .Times(12)
      .WillRepeatedly([&](dotCmd* command, unsigned char* reply, int* replyLength, int spIndex,
                          int bufferSize) {
        EXPECT_EQ(command->type, 2);
        EXPECT_EQ(bufferSize, kReplySize);
        EXPECT_TRUE(isZero(reply, kReplySize));
        std::fill_n(reply, kReplySize, static_cast<unsigned char>(0xFF));
        spIndexes.push_back(spIndex);
        lengths.push_back(std::exchange(*replyLength, kReplySize));
        return true;
      });
  EXPECT_EQ(plugin.getVPDdata(&library, ns).status, 0);
  EXPECT_EQ(spIndexes, (std::vector<int>{0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 1, 1}));
  // Set to 0 once; each later send finds what the one before it left.
  std::vector<int> expected(12, kReplySize);
  expected.front() = 0;
  EXPECT_EQ(lengths, expected);
}

TEST_F(ComponentStorageTest, ListsAreBuiltBeforeTheSPsAreFound) {
  const testing::InSequence inThisOrder;
  EXPECT_CALL(library, buildDotCommandList).WillOnce(testing::Return(true));
  EXPECT_CALL(library, discoverSPs).WillOnce(testing::Return(0));
  EXPECT_EQ(plugin.getVPDdata(&library, ns).status, 0);
}

TEST_F(ComponentStorageTest, CountsAreAskedOfEachSPWithTheNumberAsItStands) {
  ON_CALL(library, discoverSPs).WillByDefault(testing::Return(3));
  std::vector<Bytes> asked;
  ON_CALL(library, getComponentdotCmdList)
      .WillByDefault([&](unsigned char* command, int commandLength, unsigned char*, unsigned char*,
                         unsigned char*) {
        asked.emplace_back(command, command + commandLength);
        if (command[3] == kDimm) return 2;
        return command[3] == kPowerSupply ? 1 : 3;
      });
  EXPECT_EQ(plugin.getVPDdata(&library, ns).status, 0);
  EXPECT_EQ(asked, (std::vector<Bytes>{{4, 3, 5, kDimm, 1},
                                       {4, 3, 5, kPowerSupply, 1},
                                       {4, 3, 5, kDasdBackplane, 1},
                                       {4, 3, 5, kDimm, 3},
                                       {4, 3, 5, kPowerSupply, 2},
                                       {4, 3, 5, kDasdBackplane, 4},
                                       {4, 3, 5, kDimm, 5},
                                       {4, 3, 5, kPowerSupply, 3},
                                       {4, 3, 5, kDasdBackplane, 7}}));
}

TEST_F(ComponentStorageTest, NoticeComesBeforeTheDimmsAreCounted) {
  ON_CALL(library, discoverSPs).WillByDefault(testing::Return(1));
  EXPECT_CALL(library, getComponentdotCmdList)
      .WillOnce([&](unsigned char* command, int, unsigned char*, unsigned char*, unsigned char*) {
        EXPECT_EQ(command[3], kDimm);
        EXPECT_EQ(log.back(), kDimmNotice);
        return -1;
      })
      .WillRepeatedly(testing::Return(-1));
  EXPECT_EQ(plugin.getVPDdata(&library, ns).status, 0);
}

TEST_F(ComponentStorageTest, CoreLogIsWrittenBeforeTheFailureDataLog) {
  Log both;
  const auto append = [&](const host::LogEntry& entry) {
    both.emplace_back(entry.severity, entry.text);
  };
  host::setCoreLogSink(append);
  host::setFailureLogSink(append);
  ON_CALL(library, buildDotCommandList).WillByDefault(testing::Return(true));
  ON_CALL(library, discoverSPs).WillByDefault(testing::Return(1));
  ON_CALL(library, getComponentdotCmdList).WillByDefault(testing::Return(1));
  EXPECT_EQ(plugin.getVPDdata(&library, ns).status, 0);
  EXPECT_EQ(both, (Log{kListBuilt,
                       kDimmNotice,
                       {0, "DIMM  1 VPD sendDotCommand failed "},
                       kUnread,
                       {3, "Power Supply  1 VPD not available "},
                       kBackplaneNotice,
                       kUnread,
                       {3, "power backplane VPD not available...trying alternate data set"},
                       kUnread,
                       {3, "Power backplane VPD not available"},
                       kUnread,
                       {3, "Processor Card VPD not available"},
                       kUnread,
                       {3, "DASD backplane VPD not available"},
                       kUnread,
                       {3, "planar VPD not available"}}));
}

// The framework's own exception as well: only what creates instances and sets properties is caught.
TEST_F(ComponentStorageTest, ExceptionOfTheDriverPasses) {
  using Library = testing::NiceMock<MockSPLibrary>;
  const auto gone = testing::Throw(TVELException(kErrorAssertion, "the driver is gone"));
  const struct {
    const char* what;
    std::function<void(Library&)> fail;
  } cases[] = {
      {"lists", [&](Library& l) { ON_CALL(l, buildDotCommandList).WillByDefault(gone); }},
      {"discovery", [&](Library& l) { ON_CALL(l, discoverSPs).WillByDefault(gone); }},
      {"BMC test", [&](Library& l) { ON_CALL(l, IsBMCMachine).WillByDefault(gone); }},
      {"IPMI driver test",
       [&](Library& l) { ON_CALL(l, IsIPMIDriversPresent).WillByDefault(gone); }},
      {"count", [&](Library& l) { ON_CALL(l, getComponentdotCmdList).WillByDefault(gone); }},
      {"send", [&](Library& l) { ON_CALL(l, sendDotCommand).WillByDefault(gone); }},
      {"another exception",
       [](Library& l) {
         ON_CALL(l, sendDotCommand)
             .WillByDefault(testing::Throw(std::runtime_error("the driver is gone")));
       }},
  };
  for (const auto& c : cases) {
    Library failing;
    ON_CALL(failing, discoverSPs).WillByDefault(testing::Return(1));
    ON_CALL(failing, IsBMCMachine).WillByDefault(testing::Return(true));
    ON_CALL(failing, getComponentdotCmdList).WillByDefault(testing::Return(1));
    c.fail(failing);
    EXPECT_THROW(plugin.getVPDdata(&failing, ns), std::runtime_error) << c.what;
    EXPECT_TRUE(std::ranges::none_of(log, [](const auto& entry) { return entry.first == 0; }))
        << c.what;
  }
}

}  // namespace
}  // namespace spfirmwarevpd::test
