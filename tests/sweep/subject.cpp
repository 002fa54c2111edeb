// SPDX-License-Identifier: Apache-2.0
#include "tests/sweep/subject.h"

#include <boost/make_shared.hpp>
#include <new>

#include "plugin/spfirmwarevpd.h"
#include "tests/support/firmwareclasses.h"
#include "tests/sweep/allocations.h"
#include "tests/sweep/watch.h"
#include "vel/exception.h"
#include "velhost/cimnamespace.h"
#include "velhost/rootobject.h"
#include "velhost/smbios.h"

namespace sweep {

using namespace NKRXVEL20;

namespace {

// The name of what comes out of the request; empty when nothing does.
template <class Request>
std::string exceptionOf(const Request& request) {
  try {
    request();
    return "";
  } catch (const TVELException& error) {
    return "TVELException " + std::to_string(error.GetCode());
  } catch (const std::bad_alloc&) {
    return "bad_alloc";
  } catch (const std::runtime_error& error) {
    return std::string("runtime_error ") + error.what();
  } catch (const int number) {
    return "int " + std::to_string(number);
  }
}

}  // namespace

Subject::Subject() : plugin_(std::make_unique<SPFirmwareVpd>()) { plugin_->Init(); }
Subject::~Subject() = default;

void Subject::knowFruSource(bool exists) {
  plugin_->ipmiFruProbed = true;
  plugin_->ipmiFruExists = exists;
}

Trace Subject::ask(const velhost::MachineFile& machine, Fault fault, AllocationFault allocation) {
  const auto target =
      boost::make_shared<host::CimNamespace>(machine.missingClasses, std::vector<host::Fault>{});
  for (const auto& row : machine.instances) target->addCompanion(row.className, row.properties);
  host::setMachineType(machine.machineType);
  host::setSmbiosTable(machine.smbios);
  std::vector<boost::shared_ptr<ICIMClass>> classes;
  for (const char* name : kFirmwareClasses) classes.push_back(watched(target->requestClass(name)));
  Watch watch(fault);
  watch.driver = watched(host::makeSimulatedSP(machine.sp));
  const auto ns = watched(target);
  const std::string exception = exceptionOf([&] {
    const PluginWork work(allocation.nth, allocation.fromThenOn);
    plugin_->GetData(ns, classes);
  });
  if (!exception.empty()) watch.trace.push_back(thrown(exception));
  return std::move(watch.trace);
}

velhost::MachineFile machineOf(const std::string& file) {
  velhost::MachineFile machine = velhost::readMachineFile(file);
  machine.faults.clear();
  machine.sp.latency = {};
  return machine;
}

}  // namespace sweep
