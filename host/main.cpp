// SPDX-License-Identifier: Apache-2.0
#include <csignal>
#include <variant>

#include "host/commandline/commandline.h"
#include "host/commandline/commands.h"
#include "host/commandline/failure.h"
#include "host/files/interruption.h"
#include "host/files/standardstreams.h"

int main(int argc, char* argv[]) {
  // A file above the limit of its size is told as any other that cannot be written.
  static_cast<void>(std::signal(SIGXFSZ, SIG_IGN));
  try {
    velhost::occupyStandardStreams();
    velhost::tellInterruptions();
    return std::visit([](const auto& command) { return velhost::run(command); },
                      velhost::parseCommandLine(argc, argv));
  } catch (...) {
    return velhost::tellFailure();
  }
}
