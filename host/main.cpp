// SPDX-License-Identifier: Apache-2.0
#include <exception>
#include <variant>

#include "host/commandline.h"
#include "host/commands.h"
#include "velhost/pluginloader.h"

int main(int argc, char* argv[]) {
  try {
    return std::visit([](const auto& command) { return velhost::run(command); },
                      velhost::parseCommandLine(argc, argv));
  } catch (const velhost::InputError& error) {
    velhost::complain(error.what());
    return velhost::kBadInput;
  } catch (const NKRXVEL20::host::PluginLoadError& error) {
    velhost::complain(error.what());
    return velhost::kBadInput;
  } catch (const std::exception& error) {
    velhost::complain(error.what());
    return velhost::kRefused;
  }
}
