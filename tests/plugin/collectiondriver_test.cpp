// SPDX-License-Identifier: Apache-2.0
#include "plugin/collectiondriver.h"

#include <map>
#include <stdexcept>

#include "tests/support/mocksplibrary.h"
#include "tests/support/pluginfixture.h"
#include "vel/exception.h"

namespace spfirmwarevpd::test {
namespace {

using namespace NKRXVEL20;
using enum Collector;
using Kind = host::SPKind;

constexpr std::pair<int, const char*> kSilent = {
    0, "Unknown Error Code, Possible causes: Driver/SP failure!"};
constexpr std::pair<int, const char*> kReading = {3, "Getting firmware and vpd"};
constexpr std::pair<int, const char*> kReadingTamber = {3, "Getting AMP firmware and vpd"};
constexpr std::pair<int, const char*> kTorvikLoaded = {
    1, "Tvmlibrary present on the system..can not get AMP firmware"};
constexpr std::pair<int, const char*> kNoSP = {3, "No SP's installed on the system"};
constexpr std::pair<int, const char*> kVpdFailed = {0, "Failed to collect full set of VPD data"};
constexpr std::pair<int, const char*> kTamberFailed = {
    0, "Failed to collect full set of AMP firmware data"};
constexpr std::pair<int, const char*> kDiagsFailed = {
    0, "Failed to collect diags information from smbios"};
constexpr std::pair<int, const char*> kSPFailed = {
    0, "Failed to collect SP firmware data from smbios"};
constexpr std::pair<int, const char*> kBiosFailed = {0, "Failed to collect BIOS data from smbios"};

struct Machine {
  Kind kind;
  bool answers = true;
  bool twgStop = false;
  bool tvmLibrary = false;
};

struct DriverCase {
  const char* what;
  Machine machine;
  std::map<Collector, int> statuses;  // of collectors that fail
  std::vector<Collector> ran;
  int result;
  std::vector<std::pair<int, const char*>> log;
};

// Names in the output instead of bytes.
std::ostream& operator<<(std::ostream& out, const DriverCase& c) { return out << c.what; }

class CollectionDriverTest : public PluginTest, public ::testing::WithParamInterface<DriverCase> {};

TEST_P(CollectionDriverTest, RunsTheCollectorsOfTheMachine) {
  const DriverCase& c = GetParam();
  SimulatedSP description;
  description.kind = c.machine.kind;
  description.answers = c.machine.answers;
  description.twgStop = c.machine.twgStop;
  description.tvmLibrary = c.machine.tvmLibrary;
  useSP(description);

  std::vector<Collector> ran;
  Log expectedLog(c.log.begin(), c.log.end());
  const TVELStatusCode result = driveCollection(*sp(), [&](Collector collector) {
    ran.push_back(collector);
    // Nobody may write the closing line before the collectors have run.
    EXPECT_TRUE(log.empty() || log.back().second != kNoSP.second);
    const auto status = c.statuses.find(collector);
    return TVELStatusCode{status == c.statuses.end() ? 0 : status->second};
  });

  EXPECT_EQ(ran, c.ran);
  EXPECT_EQ(result.status, c.result);
  EXPECT_EQ(log, expectedLog);
}

const std::vector<Collector> kFallBack = {kDiagnostics, kSPFirmware, kSystemBios};

INSTANTIATE_TEST_SUITE_P(
    DotCommand, CollectionDriverTest,
    ::testing::Values(
        DriverCase{"silent SP: three collectors, and 3 though all succeed",
                   {Kind::kDotCommand, false},
                   {},
                   kFallBack,
                   3,
                   {kSilent}},
        DriverCase{"silent SP: every failure is logged and none stops the sequence",
                   {Kind::kDotCommand, false},
                   {{kDiagnostics, 3}, {kSPFirmware, 3}, {kSystemBios, 7}},
                   kFallBack,
                   3,
                   {kSilent, kDiagsFailed, kSPFailed, kBiosFailed}},
        DriverCase{"all good",
                   {Kind::kDotCommand},
                   {},
                   {kSPFirmwareVpd, kComponentVpd, kSystemBios},
                   0,
                   {kReading}},
        DriverCase{"BIOS alone fails: logged, and 0 all the same",
                   {Kind::kDotCommand},
                   {{kSystemBios, 3}},
                   {kSPFirmwareVpd, kComponentVpd, kSystemBios},
                   0,
                   {kReading, kBiosFailed}},
        DriverCase{"component VPD fails: its status, and no BIOS element",
                   {Kind::kDotCommand},
                   {{kComponentVpd, 9}},
                   {kSPFirmwareVpd, kComponentVpd},
                   9,
                   {kReading, kVpdFailed}},
        DriverCase{"SP firmware fails: the fall-back, and the BIOS status",
                   {Kind::kDotCommand},
                   {{kSPFirmwareVpd, 3}},
                   {kSPFirmwareVpd, kComponentVpd, kDiagnostics, kSPFirmware, kSystemBios},
                   0,
                   {kReading}},
        DriverCase{"both fail: the component VPD's status is not looked at",
                   {Kind::kDotCommand},
                   {{kSPFirmwareVpd, 3}, {kComponentVpd, 9}, {kSystemBios, 5}},
                   {kSPFirmwareVpd, kComponentVpd, kDiagnostics, kSPFirmware, kSystemBios},
                   5,
                   {kReading, kBiosFailed}}));

INSTANTIATE_TEST_SUITE_P(
    Tamber, CollectionDriverTest,
    ::testing::Values(
        DriverCase{"readable: SP firmware from SMBIOS is not looked for",
                   {Kind::kTamber},
                   {},
                   {kTamberFirmware, kDiagnostics, kSystemBios},
                   0,
                   {kReadingTamber}},
        DriverCase{"Tamber fails",
                   {Kind::kTamber},
                   {{kTamberFirmware, 3}},
                   {kTamberFirmware, kSPFirmware, kDiagnostics, kSystemBios},
                   0,
                   {kReadingTamber, kTamberFailed}},
        DriverCase{"everything fails: the BIOS status",
                   {Kind::kTamber},
                   {{kTamberFirmware, 3}, {kSPFirmware, 3}, {kDiagnostics, 3}, {kSystemBios, 4}},
                   {kTamberFirmware, kSPFirmware, kDiagnostics, kSystemBios},
                   4,
                   {kReadingTamber, kTamberFailed, kSPFailed, kDiagsFailed, kBiosFailed}},
        DriverCase{"Torvik library loaded: the Tamber collector is not run",
                   {Kind::kTamber, true, false, true},
                   {},
                   {kSPFirmware, kDiagnostics, kSystemBios},
                   0,
                   {kReadingTamber, kTorvikLoaded}},
        DriverCase{"stopped: the Tamber collector runs with a Torvik library loaded",
                   {Kind::kTamber, true, true, true},
                   {},
                   {kTamberFirmware, kDiagnostics, kSystemBios},
                   0,
                   {kReadingTamber}},
        DriverCase{"stopped, no Torvik library",
                   {Kind::kTamber, true, true, false},
                   {},
                   {kTamberFirmware, kDiagnostics, kSystemBios},
                   0,
                   {kReadingTamber}}));

INSTANTIATE_TEST_SUITE_P(
    NoSP, CollectionDriverTest,
    ::testing::Values(
        DriverCase{
            "the line on it follows the collectors", {Kind::kNone}, {}, kFallBack, 0, {kNoSP}},
        DriverCase{"everything fails: the BIOS status",
                   {Kind::kNone},
                   {{kDiagnostics, 3}, {kSPFirmware, 3}, {kSystemBios, 8}},
                   kFallBack,
                   8,
                   {kDiagsFailed, kSPFailed, kBiosFailed, kNoSP}}));

// An exception out of the last collector that a kind of machine runs: it was not caught on the way.
struct ExceptionCase {
  const char* what;
  Machine machine;
  std::vector<Collector> ran;
  Log log;
};

class CollectorExceptionTest : public PluginTest {
 protected:
  // Runs the driver and throws `exception` out of the collector at `index`.
  template <typename Exception>
  void driveUpTo(const ExceptionCase& c, std::size_t index, const Exception& exception) {
    SimulatedSP description;
    description.kind = c.machine.kind;
    description.answers = c.machine.answers;
    useSP(description);
    log.clear();
    std::vector<Collector> ran;
    const auto throwAtIndex = [&](Collector collector) -> TVELStatusCode {
      ran.push_back(collector);
      if (ran.size() == index + 1) throw exception;
      return {};
    };
    EXPECT_THROW(driveCollection(*sp(), throwAtIndex), Exception) << c.what << " " << index;
    EXPECT_EQ(ran, std::vector<Collector>(c.ran.begin(),
                                          c.ran.begin() + static_cast<std::ptrdiff_t>(index) + 1))
        << c.what << " " << index;
    EXPECT_EQ(log, c.log) << c.what << " " << index;
  }
};

TEST_F(CollectorExceptionTest, LeavesTheDriverAtOnce) {
  const ExceptionCase cases[] = {
      {"dot commands",
       {Kind::kDotCommand},
       {kSPFirmwareVpd, kComponentVpd, kSystemBios},
       {kReading}},
      {"silent SP", {Kind::kDotCommand, false}, kFallBack, {kSilent}},
      {"Tamber", {Kind::kTamber}, {kTamberFirmware, kDiagnostics, kSystemBios}, {kReadingTamber}},
      {"no SP", {Kind::kNone}, kFallBack, {}},
  };
  for (const ExceptionCase& c : cases) {
    for (std::size_t index = 0; index < c.ran.size(); ++index) {
      driveUpTo(c, index, std::runtime_error("collector"));
      driveUpTo(c, index, TVELException(kErrorAssertion));
    }
  }
}

// What the driver asks the SP library, in this order and nothing else.
class SPKindTest : public ::testing::Test {
 protected:
  static TVELStatusCode succeed(Collector) { return {}; }

  ::testing::StrictMock<MockSPLibrary> spLibrary;
  ::testing::InSequence sequence;
};

using ::testing::Return;

TEST_F(SPKindTest, DotCommandsAreAskedForBeforeTamber) {
  EXPECT_CALL(spLibrary, isDotcommand).WillOnce(Return(true));
  EXPECT_CALL(spLibrary, checkSPComm).WillOnce(Return(true));
  EXPECT_EQ(driveCollection(spLibrary, succeed).status, 0);
}

TEST_F(SPKindTest, TamberIsAskedForWhenThereAreNoDotCommands) {
  EXPECT_CALL(spLibrary, isDotcommand).WillOnce(Return(false));
  EXPECT_CALL(spLibrary, isTamber).WillOnce(Return(true));
  EXPECT_CALL(spLibrary, isTwgStop).WillOnce(Return(false));
  EXPECT_CALL(spLibrary, isTvmlibrary).WillOnce(Return(false));
  EXPECT_EQ(driveCollection(spLibrary, succeed).status, 0);
}

TEST_F(SPKindTest, NothingElseIsAskedWithoutAnSP) {
  EXPECT_CALL(spLibrary, isDotcommand).WillOnce(Return(false));
  EXPECT_CALL(spLibrary, isTamber).WillOnce(Return(false));
  EXPECT_EQ(driveCollection(spLibrary, succeed).status, 0);
}

class GatherSPDataTest : public PluginTest {};

TEST_F(GatherSPDataTest, StatusOfTheDriverIsPassedOn) {
  SimulatedSP silent = dotCommandSP();
  silent.answers = false;
  const struct {
    const char* what;
    SimulatedSP sp;
    bool smbiosOpens;
    int status;
  } cases[] = {
      {"no SP", {}, true, 0},
      {"no SP, and SMBIOS does not open", {}, false, 3},
      {"silent SP", silent, true, 3},
  };
  for (const auto& c : cases) {
    useSP(c.sp);
    useSmbios({}, 5, c.smbiosOpens ? 0 : 1);
    EXPECT_EQ(plugin.gatherSPdata(ns).status, c.status) << c.what;
  }
}

// The handle is used without a test for null: a missing driver is not taken for a missing SP.
TEST_F(GatherSPDataTest, NullLibraryIsUsedAllTheSame) {
  host::setSPLibrary(nullptr);
  EXPECT_DEATH(plugin.gatherSPdata(ns), "");
}

}  // namespace
}  // namespace spfirmwarevpd::test
