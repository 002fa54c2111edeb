// SPDX-License-Identifier: Apache-2.0
#include "tests/spyplatform/spyfixture.h"

#include <algorithm>
#include <utility>

#include "tests/spyplatform/pluginmanager.h"

namespace spyplatform {

SpyTest::SpyTest() {
  reset();
  installPluginManager();
  ns = makeNamespace();
}

SpyTest::~SpyTest() = default;

void SpyTest::load() {
  plugin = std::make_unique<SPFirmwareVpd>();
  plugin->Init();
}

void SpyTest::query(const std::vector<std::string>& classNames) {
  std::vector<boost::shared_ptr<NKRXVEL20::ICIMClass>> classes;
  std::ranges::transform(classNames, std::back_inserter(classes), makeClass);
  NKRXVEL20::IPluginBasicQueryCallbacks& entry = *plugin;
  entry.GetData(ns, classes);
}

Trace SpyTest::takeTrace() { return std::exchange(state().trace, {}); }

NKRXVEL20::SPLibrary* SpyTest::sp() {
  const Muted muted;
  return NKRXVEL20::SPLibrary::GetSplibraryInstance(0);
}

}  // namespace spyplatform
