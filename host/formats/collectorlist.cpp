// SPDX-License-Identifier: Apache-2.0
#include "host/formats/collectorlist.h"

#include "host/text/utf8.h"
#include "velhost/schema.h"

namespace velhost {
namespace {

std::string headLine(const Collector& collector) {
  const PluginIdentity& identity = collector.identity();
  return visible(identity.name) + ' ' + visible(identity.version) + " (interface " +
         visible(identity.interfaceVersion) + "), loaded from " +
         visible(collector.file().string()) + '\n';
}

std::string classLines(const std::string& provider) {
  std::string lines;
  for (const auto& cimClass : NKRXVEL20::host::schema()) {
    if (cimClass.provider != provider || cimClass.isAbstract) continue;
    lines += "  " + std::string(cimClass.name) + '\n';
  }
  return lines.empty() ? "  no class of the schema names it as its Provider\n" : lines;
}

}  // namespace

std::string collectorList(const CollectorSet& collectors) {
  std::string text;
  for (const Collector& collector : collectors.loaded()) {
    text += headLine(collector) + classLines(collector.identity().name);
  }
  for (const auto& [file, reason] : collectors.notLoaded()) {
    text += "not loaded: " + visible(file.string()) + '\n';
  }
  return text;
}

}  // namespace velhost
