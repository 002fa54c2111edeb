// SPDX-License-Identifier: Apache-2.0
//
// The walk against an SMBIOS library of its own: this program defines the library's functions, and
// they take the place of the real ones.
#include "smbios/smbioswalk.h"

#include <stdexcept>

#include "tests/support/pluginfixture.h"
#include "vel/smbios.h"
#include "velhost/log.h"

namespace {

// The library that the next load opens.
struct ScriptedLibrary {
  int loadStatus = 0;
  bool givesHandle = true;
  int size = -1;  // what a read leaves in the caller's size; -1: as it was
  std::vector<int> statuses;
  std::vector<std::string> calls;
  std::vector<int> nonZeroBefore;  // bytes that were not cleared before each read
};

ScriptedLibrary library;  // NOLINT

int readNext(const char* call, unsigned char* buffer, int* size) {
  library.calls.emplace_back(call);
  int nonZero = 0;
  for (int i = 0; i < 4096; ++i) nonZero += buffer[i] != 0 ? 1 : 0;
  library.nonZeroBefore.push_back(nonZero);
  std::fill_n(buffer, 4096, static_cast<unsigned char>(0xAA));
  if (library.size >= 0) *size = library.size;
  const int status = library.statuses.empty() ? 5 : library.statuses.front();
  if (!library.statuses.empty()) library.statuses.erase(library.statuses.begin());
  return status;
}

}  // namespace

namespace NKRXVEL20 {

struct TSmBiosHandle {};

int smBiosLoad(TPluginManagerProvider* provider, TSmBiosHandle** handle) {
  static TSmBiosHandle open;
  library.calls.emplace_back(provider == nullptr ? "load" : "load with a provider");
  *handle = library.givesHandle ? &open : nullptr;
  return library.loadStatus;
}

int smBiosGetFirst(TSmBiosHandle*, int type, unsigned char* buffer, int* size) {
  return readNext(("first of type " + std::to_string(type)).c_str(), buffer, size);
}

int smBiosGetNext(TSmBiosHandle*, unsigned char* buffer, int* size) {
  return readNext("next", buffer, size);
}

int smBiosClose(TSmBiosHandle** handle) {
  library.calls.emplace_back(*handle == nullptr ? "close of null" : "close");
  *handle = nullptr;
  return 0;
}

}  // namespace NKRXVEL20

namespace spfirmwarevpd::test {
namespace {

using namespace NKRXVEL20;

constexpr char kInvalidHandle[] =
    "SMBIOSInfo::getSMBIOSInfo - Invalid handle to extended BIOS data area. Unable to retrieve "
    "information from SMBIOS.";

class SmbiosWalkTest : public PluginTest {
 protected:
  SmbiosWalkTest() { library = {}; }

  // Lets the log end a walk that does not end by itself.
  void throwAfter(std::size_t entries) {
    host::setCoreLogSink([this, entries](const host::LogEntry& entry) {
      log.emplace_back(entry.severity, entry.text);
      if (log.size() >= entries) throw std::runtime_error("enough");
    });
  }
};

TEST_F(SmbiosWalkTest, NullHandleFromALibraryThatOpenedNeverEndsTheOemStrings) {
  library.givesHandle = false;
  throwAfter(100);
  EXPECT_THROW(plugin.getType11(), std::runtime_error);
  Log expected = {{3, "Entering SPFirmwareVpd::getType11()"}};
  expected.insert(expected.end(), 99, {0, kInvalidHandle});
  EXPECT_EQ(log, expected);
  EXPECT_EQ(library.calls, std::vector<std::string>{"load"});
}

TEST_F(SmbiosWalkTest, NullHandleNeverEndsTheSystemBiosOnMostMachines) {
  library.givesHandle = false;
  throwAfter(50);
  EXPECT_THROW(plugin.getBIOSstructure(sp(), ns), std::runtime_error);
  EXPECT_EQ(log.back(), (Log::value_type{0, kInvalidHandle}));
}

TEST_F(SmbiosWalkTest, NullHandleEndsTheSystemBiosOfACallowayWhichIsClosedAllTheSame) {
  library.givesHandle = false;
  host::setMachineType("4325");
  EXPECT_EQ(plugin.getBIOSstructure(sp(), ns).status, 0);
  EXPECT_EQ(log, (Log{{3, "Entering SPFirmwareVpd::getBIOSstructure()"},
                      {3, "getMachineType() entered."},
                      {3, "getMachineType() completed."},
                      {0, kInvalidHandle},
                      {3,
                       "This machine is a Calloway. Finished collecting first SMBIOS record for "
                       "'System BIOS'."},
                      {3, "Exiting SPFirmwareVpd::getBIOSstructure()"}}));
  EXPECT_EQ(library.calls, (std::vector<std::string>{"load", "close of null"}));
}

TEST_F(SmbiosWalkTest, LibraryThatDoesNotOpenIsNeitherReadNorClosed) {
  for (const bool givesHandle : {false, true}) {
    library = {};
    library.loadStatus = 12;
    library.givesHandle = givesHandle;
    EXPECT_EQ(plugin.getType11().status, 3) << givesHandle;
    EXPECT_EQ(plugin.getBIOSstructure(sp(), ns).status, 3) << givesHandle;
    EXPECT_EQ(library.calls, (std::vector<std::string>{"load", "load"})) << givesHandle;
  }
}

TEST_F(SmbiosWalkTest, LibraryIsAskedForTheFirstThenTheNextAndClosed) {
  library.statuses = {0, 0, 5};
  std::size_t structures = 0;
  const auto result =
      walkSmbios({.type = 11, .openFailedText = "not logged", .process = [&](const SmbiosBuffer&) {
                    ++structures;
                    return true;
                  }});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(structures, 2U);
  EXPECT_EQ(library.calls,
            (std::vector<std::string>{"load", "first of type 11", "next", "next", "close"}));
  EXPECT_EQ(library.nonZeroBefore, (std::vector<int>{0, 0, 0}));
}

TEST_F(SmbiosWalkTest, ClearsAsManyBytesAsTheSizeCurrentlySays) {
  const struct {
    const char* what;
    int size;
    int left;
  } cases[] = {
      {"smaller size", 100, 3996},
      {"same size", 4096, 0},
      {"larger size", 100000, 0},
      {"no size", 0, 4096},
  };
  for (const auto& c : cases) {
    library = {};
    library.statuses = {0, 5};
    library.size = c.size;
    walkSmbios(
        {.type = 0, .openFailedText = "", .process = [](const SmbiosBuffer&) { return true; }});
    EXPECT_EQ(library.nonZeroBefore, (std::vector<int>{0, c.left})) << c.what;
  }
}

TEST_F(SmbiosWalkTest, AbandonedWalkCallsTheLibraryNoMore) {
  library.statuses = {0, 0};
  const auto result = walkSmbios(
      {.type = 0, .openFailedText = "", .process = [](const SmbiosBuffer&) { return false; }});
  EXPECT_EQ(result.status, 3);
  EXPECT_EQ(library.calls, (std::vector<std::string>{"load", "first of type 0"}));
}

TEST_F(SmbiosWalkTest, CompleteWalkIsClosedBehindItsStructure) {
  library.statuses = {0, 0};
  const auto result = walkSmbios({.type = 0,
                                  .openFailedText = "",
                                  .process = [](const SmbiosBuffer&) { return true; },
                                  .isComplete = [] { return true; }});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(library.calls, (std::vector<std::string>{"load", "first of type 0", "close"}));
}

TEST_F(SmbiosWalkTest, HostileStructuresAreCutInsideTheBuffer) {
  // The scripted library fills the buffer with 0xAA: Length 170, Count 170, no zero anywhere.
  library.statuses = {0, 5};
  EXPECT_EQ(plugin.getType11().status, 0);
  const std::string cut(99, '\xAA');
  EXPECT_EQ(plugin.smbiosOemEntries, (std::map<std::string, std::string>{{cut, ""}}));
}

}  // namespace
}  // namespace spfirmwarevpd::test
