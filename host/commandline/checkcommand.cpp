// SPDX-License-Identifier: Apache-2.0
#include "host/collectors/collectorfiles.h"
#include "host/collectors/schemafolder.h"
#include "host/commandline/commands.h"
#include "host/commandline/complaint.h"
#include "host/files/standardstreams.h"
#include "host/machine/machinefile.h"
#include "host/text/utf8.h"

namespace velhost {

int run(const CheckCommand& command) {
  useSchema(programFolder());
  int status = kAnswered;
  for (const auto& file : command.files) {
    try {
      static_cast<void>(readMachineFile(file));
      writeStandardOutput(visible(machineFileName(file)) + ": ok\n");
    } catch (const JsonSchemaFound&) {
      writeStandardOutput(visible(machineFileName(file)) + ": a JSON Schema, passed over\n");
    } catch (const MachineFileError& error) {
      complain(error.what());
      status = kBadInput;
    }
  }
  return status;
}

}  // namespace velhost
