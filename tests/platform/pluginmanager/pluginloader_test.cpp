// SPDX-License-Identifier: Apache-2.0
#include "velhost/pluginloader.h"

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "vel/rootobject.h"
#include "velhost/cimnamespace.h"
#include "velhost/log.h"

namespace NKRXVEL20::host {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

const std::string kForeign = "an exception that is no std::exception";

std::filesystem::path pluginFile(const std::string& name) {
  return std::filesystem::path(TEST_PLUGIN_DIRECTORY) / (name + ".pi.so");
}

bool isMapped(const std::filesystem::path& file) {
  void* handle = dlopen(file.c_str(), RTLD_NOW | RTLD_NOLOAD);
  if (handle != nullptr) dlclose(handle);
  return handle != nullptr;
}

class PluginLoaderTest : public testing::Test {
 protected:
  PluginLoaderTest() {
    setCoreLogSink([this](const LogEntry& entry) {
      log_.push_back(entry.text);
      severities_.push_back(entry.severity);
    });
  }
  ~PluginLoaderTest() override { setCoreLogSink({}); }

  // What the refusal to load the file says.
  std::string refusal(const std::filesystem::path& file) {
    try {
      loader_.load(file);
    } catch (const PluginLoadError& e) {
      return e.what();
    }
    return "loaded";
  }

  std::vector<std::string> log_;
  std::vector<int> severities_;  // of the entries of the log
  PluginLoader loader_;
};

TEST_F(PluginLoaderTest, RunsAPluginsLife) {
  {
    const auto plugin = loader_.load(pluginFile("answering"));
    EXPECT_EQ("Test", plugin->callbacks().GetName());
    EXPECT_EQ("2.1", plugin->callbacks().GetVersion());
    EXPECT_EQ("1.0", plugin->callbacks().GetInterfaceVersion());
    EXPECT_EQ(0, plugin->callbacks().GetType());
    EXPECT_THAT(log_, ElementsAre("constructed"));
    plugin->callbacks().Init();
    const auto ns = boost::shared_ptr<CimNamespace>(new CimNamespace({}, {}));
    std::vector<boost::shared_ptr<ICIMClass>> classes = {ns->requestClass("KRXSG_Vpd")};
    plugin->query().GetData(ns, classes);
    EXPECT_TRUE(isMapped(pluginFile("answering")));
  }
  EXPECT_THAT(log_, ElementsAre("constructed", "Init", "GetData of 1", "DeInit", "PrepareForUnload",
                                "destroyed"));
  EXPECT_FALSE(isMapped(pluginFile("answering")));
}

TEST_F(PluginLoaderTest, LoadsAgainAfterUnloading) {
  for (int i = 0; i < 3; ++i) {
    log_.clear();
    loader_.load(pluginFile("answering")).reset();
    EXPECT_THAT(log_, ElementsAre("constructed", "DeInit", "PrepareForUnload", "destroyed")) << i;
  }
}

TEST_F(PluginLoaderTest, TakesARelativePath) {
  const auto relative = std::filesystem::relative(pluginFile("answering"));
  EXPECT_EQ("Test", loader_.load(relative)->callbacks().GetName());
}

TEST_F(PluginLoaderTest, AFileNameAloneIsAFileOfTheCurrentDirectory) {
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path(TEST_PLUGIN_DIRECTORY);
  EXPECT_EQ("Test", loader_.load("answering.pi.so")->callbacks().GetName());
  std::filesystem::current_path(before);
}

TEST_F(PluginLoaderTest, UnloadingGoesOnAfterAFailedDeInit) {
  loader_.load(pluginFile("failing")).reset();
  EXPECT_THAT(log_,
              ElementsAre("constructed", "DeInit failed: cannot", "PrepareForUnload", "destroyed"));
  EXPECT_THAT(severities_, ElementsAre(3, 0, 3, 3));
  EXPECT_FALSE(isMapped(pluginFile("failing")));
}

TEST_F(PluginLoaderTest, UnloadingGoesOnWhateverIsThrown) {
  loader_.load(pluginFile("failing_foreign")).reset();
  EXPECT_THAT(log_, ElementsAre("constructed", "DeInit failed: " + kForeign, "PrepareForUnload",
                                "destroyed", "PrepareForUnload failed: " + kForeign));
  EXPECT_FALSE(isMapped(pluginFile("failing_foreign")));
}

// In a process of its own: the system's loader unmaps nothing any more afterwards.
TEST_F(PluginLoaderTest, UnloadingSurvivesWhatStaticDestructorsThrow) {
  const auto unload = [this] {
    loader_.load(pluginFile("failing_destructor")).reset();
    std::cerr << log_.back() << '\n';
    std::_Exit(loader_.load(pluginFile("answering")) ? 7 : 0);
  };
  EXPECT_EXIT(unload(), testing::ExitedWithCode(7), "^unloading failed: " + kForeign + "\n$");
}

TEST_F(PluginLoaderTest, RefusesAMissingFile) {
  EXPECT_EQ("/nowhere/x.pi.so: cannot open shared object file: No such file or directory",
            refusal("/nowhere/x.pi.so"));
}

TEST_F(PluginLoaderTest, RefusesAFileThatIsNoSharedObject) {
  const auto file = std::filesystem::path(testing::TempDir()) / "text.pi.so";
  std::ofstream(file) << "no shared object, though long enough to be read as the header of one\n";
  EXPECT_THAT(refusal(file), AllOf(StartsWith(file.string() + ": "), Not(HasSubstr("\n"))));
  std::filesystem::remove(file);
}

TEST_F(PluginLoaderTest, RefusesAnObjectThatRegistersNothing) {
  const auto file = pluginFile("registering_nothing");
  EXPECT_EQ(file.string() + ": it registers no plug-in", refusal(file));
  EXPECT_THAT(log_, ElementsAre("loaded"));
  EXPECT_FALSE(isMapped(file));
}

TEST_F(PluginLoaderTest, RefusesAPluginThatAnswersNoQueriesAndEndsIt) {
  const auto file = pluginFile("without_query");
  EXPECT_EQ(file.string() + ": its plug-in answers no queries (IPluginBasicQueryCallbacks)",
            refusal(file));
  EXPECT_THAT(log_, ElementsAre("constructed", "PrepareForUnload", "destroyed"));
  EXPECT_FALSE(isMapped(file));
}

TEST_F(PluginLoaderTest, RefusesAPluginThatAnswersNoQueriesAndFailsToEnd) {
  const auto file = pluginFile("without_query_failing");
  EXPECT_EQ(file.string() + ": its plug-in answers no queries (IPluginBasicQueryCallbacks)",
            refusal(file));
  EXPECT_THAT(log_, ElementsAre("constructed", "PrepareForUnload", "destroyed",
                                "PrepareForUnload failed: " + kForeign));
  EXPECT_FALSE(isMapped(file));
}

TEST_F(PluginLoaderTest, RefusesAnObjectThatRegistersNull) {
  const auto file = pluginFile("registering_null");
  EXPECT_EQ(file.string() + ": it registers no plug-in", refusal(file));
  EXPECT_FALSE(isMapped(file));
}

TEST_F(PluginLoaderTest, RefusesAnObjectThatRegistersTwoPluginsAndEndsBoth) {
  const auto file = pluginFile("registering_two");
  EXPECT_EQ(file.string() + ": it registers 2 plug-ins, not one", refusal(file));
  EXPECT_THAT(log_, ElementsAre("constructed", "constructed", "PrepareForUnload", "destroyed",
                                "PrepareForUnload", "destroyed"));
  EXPECT_FALSE(isMapped(file));
}

TEST_F(PluginLoaderTest, APluginThatRegistersTwiceIsOne) {
  loader_.load(pluginFile("registering_twice")).reset();
  EXPECT_THAT(log_, ElementsAre("constructed", "DeInit", "PrepareForUnload", "destroyed"));
}

TEST_F(PluginLoaderTest, ReportsWhatStaticConstructorsThrow) {
  const struct {
    const char* plugin;
    std::string reason;
  } cases[] = {{"throwing", "cannot start"}, {"throwing_foreign", kForeign}};
  for (const auto& c : cases) {
    const auto file = pluginFile(c.plugin);
    EXPECT_EQ(file.string() + ": its static constructors failed: " + c.reason, refusal(file));
  }
  EXPECT_EQ("Test", loader_.load(pluginFile("answering"))->callbacks().GetName());
}

TEST(PluginLoader, SetsThePluginManagerUpForItsOwnLife) {
  EXPECT_EQ(nullptr, TRootObject::GetPluginManager());
  {
    const PluginLoader loader;
    EXPECT_NE(nullptr, TRootObject::GetPluginManager());
  }
  EXPECT_EQ(nullptr, TRootObject::GetPluginManager());
}

}  // namespace
}  // namespace NKRXVEL20::host
