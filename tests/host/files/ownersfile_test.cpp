// SPDX-License-Identifier: Apache-2.0
#include "host/files/ownersfile.h"

#include <sys/stat.h>

#include "tests/host/scratchfolder.h"

namespace velhost {
namespace {

class OwnersFileTest : public ScratchFolder {};

TEST_F(OwnersFileTest, RootRefusesWhatOthersMayWrite) {
  const std::filesystem::path file = put("libx.pi.so", "x");
  const struct {
    const char* what;
    mode_t mode;
    uid_t user;
    bool isRefused;
  } cases[] = {
      {"its owner's", 0644, 0, false},  {"its owner's alone", 0600, 0, false},
      {"its group's", 0664, 0, true},   {"everybody's", 0646, 0, true},
      {"not for root", 0666, 1, false},
  };
  for (const auto& c : cases) {
    ASSERT_EQ(0, ::chmod(file.c_str(), c.mode));
    const auto reason = whyRootRefuses(file, c.user);
    EXPECT_EQ(c.isRefused, reason.has_value()) << c.what;
    if (!reason) continue;
    EXPECT_EQ(
        file.string() + ": not loaded as root, as others than its owner may write it (chmod go-w)",
        *reason);
  }
}

TEST_F(OwnersFileTest, WhatIsNotThereIsLeftToWhoOpensIt) {
  EXPECT_EQ(std::nullopt, whyRootRefuses(folder_ / "none", 0));
}

}  // namespace
}  // namespace velhost
