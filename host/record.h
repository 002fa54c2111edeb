// SPDX-License-Identifier: Apache-2.0
//
// Queries a machine and keeps all that the plug-in asked and was answered.
#pragma once

#include <filesystem>
#include <optional>

#include "host/machine.h"
#include "host/queryresult.h"

namespace velhost {

struct RecordOptions {
  std::filesystem::path plugin;
  bool redact = false;
};

struct Recording {
  MachineFile machine;  // answers the same query alike
  std::optional<RequestError> error;
};

// Makes one request of the default classes. Throws PluginLoadError.
Recording record(Machine machine, const RecordOptions& options);

}  // namespace velhost
