// SPDX-License-Identifier: Apache-2.0
#include "host/defaultplugin.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>

#include "host/inputerror.h"

namespace velhost {
namespace {

namespace fs = std::filesystem;

TEST(DefaultPlugin, IsFoundInTheLibraryFolderBesideTheProgram) {
  const fs::path root =
      fs::temp_directory_path() / ("velhost-defaultplugin-" + std::to_string(::getpid()));
  fs::create_directories(root / "bin");
  EXPECT_THROW(defaultPlugin(root / "bin"), InputError);

  const fs::path beside = root / "bin" / "libspfirmwarevpd.pi.so";
  std::ofstream(beside) << "x";
  EXPECT_EQ(beside, defaultPlugin(root / "bin"));

  fs::create_directories(root / "lib");
  std::ofstream(root / "lib" / "libspfirmwarevpd.pi.so") << "x";
  EXPECT_EQ(root / "lib" / "libspfirmwarevpd.pi.so", defaultPlugin(root / "bin"));
  fs::remove_all(root);
}

TEST(DefaultPlugin, TheProgramsFolderIsThatOfItsFile) {
  EXPECT_TRUE(fs::exists(programFolder() / "host_test"));
}

}  // namespace
}  // namespace velhost
