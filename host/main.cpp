// SPDX-License-Identifier: Apache-2.0
#include <variant>

#include "host/commandline.h"
#include "host/commands.h"
#include "host/failure.h"
#include "host/standardstreams.h"

int main(int argc, char* argv[]) {
  try {
    velhost::occupyStandardStreams();
    return std::visit([](const auto& command) { return velhost::run(command); },
                      velhost::parseCommandLine(argc, argv));
  } catch (...) {
    return velhost::tellFailure();
  }
}
