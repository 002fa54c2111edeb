// SPDX-License-Identifier: Apache-2.0
#include "tests/support/pluginonmachine.h"

#include <boost/make_shared.hpp>
#include <optional>
#include <utility>

#include "host/machine/machine.h"
#include "tests/support/firmwareclasses.h"
#include "velhost/rootobject.h"
#include "velhost/smbios.h"
#include "velhost/spdriver.h"

namespace velhost {

namespace host = NKRXVEL20::host;

PluginOnMachine::PluginOnMachine(const std::filesystem::path& machineFile) {
  Machine machine = machineOfFile(machineFile);
  namespace_ = boost::make_shared<host::CimNamespace>(machine.missingClasses, machine.faults);
  for (const Companion& companion : machine.companions) {
    namespace_->addCompanion(companion.className, companion.properties);
  }
  for (const char* const name : kFirmwareClasses)
    classes_.push_back(namespace_->requestClass(name));
  host::setMachineType(std::move(machine.machineType));
  host::setSmbiosTable(std::move(machine.smbios));
  host::setSPLibrary(std::move(machine.sp), host::Traffic::kForgotten);
}

PluginOnMachine::~PluginOnMachine() {
  plugin_.reset();
  host::setSPLibrary(nullptr);
  host::setSmbiosTable(std::nullopt);
  host::setMachineType(std::nullopt);
}

void PluginOnMachine::load() {
  plugin_.reset();
  plugin_ = loader_.load(PLUGIN_FILE);
}

}  // namespace velhost
