// SPDX-License-Identifier: Apache-2.0
#include "host/collectors/collectorfiles.h"

#include <gtest/gtest.h>

#include <fstream>

#include "host/text/inputerror.h"
#include "tests/host/scratchfolder.h"

namespace velhost {
namespace {

namespace fs = std::filesystem;

using Paths = std::vector<fs::path>;

class CollectorFilesTest : public ScratchFolder {
 protected:
  CollectorFilesTest() { fs::create_directories(programs); }

  static fs::path make(const fs::path& file) {
    fs::create_directories(file.parent_path());
    std::ofstream(file) << "x";
    return file;
  }

  fs::path root = folder_;
  fs::path programs = root / "bin";
  Machine live = machineFrom("live");
  Machine file = machineFrom("file");

 private:
  static Machine machineFrom(const char* source) {
    Machine machine;
    machine.source = source;
    return machine;
  }
};

TEST_F(CollectorFilesTest, FolderIsTheOneBesideTheProgramThatHasTheFirmwareCollector) {
  EXPECT_THROW(collectorsFolder(programs), InputError);
  make(programs / "libspfirmwarevpd.pi.so");
  EXPECT_EQ(programs, collectorsFolder(programs));
  make(root / "lib" / "libother.pi.so");
  EXPECT_EQ(programs, collectorsFolder(programs));
  make(root / "lib" / "libspfirmwarevpd.pi.so");
  EXPECT_EQ(root / "lib", collectorsFolder(programs));
}

TEST_F(CollectorFilesTest, WhereNoneHasItThatIsTold) {
  try {
    collectorsFolder(programs);
    ADD_FAILURE() << "found";
  } catch (const InputError& error) {
    EXPECT_EQ("libspfirmwarevpd.pi.so is not beside " + programs.string() +
                  "; name a plug-in with --plugin FILE",
              std::string(error.what()));
  }
}

TEST_F(CollectorFilesTest, LiveMachineHasAllOnDemandAndAMachineFileThoseThatItLists) {
  const fs::path firmware = make(root / "lib" / "libspfirmwarevpd.pi.so");
  const fs::path devices = make(root / "lib" / "libdeviceinventory.pi.so");
  make(root / "lib" / "libvelcore.so");  // no plug-in
  const CollectorFiles all = collectorFiles({}, live, programs);
  EXPECT_EQ(Paths{}, all.loaded);
  EXPECT_EQ((Paths{devices, firmware}), all.onDemand);
  EXPECT_FALSE(all.names);
  file.collectors = {"DeviceInventory"};
  const CollectorFiles listed = collectorFiles({}, file, programs);
  EXPECT_EQ(Paths{firmware}, listed.loaded);
  EXPECT_EQ(Paths{devices}, listed.onDemand);
  EXPECT_EQ(std::set<std::string>{"DeviceInventory"}, listed.names);
}

TEST_F(CollectorFilesTest, NamedPluginsReplaceTheSet) {
  const CollectorFiles files = collectorFiles({"a.pi.so", "b.pi.so"}, live, programs);
  EXPECT_EQ((Paths{"a.pi.so", "b.pi.so"}), files.loaded);
  EXPECT_EQ(Paths{}, files.onDemand);
}

TEST_F(CollectorFilesTest, TheProgramsFolderIsThatOfItsFile) {
  EXPECT_TRUE(fs::exists(programFolder() / "host_test"));
}

}  // namespace
}  // namespace velhost
