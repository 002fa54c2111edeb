// SPDX-License-Identifier: Apache-2.0
//
// The plug-in's shared object on a platform that shares nothing with the one beside it in this
// project, under a host of the test's own, which knows the public headers alone.
#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <link.h>

#include <filesystem>
#include <functional>
#include <utility>

#include "tests/spyplatform/core.h"
#include "tests/spyplatform/expectedcollection.h"
#include "tests/spyplatform/machines.h"
#include "tests/spyplatform/pluginmanager.h"
#include "tests/spyplatform/script.h"

namespace spyplatform {
namespace {

using namespace NKRXVEL20;

bool isLoaded() {
  void* const handle = dlopen(PLUGIN_FILE, RTLD_NOW | RTLD_NOLOAD);
  if (handle != nullptr) dlclose(handle);
  return handle != nullptr;
}

// A host as small as one can be: loads one plug-in, asks it, and lets it go.
class TinyHost {
 public:
  TinyHost() : handle_(dlopen(PLUGIN_FILE, RTLD_NOW | RTLD_LOCAL)), plugin_(state().registered) {}

  ~TinyHost() {
    if (plugin_ != nullptr) unload();
    if (handle_ != nullptr) dlclose(handle_);
  }

  TinyHost(const TinyHost&) = delete;
  TinyHost& operator=(const TinyHost&) = delete;

  IPluginCallbacks* plugin() const { return plugin_; }

  void query(const std::vector<std::string>& classNames) const {
    std::vector<boost::shared_ptr<ICIMClass>> classes;
    for (const std::string& name : classNames) classes.push_back(makeClass(name));
    dynamic_cast<IPluginBasicQueryCallbacks&>(*plugin_).GetData(ns_, classes);
  }

  void unload() {
    IPluginCallbacks* const plugin = std::exchange(plugin_, nullptr);
    plugin->DeInit();
    plugin->PrepareForUnload();
  }

 private:
  void* handle_;
  IPluginCallbacks* plugin_;
  boost::shared_ptr<ICIMNamespace> ns_ = makeNamespace();
};

// The files of the objects that the process consists of.
std::vector<std::filesystem::path> loadedObjects() {
  std::vector<std::filesystem::path> files;
  dl_iterate_phdr(
      [](dl_phdr_info* object, std::size_t /*size*/, void* list) {
        static_cast<std::vector<std::filesystem::path>*>(list)->emplace_back(object->dlpi_name);
        return 0;
      },
      &files);
  return files;
}

class TinyHostTest : public ::testing::Test {
 protected:
  TinyHostTest() {
    reset();
    installPluginManager();
  }

  static Trace takeTrace() { return std::exchange(state().trace, {}); }
};

TEST_F(TinyHostTest, ThePluginSaysWhoItIs) {
  const TinyHost host;
  ASSERT_NE(host.plugin(), nullptr) << dlerror();
  EXPECT_EQ(host.plugin()->GetType(), 0);
  EXPECT_EQ(host.plugin()->GetName(), "SPFirmwareVPD");
  EXPECT_EQ(host.plugin()->GetVersion(), "1.0");
  EXPECT_EQ(host.plugin()->GetInterfaceVersion(), fdrPluginInterfaceVersion);
}

TEST_F(TinyHostTest, CollectsAMachineAndIsUnloaded) {
  describeMachineWithOneDotCommandSP();
  ASSERT_FALSE(isLoaded());
  {
    TinyHost host;
    ASSERT_NE(host.plugin(), nullptr) << dlerror();
    host.plugin()->Init();
    host.query({"KRXSG_Vpd", "KRXSG_SPROMFirmwareVPDMain"});

    ExpectedCalls expected;
    const Collected collected = collectFromOneDotCommandSP(expected);
    expected.publish("KRXSG_Vpd", collected.vpd);
    expected.publish("KRXSG_SPROMFirmwareVPDMain", collected.main);
    EXPECT_EQ(difference(takeTrace(), expected.lines()), "");

    host.unload();
    EXPECT_THAT(takeTrace(), ::testing::Contains("~plug-in"));
  }
  EXPECT_FALSE(isLoaded());
}

// It is another object each time, which knows nothing of the machine before.
TEST_F(TinyHostTest, LoadsAgainOnAnotherMachine) {
  const struct {
    const char* what;
    std::function<void()> describe;
    std::size_t published;
  } kMachines[] = {
      {"one SP, whose diagnostics answer", describeMachineWithOneDotCommandSP, 1},
      {"no SP, but an OEM string of the diagnostics", describeMachineWithoutSP, 1},
      {"a Tamber SP and no diagnostics", describeMachineWithTamberSP, 0},
  };
  for (const auto& machine : kMachines) {
    ASSERT_FALSE(isLoaded()) << machine.what;
    reset();
    machine.describe();
    TinyHost host;
    ASSERT_NE(host.plugin(), nullptr) << machine.what;
    host.plugin()->Init();
    host.query({"KRXSG_DiagnosticVPD"});
    EXPECT_EQ(linesWith(takeTrace(), ".AddToClass(").size(), machine.published) << machine.what;
  }
}

// The exception crosses from the shared object to a host that shares the platform's core alone.
TEST_F(TinyHostTest, AClassThatIsNotServedIsRefused) {
  TinyHost host;
  ASSERT_NE(host.plugin(), nullptr) << dlerror();
  host.plugin()->Init();
  try {
    host.query({"KRXSG_NobodysClass"});
    FAIL() << "nothing was thrown";
  } catch (const TVELException& error) {
    EXPECT_EQ(error.GetCode(), kErrorClassNotServed);
  }
}

// The four libraries of the process are those of the second platform.
TEST_F(TinyHostTest, NothingOfTheOtherPlatformIsInTheProcess) {
  const TinyHost host;
  std::vector<std::string> platform;
  for (const auto& file : loadedObjects()) {
    for (const char* name :
         {"libvelcore.so", "libplugin.nsp.so", "libspdriver.so", "libsmbios.so"}) {
      if (file.filename() == name) platform.push_back(canonical(file).parent_path());
    }
  }
  EXPECT_EQ(platform, std::vector<std::string>(
                          4, canonical(std::filesystem::path(PLUGIN_FILE)).parent_path()));
}

}  // namespace
}  // namespace spyplatform
