// SPDX-License-Identifier: Apache-2.0
//
// How root's rights are given up, call by call: this program defines the calls to the system, and they
// take the place of the real ones.
#include "host/files/rights.h"

#include <fcntl.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <string>
#include <vector>

namespace {

using Calls = std::vector<std::string>;

uid_t user = 0;             // NOLINT: who asks
Calls calls;                // NOLINT: what the system was asked for
std::size_t failing = 999;  // NOLINT: which of the calls fails, from 0

int called(const std::string& call) {
  calls.push_back(call);
  return calls.size() == failing + 1 ? -1 : 0;
}

std::string ids(unsigned real, unsigned effective, unsigned saved) {
  return std::to_string(real) + ' ' + std::to_string(effective) + ' ' + std::to_string(saved);
}

}  // namespace

extern "C" {

uid_t geteuid() noexcept { return user; }

int setgroups(std::size_t count, const gid_t* /*groups*/) noexcept {
  return called("groups: " + std::to_string(count));
}

int setresgid(gid_t real, gid_t effective, gid_t saved) noexcept {
  return called("group: " + ids(real, effective, saved));
}

int setresuid(uid_t real, uid_t effective, uid_t saved) noexcept {
  return called("user: " + ids(real, effective, saved));
}

int faccessat(int /*folder*/, const char* name, int mode, int flags) noexcept {
  EXPECT_EQ(R_OK, mode);
  EXPECT_EQ(AT_EACCESS, flags);
  return called(std::string("read: ") + name);
}

int prctl(int option, ...) noexcept {
  return option == PR_SET_NO_NEW_PRIVS ? called("no new rights") : 0;
}
}

namespace velhost {
namespace {

const Calls kTry = {"groups: 0", "group: 0 65534 0", "user: 0 65534 0"};
const Calls kRead = {"read: /a/plugin", "read: /b/schema"};
const Calls kBack = {"user: 0 0 0", "group: 0 0 0"};
const Calls kForGood = {"group: 65534 65534 65534", "user: 65534 65534 65534", "no new rights"};

Calls joined(const std::vector<Calls>& parts) {
  Calls all;
  for (const Calls& part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}

Calls first(const Calls& part, std::ptrdiff_t count) {
  return {part.begin(), part.begin() + count};
}

TEST(Rights, AreGivenUpWhereTheSystemLetsIt) {
  const struct {
    const char* what;
    std::size_t failing;
    Calls calls;
    bool isNobodys;
  } cases[] = {
      {"nothing fails", 999, joined({kTry, kRead, kBack, kForGood}), true},
      {"groups stay", 0, joined({first(kTry, 1), kBack}), false},
      {"the group stays", 1, joined({first(kTry, 2), kBack}), false},
      {"the user stays", 2, joined({kTry, kBack}), false},
      {"the first file cannot be read", 3, joined({kTry, first(kRead, 1), kBack}), false},
      {"the second one", 4, joined({kTry, kRead, kBack}), false},
      {"the user does not come back", 5, joined({kTry, kRead, first(kBack, 1)}), false},
      {"the group does not", 6, joined({kTry, kRead, kBack}), false},
      {"the group stays in the end", 7, joined({kTry, kRead, kBack, first(kForGood, 1)}), false},
      {"the user does", 8, joined({kTry, kRead, kBack, first(kForGood, 2)}), false},
      {"new rights may come", 9, joined({kTry, kRead, kBack, kForGood}), false},
  };
  for (const auto& c : cases) {
    calls.clear();
    failing = c.failing;
    EXPECT_EQ(c.isNobodys, giveUpRoot(std::vector<std::filesystem::path>{"/a/plugin", "/b/schema"}))
        << c.what;
    EXPECT_EQ(c.calls, calls) << c.what;
  }
  failing = 999;
}

TEST(Rights, FilesAreLookedForByTheirWholeWay) {
  calls.clear();
  EXPECT_TRUE(giveUpRoot(std::vector<std::filesystem::path>{"plugin"}));
  EXPECT_EQ("read: " + (std::filesystem::current_path() / "plugin").string(), calls.at(3));
}

TEST(Rights, OtherUsersHaveNoneToGiveUp) {
  calls.clear();
  user = 1000;
  EXPECT_FALSE(giveUpRoot({}));
  user = 0;
  EXPECT_EQ(Calls{}, calls);
}

TEST(Rights, WhoStartedTheProgramIsKnownBehindThem) {
  user = 65534;
  EXPECT_EQ(0U, startedAs());
  user = 0;
}

}  // namespace
}  // namespace velhost
