// SPDX-License-Identifier: Apache-2.0
#include "collectors/support/ciminstance.h"

#include <algorithm>

#include "collectors/support/corelog.h"
#include "vel/exception.h"

using namespace NKRXVEL20;

namespace collector {

void logRefusal(const FailureText& failure) {
  logFailure(std::string(failure.text).append(failure.subject));
}

TCIMValueMap pluginContext() {
  return {{TCIMSchemaHelper::kContextName, TCIMValue(TCIMSchemaHelper::kPluginNSPName)}};
}

std::optional<InstanceHandle> createInstance(const NamespaceHandle& ns,
                                             const std::string& className,
                                             const FailureText& failure) {
  try {
    return ns->GetClass(className, pluginContext())->CreateInstance();
  } catch (const TVELException&) {
    logRefusal(failure);
    return std::nullopt;
  }
}

bool setProperty(const InstanceHandle& instance, const std::string& name, const TCIMValue& value,
                 const FailureText& failure) {
  try {
    instance->SetProperty(name, value, {});
    return true;
  } catch (const TVELException&) {
    logRefusal(failure);
    return false;
  }
}

bool setProperties(const InstanceHandle& instance, std::span<const PropertyRow> rows) {
  return std::ranges::all_of(rows, [&](const PropertyRow& row) {
    return setProperty(instance, row.name, row.value, row.failureText);
  });
}

std::vector<InstanceHandle> enumerateInstances(const NamespaceHandle& ns,
                                               const std::string& className,
                                               const TCIMValueMap& context) {
  std::vector<InstanceHandle> instances;
  ns->GetClass(className, pluginContext())
      ->GetInstances(TAddToVectorCallback<ICIMInstance>(instances), true, context);
  return instances;
}

}  // namespace collector
