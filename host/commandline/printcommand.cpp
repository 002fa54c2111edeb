// SPDX-License-Identifier: Apache-2.0
#include "host/commandline/commands.h"
#include "host/files/standardstreams.h"

namespace velhost {

int run(const PrintCommand& command) {
  writeStandardOutput(command.text);
  return kAnswered;
}

}  // namespace velhost
