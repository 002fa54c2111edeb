// SPDX-License-Identifier: Apache-2.0
#include "host/files/rights.h"

#include <fcntl.h>
#include <grp.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <algorithm>

namespace velhost {
namespace {

constexpr uid_t kRoot = 0;
constexpr uid_t kNobody = 65534;  // also the kernel's number for users that it cannot tell
constexpr gid_t kNogroup = 65534;

const uid_t kStartedAs = ::geteuid();

// By the whole way to it, as plug-ins are loaded.
bool mayRead(const std::filesystem::path& file) {
  const std::filesystem::path whole = std::filesystem::absolute(file);
  return ::faccessat(AT_FDCWD, whole.c_str(), R_OK, AT_EACCESS) == 0;
}

// As the one who is going to read them, who is not in root's groups either; the saved user and group
// are the way back.
bool nobodyMayRead(std::span<const std::filesystem::path> files) {
  const bool isNobody = ::setgroups(0, nullptr) == 0 && ::setresgid(kRoot, kNogroup, kRoot) == 0 &&
                        ::setresuid(kRoot, kNobody, kRoot) == 0;
  const bool mayReadAll = isNobody && std::ranges::all_of(files, mayRead);
  return ::setresuid(kRoot, kRoot, kRoot) == 0 && ::setresgid(kRoot, kRoot, kRoot) == 0 &&
         mayReadAll;
}

}  // namespace

uid_t startedAs() noexcept { return kStartedAs; }

bool giveUpRoot(std::span<const std::filesystem::path> readLater) {
  if (::geteuid() != kRoot || !nobodyMayRead(readLater)) return false;
  return ::setresgid(kNogroup, kNogroup, kNogroup) == 0 &&
         ::setresuid(kNobody, kNobody, kNobody) == 0 &&
         ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0;  // NOLINT(*-vararg): it has no other form
}

}  // namespace velhost
