// SPDX-License-Identifier: Apache-2.0
//
// Queries a machine and keeps all that the plug-in asked and was answered.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/collectors/collectorset.h"
#include "host/collectors/queryresult.h"
#include "host/machine/machine.h"

namespace velhost {

struct RecordOptions {
  CollectorFiles collectors;
  bool redact = false;
};

struct Recording {
  MachineFile machine;  // answers the same query alike
  std::optional<RequestError> error;
  std::vector<std::string> failures;  // a line for each collector that failed besides
};

// Makes one request of the default classes. Throws PluginLoadError.
Recording record(Machine machine, const RecordOptions& options);

}  // namespace velhost
