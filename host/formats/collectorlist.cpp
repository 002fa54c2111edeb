// SPDX-License-Identifier: Apache-2.0
#include "host/formats/collectorlist.h"

#include "host/text/utf8.h"
#include "velhost/schema.h"

namespace velhost {
namespace {

std::string headLine(const Collector& collector) {
  const PluginIdentity& identity = collector.identity();
  return visible(identity.name) + ' ' + visible(identity.version) + " (interface " +
         visible(identity.interfaceVersion) + "), " + visible(collector.file().string()) + '\n';
}

}  // namespace

std::string collectorList(const CollectorSet& collectors) {
  std::string text;
  for (const Collector& collector : collectors.loaded()) {
    text += headLine(collector);
    for (const auto& cimClass : NKRXVEL20::host::schema()) {
      if (cimClass.provider != collector.identity().name || cimClass.isAbstract) continue;
      text += "  " + std::string(cimClass.name) + '\n';
    }
  }
  return text;
}

}  // namespace velhost
