// SPDX-License-Identifier: Apache-2.0
//
// The plug-in's object, asked on a machine for all its classes.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "host/machine/machinefile.h"
#include "tests/sweep/fault.h"
#include "tests/sweep/trace.h"
#include "velhost/pluginloader.h"

class SPFirmwareVpd;

namespace sweep {

struct AllocationFault {
  unsigned nth = 0;  // 0: none
  bool fromThenOn = false;
};

class Subject {
 public:
  Subject();  // Init has run
  ~Subject();
  Subject(const Subject&) = delete;
  Subject& operator=(const Subject&) = delete;

  // As after a probe for an IPMI FRU source that found one, or none.
  void knowFruSource(bool exists);

  // One request, on the machine as it is when it is switched on.
  Trace ask(const velhost::MachineFile& machine, Fault fault = {}, AllocationFault allocation = {});

 private:
  NKRXVEL20::host::PluginLoader loader_;
  std::unique_ptr<SPFirmwareVpd> plugin_;
};

// The machine of a file, without the faults that the file has of its own.
velhost::MachineFile machineOf(const std::string& file);

}  // namespace sweep
