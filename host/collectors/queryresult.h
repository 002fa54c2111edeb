// SPDX-License-Identifier: Apache-2.0
//
// What a query brought to light, before it is put into a format.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/reasons/classstate.h"
#include "velhost/cimnamespace.h"
#include "velhost/log.h"
#include "velhost/spdriver.h"

namespace velhost {

struct PluginIdentity {
  std::string name;
  std::string version;
  std::string interfaceVersion;
  int type = 0;
};

// The exception that ended a request.
struct RequestError {
  std::string exception;             // "TVELException" or the C++ type's name
  std::optional<std::int32_t> code;  // of a TVELException
  std::string what;
  bool wasAsked = true;  // false: nobody was, the host refuses
};

struct QueryResult {
  std::vector<std::string> requested;
  std::vector<NKRXVEL20::host::PublishedInstance> instances;
  std::vector<ClassState> states;          // one for each requested class, in order
  std::vector<CollectorState> collectors;  // those that were asked, in the order of the first time
  bool isCutOff = false;  // the time was over before all was asked, and a class lacks something
  std::optional<RequestError> error;  // the first of those that were asked for their classes
  std::vector<std::string> failures;  // a line for each collector that failed besides
  std::vector<NKRXVEL20::host::LogEntry> coreLog;  // kept where it is asked for, as the two below
  std::vector<NKRXVEL20::host::LogEntry> failureLog;
  std::vector<NKRXVEL20::host::TrafficEntry> traffic;
};

// What the formats say of the machine and the plug-in.
struct QueryContext {
  std::string machineSource;
  std::string machineName;
  PluginIdentity plugin;
};

}  // namespace velhost
