// SPDX-License-Identifier: Apache-2.0
#include "collectors/support/companion.h"

#include <utility>

#include "collectors/support/plugin.h"

using namespace NKRXVEL20;

namespace collector {

Companion::Companion(std::string name, std::string version, std::map<std::string, Collect> classes)
    : name_(std::move(name)), version_(std::move(version)), classes_(std::move(classes)) {
  registerPlugin(this);
}

Companion::~Companion() = default;

void Companion::PrepareForUnload() {
  delete this;  // NOLINT(cppcoreguidelines-owning-memory): nobody else owns it
}

void Companion::Init() { collected_.clear(); }

void Companion::GetData(boost::shared_ptr<ICIMNamespace> /*ns*/,
                        std::vector<boost::shared_ptr<ICIMClass>>& classes) {
  for (const auto& cimClass : classes) {
    const std::string className = cimClass->GetName({});
    for (const auto& instance : instancesOf(*cimClass, className)) instance->AddToClass({});
  }
}

const std::vector<InstanceHandle>& Companion::instancesOf(ICIMClass& cimClass,
                                                          const std::string& className) {
  const auto known = collected_.find(className);
  if (known != collected_.end()) return known->second;
  const auto served = classes_.find(className);
  if (served == classes_.end()) refuseClass(className);
  return collected_[className] = served->second([&] { return cimClass.CreateInstance(); });
}

}  // namespace collector
