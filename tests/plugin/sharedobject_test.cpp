// SPDX-License-Identifier: Apache-2.0
//
// The shared object itself, as a host meets it.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <boost/make_shared.hpp>
#include <cstdio>
#include <cstring>
#include <regex>

#include "tests/host/programrun.h"
#include "vel/exception.h"
#include "vel/export.h"
#include "velhost/cimnamespace.h"
#include "velhost/pluginloader.h"
#include "velhost/rootobject.h"
#include "velhost/smbios.h"
#include "velhost/spdriver.h"

namespace {

constexpr char kInitialiserName[] = "_ZNSt8ios_base4InitC1Ev";  // std::ios_base::Init::Init()
bool streamsInitialised = false;                                // NOLINT

}  // namespace

// Takes the place of the standard library's initialiser of the streams, so that it is seen when a
// unit that is loaded calls it.
VEL_API void initialiseStreams(void* object) asm("_ZNSt8ios_base4InitC1Ev");

void initialiseStreams(void* object) {
  streamsInitialised = true;
  reinterpret_cast<void (*)(void*)>(dlsym(RTLD_NEXT, kInitialiserName))(object);
}

namespace spfirmwarevpd::test {
namespace {

using namespace NKRXVEL20;

// Loads the shared object where it finds no plug-in manager, and ends the process, as the system's
// loader keeps such an object mapped. Says what came out, and whether the streams were ready by then.
[[noreturn]] void loadWithoutAManager() {
  void* (*volatile open)(const char*, int) = dlopen;  // dlopen itself is declared as never throwing
  host::setPluginManager(nullptr);
  streamsInitialised = false;
  try {
    open(PLUGIN_FILE, RTLD_NOW);
    std::fputs("nothing", stderr);
  } catch (const TVELException& error) {
    std::fprintf(stderr, "%d %s", error.GetCode(), error.what());
  }
  _exit(streamsInitialised ? 0 : 1);
}

bool isLoaded() {
  void* const handle = dlopen(PLUGIN_FILE, RTLD_NOW | RTLD_NOLOAD);
  if (handle != nullptr) dlclose(handle);
  return handle != nullptr;
}

TEST(SharedObjectTest, LoadsAnswersUnloadsAndLoadsAgain) {
  host::setMachineType("");
  host::setSmbiosTable(
      host::SmbiosTable{{{{0, 10, 0, 0, 1, 2, 0, 0xE0, 3, 0, 'K', 0, '1', 0, 0}}}});
  host::setSPLibrary(host::makeSimulatedSP({}));
  host::PluginLoader loader;
  for (int round = 1; round <= 2; ++round) {
    ASSERT_FALSE(isLoaded()) << round;
    const auto ns = boost::make_shared<host::CimNamespace>(std::vector<std::string>{},
                                                           std::vector<host::Fault>{});
    const auto plugin = loader.load(PLUGIN_FILE);
    EXPECT_EQ(plugin->callbacks().GetName(), "SPFirmwareVPD") << round;
    plugin->callbacks().Init();
    std::vector<boost::shared_ptr<ICIMClass>> classes = {
        ns->requestClass("KRXSG_SystemBIOSElement")};
    plugin->query().GetData(ns, classes);
    EXPECT_EQ(ns->takePublished().size(), 1U) << round;
  }
  EXPECT_FALSE(isLoaded());
  host::setSmbiosTable(std::nullopt);
  host::setSPLibrary(nullptr);
  host::setMachineType(std::nullopt);
}

// The operation as a caller in another shared object reaches it, with no object behind it.
TEST(SharedObjectTest, PrepareForUnloadOfANullObjectDoesNothing) {
  constexpr std::size_t kSlot = 6;  // behind both destructors and the four operations of identity
  host::PluginLoader loader;
  const auto plugin = loader.load(PLUGIN_FILE);
  using Operation = void (*)(IPluginCallbacks*);
  Operation prepareForUnload = nullptr;
  const unsigned char* table = nullptr;
  std::memcpy(&table, static_cast<void*>(&plugin->callbacks()), sizeof table);
  std::memcpy(&prepareForUnload, table + kSlot * sizeof prepareForUnload, sizeof prepareForUnload);
  prepareForUnload(nullptr);
  EXPECT_EQ(plugin->callbacks().GetName(), "SPFirmwareVPD");
}

TEST(SharedObjectTest, ExceptionOfTheConstructorComesOutOfTheLoad) {
  EXPECT_EXIT(
      loadWithoutAManager(), [](int) { return true; }, "^1 .*px != 0");
}

TEST(SharedObjectTest, StreamsAreReadyWhenTheObjectRegisters) {
  EXPECT_EXIT(loadWithoutAManager(), ::testing::ExitedWithCode(0), "");
}

TEST(SharedObjectTest, HoldsTheOperationOfEveryCollector) {
  const std::string symbols =
      std::regex_replace(velhost::runProgram("/usr/bin/nm", {{"-C", PLUGIN_FILE}, {}}).out,
                         std::regex(R"(\[abi:cxx11\])"), "");  // of those that return a text
  for (const char* operation : {"GetData(",
                                "retrieveInstances(",
                                "gatherSPdata(",
                                "loadSPCommands(",
                                "getParseVPD(",
                                "getSPFirmwareVpd(",
                                "getSPFirmware(",
                                "createSPFirmwareInstance(",
                                "getMachineType(",
                                "IscKVMMachine(",
                                "getType11(",
                                "getSpNameFromSmBios(",
                                "getBIOSstructure(",
                                "getPOSTBIOSInfo(",
                                "doTime(",
                                "getDiagsFirmware(",
                                "createDiagInstance(",
                                "createDiagInstanceBasedOnDotCommand(",
                                "getDiagVPDInfo(",
                                "getVPDdata(",
                                "gettamberVPD(",
                                "printVpdData(",
                                "printMemoryVpdData(",
                                "printPlanarVpd(",
                                "getMDManufacturer(",
                                "gettamberFirmware(",
                                "DeterminecKVMExist(",
                                "GetcKVMFirmwareVersion(",
                                "CreatecKVMInstance(",
                                "DetermineIPMIFRUExist(",
                                "getUsbTapeFirmware("}) {
    EXPECT_NE(symbols.find(std::string(" SPFirmwareVpd::") + operation), std::string::npos)
        << operation;
  }
  EXPECT_NE(symbols.find(" isAllNumeric("), std::string::npos);
}

TEST(SharedObjectTest, ExportsOneConstantAndNothingElse) {
  EXPECT_EQ(velhost::runProgram(
                "/usr/bin/nm", {{"-D", "--defined-only", "--format=just-symbols", PLUGIN_FILE}, {}})
                .out,
            "DIMM_BYTES_TOTAL_OFFSET\n");
}

TEST(SharedObjectTest, ExportedConstantIsOne) {
  host::PluginLoader loader;
  const auto plugin = loader.load(PLUGIN_FILE);
  void* const handle = dlopen(PLUGIN_FILE, RTLD_NOW | RTLD_NOLOAD);
  ASSERT_NE(handle, nullptr) << dlerror();
  const auto* offset = static_cast<const std::int32_t*>(dlsym(handle, "DIMM_BYTES_TOTAL_OFFSET"));
  ASSERT_NE(offset, nullptr);
  EXPECT_EQ(*offset, 1);
  dlclose(handle);
}

TEST(SharedObjectTest, NeedsThePlatformAndTheCxxRuntimeOnly) {
  const std::string needed = velhost::runProgram("/usr/bin/readelf", {{"-d", PLUGIN_FILE}, {}}).out;
  for (const char* library :
       {"libvelcore.so", "libplugin.nsp.so", "libspdriver.so", "libsmbios.so"}) {
    EXPECT_NE(needed.find(library), std::string::npos) << library;
  }
  EXPECT_EQ(needed.find("boost"), std::string::npos) << needed;
}

}  // namespace
}  // namespace spfirmwarevpd::test
