// SPDX-License-Identifier: Apache-2.0
#include <limits>
#include <stdexcept>

#include "tests/support/mocksplibrary.h"
#include "tests/support/pluginfixture.h"

namespace spfirmwarevpd::test {
namespace {

using namespace NKRXVEL20;
using host::CimOperation;
using host::SimulatedReply;

const Bytes kFirmwareCommand = {0x01, 0xF1, 0xF1, 0x0F};
const Bytes kVpdCommand = {0x05, 0xA8, 0xA8, 0x56};

using Texts = std::vector<std::string>;

Properties firmware(const std::string& build) {
  return {"Name=KRX Ambrel Management Processor",
          "SoftwareElementID=KRX Ambrel Management Processor",
          "SoftwareElementState=3",
          "TargetOperatingSystem=66",
          "BuildNumber=" + build,
          "Version=" + build};
}

class TamberTest : public PluginTest {
 protected:
  void useReply(const Bytes& command, const SimulatedReply& reply) {
    SimulatedSP machine;
    machine.kind = host::SPKind::kTamber;
    machine.count = 1;
    machine.tamberCommands.push_back(
        {.command = command, .data = std::nullopt, .replies = {reply}});
    useSP(machine);
  }

  // A reply to either command.
  void useReply(const Bytes& command, const Bytes& bytes,
                std::optional<std::int32_t> length = std::nullopt) {
    useReply(command, {.fails = false, .bytes = bytes, .length = length});
  }

  int collect() { return plugin.gettamberFirmware(sp(), ns).status; }
  int dump() { return plugin.gettamberVPD(sp(), ns).status; }
};

TEST_F(TamberTest, BuildTextGivesBuildNumberAndVersion) {
  useReply(kFirmwareCommand, joined({text("HDR", 3), text("YUOO73C", 7)}));
  EXPECT_EQ(collect(), 0);
  EXPECT_EQ(published(plugin.spromMainInstances), (std::vector<Properties>{firmware("YUOO73C")}));
  EXPECT_EQ(takeTraffic(), (Texts{"01F1F10F false true"}));
  EXPECT_EQ(log, Log{});
  EXPECT_EQ(failureLog, Log{});
}

TEST_F(TamberTest, BuildTextIsAsLongAsTheReply) {
  const Bytes reply = joined({text("HDR", 3), text("YUOO73C", 7)});
  const Bytes fullReply = joined({text("HDR", 3), Bytes(251, 'A'), text("Z", 1)});
  const std::string fullText = std::string(251, 'A') + "Z";
  const struct {
    const char* what;
    Bytes reply;
    std::optional<std::int32_t> length;
    std::string build;
  } cases[] = {
      {"length 0", reply, 0, ""},
      {"negative length", reply, -1, ""},
      {"least length", reply, std::numeric_limits<std::int32_t>::min(), ""},
      {"length within the text", reply, 3, "YUO"},
      {"length of the text", reply, 7, "YUOO73C"},
      {"length behind the text", reply, 20, "YUOO73C"},
      {"header only", text("HDR", 3), std::nullopt, ""},
      {"shorter than its header", text("HD", 2), std::nullopt, ""},
      {"no byte", {}, std::nullopt, ""},
      {"blanks are kept", joined({zeros(3), text(" A B ", 5)}), std::nullopt, " A B "},
      {"zero byte ends the text", joined({zeros(3), {'A', 'B', 0, 'C'}}), std::nullopt, "AB"},
      {"zero byte first", joined({zeros(3), {0, 'C'}}), std::nullopt, ""},
      {"252 bytes fill the buffer to its last byte", fullReply, std::nullopt, fullText},
      {"251 bytes leave out the last", fullReply, 251, std::string(251, 'A')},
      {"length 253", fullReply, 253, fullText},
      {"length 1000", fullReply, 1000, fullText},
      {"greatest length", fullReply, std::numeric_limits<std::int32_t>::max(), fullText},
      {"more bytes than the buffer holds", joined({fullReply, Bytes(50, 'B')}), std::nullopt,
       fullText},
  };
  for (const auto& c : cases) {
    useReply(kFirmwareCommand, c.reply, c.length);
    plugin.spromMainInstances.clear();
    EXPECT_EQ(collect(), 0) << c.what;
    EXPECT_EQ(published(plugin.spromMainInstances), (std::vector<Properties>{firmware(c.build)}))
        << c.what;
  }
  EXPECT_EQ(log, Log{});
}

TEST_F(TamberTest, FailedSendGivesOneLineAndNothingElse) {
  const auto failed = [&](const char* what) {
    EXPECT_EQ(collect(), 3) << what;
    EXPECT_EQ(takeLog(), (Log{{0, "Command Failed..while getting SP Firmware data"}})) << what;
    EXPECT_EQ(takeTraffic(), (Texts{"01F1F10F false true failed"})) << what;
    EXPECT_TRUE(plugin.spromMainInstances.empty()) << what;
  };
  useReply(kFirmwareCommand, {.fails = true, .bytes = {}, .length = std::nullopt});
  failed("the send fails");
  useReply(kVpdCommand, text("HDR", 3));
  failed("another command is answered");
  useSP({});
  failed("no SP");
}

// A namespace that must not be asked for anything.
class UntouchedNamespace : public ICIMNamespace {
 public:
  boost::shared_ptr<ICIMClass> GetClass(const std::string& name, TCIMValueMap) override {
    ADD_FAILURE() << name << " was looked up";
    return {};
  }
};

TEST_F(TamberTest, ClassIsLookedUpBehindTheReply) {
  useReply(kFirmwareCommand, {.fails = true, .bytes = {}, .length = std::nullopt});
  EXPECT_EQ(plugin.gettamberFirmware(sp(), boost::make_shared<UntouchedNamespace>()).status, 3);
  useFaults({}, {"KRXSG_SPROMFirmwareVPDMain"});
  EXPECT_EQ(collect(), 3);
  EXPECT_EQ(takeTraffic(), (Texts{"01F1F10F false true failed", "01F1F10F false true failed"}));
  EXPECT_EQ(log, (Log{{0, "Command Failed..while getting SP Firmware data"},
                      {0, "Command Failed..while getting SP Firmware data"}}));
}

TEST_F(TamberTest, LengthStartsAtZeroAndTheBufferIsCleared) {
  testing::StrictMock<MockSPLibrary> library;
  EXPECT_CALL(library, sendTamberCommand)
      .WillOnce([](TamberCmd* command, int* replyLength, unsigned char* reply) {
        EXPECT_EQ(*replyLength, 0);
        EXPECT_EQ(Bytes(reply, reply + 255), zeros(255));
        EXPECT_EQ(command->data, Bytes{});
        return true;
      });
  EXPECT_EQ(plugin.gettamberFirmware(&library, ns).status, 0);
  EXPECT_EQ(published(plugin.spromMainInstances), (std::vector<Properties>{firmware("")}));
}

TEST_F(TamberTest, EachRefusedPropertyIsLoggedAndDropsTheInstance) {
  const struct {
    const char* property;
    const char* failure;
  } rows[] = {
      {"Name", "Error adding Name"},
      {"SoftwareElementID", "Error adding SoftwareElementID"},
      {"SoftwareElementState", "Error adding SoftwareElementState"},
      {"TargetOperatingSystem", "Error adding TargetOperatingSystem"},
      {"BuildNumber", "Error adding BuildNumber"},
      {"Version", "Error adding Version"},
  };
  unsigned setCalls = 0;
  for (const auto& row : rows) {
    ++setCalls;
    // Any call behind the refused one would end in an exception that passes.
    const Fault refusal = {.operation = CimOperation::kSetProperty,
                           .className = "KRXSG_SPROMFirmwareVPDMain",
                           .propertyName = row.property,
                           .nth = std::nullopt,
                           .throwsRuntimeError = false};
    const Fault next = {.operation = CimOperation::kSetProperty,
                        .className = {},
                        .propertyName = {},
                        .nth = setCalls + 1,
                        .throwsRuntimeError = true};
    useReply(kFirmwareCommand, text("HDRA", 4));
    useFaults({refusal, next});
    EXPECT_EQ(collect(), 3) << row.property;
    EXPECT_EQ(takeLog(), (Log{{0, row.failure}}));
    EXPECT_TRUE(plugin.spromMainInstances.empty()) << row.property;
  }
}

TEST_F(TamberTest, RefusedInstanceIsLogged) {
  useReply(kFirmwareCommand, text("HDRA", 4));
  useFaults({}, {"KRXSG_SPROMFirmwareVPDMain"});
  EXPECT_EQ(collect(), 3);
  useFaults({{.operation = CimOperation::kCreateInstance,
              .className = "KRXSG_SPROMFirmwareVPDMain",
              .propertyName = {},
              .nth = std::nullopt,
              .throwsRuntimeError = false}});
  EXPECT_EQ(collect(), 3);
  EXPECT_EQ(log, (Log{{0, "Error adding SP Firmware VPD data"},  //
                      {0, "Error adding SP Firmware VPD data"}}));
  EXPECT_TRUE(plugin.spromMainInstances.empty());
}

TEST_F(TamberTest, OtherExceptionsPass) {
  useReply(kFirmwareCommand, text("HDRA", 4));
  for (const auto operation :
       {CimOperation::kGetClass, CimOperation::kCreateInstance, CimOperation::kSetProperty}) {
    useFaults({{.operation = operation,
                .className = {},
                .propertyName = {},
                .nth = std::nullopt,
                .throwsRuntimeError = true}});
    EXPECT_THROW(collect(), std::runtime_error);
  }
  EXPECT_EQ(log, Log{});
  EXPECT_TRUE(plugin.spromMainInstances.empty());
}

class TamberVpdTest : public TamberTest {
 protected:
  // What the dump writes to standard error.
  std::string dumped() {
    testing::internal::CaptureStderr();
    EXPECT_EQ(dump(), 0);
    const std::string printed = testing::internal::GetCapturedStderr();
    EXPECT_EQ(log, Log{});
    EXPECT_EQ(failureLog, Log{});
    EXPECT_TRUE(plugin.vpdInstances.empty());
    EXPECT_TRUE(plugin.spromMainInstances.empty());
    return printed;
  }
};

TEST_F(TamberVpdTest, ReplyIsDumpedAsFarAsItsLengthSays) {
  const std::string pad(41, ' ');  // the columns of the 13 bytes that a line of 3 does not have
  const Bytes reply = joined({text("HDR", 3), text("VPD", 3)});
  const struct {
    const char* what;
    std::optional<std::int32_t> length;
    std::string printed;
  } cases[] = {
      {"the driver's own length", std::nullopt, "0000: 48 44 52" + pad + "HDR\n"},
      {"header included", 6, "0000: 48 44 52 56 50 44" + pad.substr(9) + "HDRVPD\n"},
      {"length 0", 0, ""},
      {"negative length", -1, ""},
  };
  for (const auto& c : cases) {
    useReply(kVpdCommand, reply, c.length);
    EXPECT_EQ(dumped(), c.printed) << c.what;
    EXPECT_EQ(takeTraffic(), (Texts{"05A8A856 050020 true false"})) << c.what;
  }
}

TEST_F(TamberVpdTest, FailedSendDumpsAndLogsNothing) {
  useReply(kFirmwareCommand, text("HDR", 3));
  EXPECT_EQ(dumped(), "");
  EXPECT_EQ(takeTraffic(), (Texts{"05A8A856 050020 true false failed"}));
}

TEST_F(TamberVpdTest, LengthStartsAtZeroAndTheBufferIsClearedAndPrinted) {
  testing::StrictMock<MockSPLibrary> library;
  const unsigned char* sent = nullptr;
  EXPECT_CALL(library, sendTamberCommand)
      .WillOnce([&](TamberCmd*, int* replyLength, unsigned char* reply) {
        EXPECT_EQ(*replyLength, 0);
        EXPECT_EQ(Bytes(reply, reply + 255), zeros(255));
        sent = reply;
        *replyLength = 252;
        return true;
      });
  EXPECT_CALL(library, printMatrix(testing::_, 252)).WillOnce([&](const unsigned char* bytes, int) {
    EXPECT_EQ(bytes, sent);
  });
  EXPECT_EQ(plugin.gettamberVPD(&library, ns).status, 0);
}

TEST_F(TamberVpdTest, NoMoreThanTheBufferIsPrinted) {
  for (const int length : {255, 256, std::numeric_limits<int>::max()}) {
    testing::StrictMock<MockSPLibrary> library;
    EXPECT_CALL(library, sendTamberCommand)
        .WillOnce(testing::DoAll(testing::SetArgPointee<1>(length), testing::Return(true)));
    EXPECT_CALL(library, printMatrix(testing::_, 255));
    EXPECT_EQ(plugin.gettamberVPD(&library, ns).status, 0) << length;
  }
}

}  // namespace
}  // namespace spfirmwarevpd::test
