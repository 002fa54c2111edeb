// SPDX-License-Identifier: Apache-2.0
#include "host/machine/machine.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

namespace velhost {
namespace {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

constexpr const char* kRoot = "run velhost as root, or name a machine file with --machine FILE";

class LiveMachine : public ::testing::Test {
 protected:
  LiveMachine() : folder_(fs::temp_directory_path() / ("livemachine-" + std::to_string(getpid()))) {
    fs::create_directories(folder_);
    std::ofstream(folder_ / "DMI", std::ios::binary) << std::string("\x0B\x04\x00\x00\x00\x00", 6);
  }
  ~LiveMachine() override { fs::remove_all(folder_); }

  static NKRXVEL20::host::LiveIpmi ipmi(const char* refusedDevice) {
    NKRXVEL20::host::SimulatedSP sp;
    sp.bmc = true;
    return {NKRXVEL20::host::makeSimulatedSP(sp), refusedDevice,
            std::make_shared<std::optional<NKRXVEL20::host::SilentBmc>>(
                NKRXVEL20::host::SilentBmc{"/dev/ipmi0", std::chrono::seconds(5)})};
  }

  std::string noTable() const { return (folder_ / "none").string(); }

  fs::path folder_;
};

TEST_F(LiveMachine, IsMadeOfItsSources) {
  const Machine machine = liveMachine(folder_, ipmi(""));
  EXPECT_EQ("live", machine.source);
  EXPECT_FALSE(machine.machineType);
  ASSERT_TRUE(machine.smbios);
  EXPECT_EQ(1U, machine.smbios->structures.size());
  ASSERT_TRUE(machine.sp);
  EXPECT_TRUE(machine.sp->IsBMCMachine());
  EXPECT_EQ("/dev/ipmi0", (*machine.silence)->device);
  EXPECT_EQ(Lines{}, machine.unreadable);
}

TEST_F(LiveMachine, OneLineTellsAllThatWasRefused) {
  const std::string missing = "cannot read " + noTable() + "/DMI: No such file or directory";
  const struct {
    const char* what;
    std::string smbiosFolder;
    const char* refusedDevice;
    std::string line;
  } cases[] = {
      {"IPMI", folder_.string(), "/dev/ipmi/0",
       std::string("cannot read /dev/ipmi/0: Permission denied; ") + kRoot},
      {"SMBIOS", noTable(), "",
       missing + "; this system shows none; name a machine file with --machine FILE"},
      {"both", noTable(), "/dev/ipmi0", missing + ", /dev/ipmi0: Permission denied; " + kRoot},
  };
  for (const auto& c : cases) {
    const Machine machine = liveMachine(c.smbiosFolder, ipmi(c.refusedDevice));
    EXPECT_EQ(Lines{c.line}, machine.unreadable) << c.what;
    EXPECT_TRUE(machine.sp) << c.what;
  }
}

// Root is refused nothing, so that it looks as somebody else.
TEST_F(LiveMachine, ATableThatIsRefusedNeedsRoot) {
  fs::permissions(folder_ / "DMI", fs::perms::none);
  const uid_t user = ::geteuid();
  if (user == 0) {
    ASSERT_EQ(0, ::seteuid(65534));
  }
  const Machine machine = liveMachine(folder_, ipmi(""));
  if (user == 0) {
    ASSERT_EQ(0, ::seteuid(user));
  }
  EXPECT_EQ(Lines{"cannot read " + (folder_ / "DMI").string() + ": Permission denied; " + kRoot},
            machine.unreadable);
}

}  // namespace
}  // namespace velhost
