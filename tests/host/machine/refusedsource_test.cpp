// SPDX-License-Identifier: Apache-2.0
#include "host/machine/refusedsource.h"

#include <gtest/gtest.h>

namespace velhost {
namespace {

TEST(RefusedSource, OneLineNamesAllAndSaysWhatToDo) {
  const struct {
    const char* what;
    std::vector<RefusedSource> sources;
    const char* line;
  } cases[] = {
      {"forbidden",
       {{"/dev/ipmi0: Permission denied", true}},
       "cannot read /dev/ipmi0: Permission denied; "
       "run velhost as root, or name a machine file with --machine FILE"},
      {"not there",
       {{"/dmi/DMI: No such file or directory", false}},
       "cannot read /dmi/DMI: No such file or directory; "
       "this system shows none; name a machine file with --machine FILE"},
      {"two forbidden",
       {{"/dmi/DMI: Permission denied", true}, {"/dev/ipmi0: Permission denied", true}},
       "cannot read /dmi/DMI: Permission denied, /dev/ipmi0: Permission denied; "
       "run velhost as root, or name a machine file with --machine FILE"},
      {"one not there, one forbidden",
       {{"/dmi/DMI: No such file or directory", false}, {"/dev/ipmi0: Permission denied", true}},
       "cannot read /dmi/DMI: No such file or directory, /dev/ipmi0: Permission denied; "
       "run velhost as root, or name a machine file with --machine FILE"},
  };
  for (const auto& c : cases) EXPECT_EQ(c.line, refusalLine(c.sources)) << c.what;
}

TEST(RefusedSource, ASilentBmcIsNamedWithTheWait) {
  using std::chrono::milliseconds;
  const struct {
    milliseconds waited;
    const char* within;
  } cases[] = {{milliseconds(5000), "5.0 s"},
               {milliseconds(4149), "4.1 s"},
               {milliseconds(4150), "4.2 s"},
               {milliseconds(49), "0.0 s"}};
  for (const auto& c : cases) {
    EXPECT_EQ(std::string("the BMC behind /dev/ipmi/0 did not answer within ") + c.within +
                  ", what it knows is missing; ask again when it is up, or reset it with ipmitool "
                  "mc reset cold",
              silenceLine({"/dev/ipmi/0", c.waited}));
  }
}

}  // namespace
}  // namespace velhost
