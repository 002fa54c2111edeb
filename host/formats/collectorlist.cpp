// SPDX-License-Identifier: Apache-2.0
#include "host/formats/collectorlist.h"

#include "host/text/textlayout.h"
#include "host/text/utf8.h"
#include "velhost/schema.h"

namespace velhost {
namespace {

std::string head(const Collector& collector, const Screen& screen) {
  const PluginIdentity& identity = collector.identity();
  return heading(visible(identity.name),
                 ' ' + visible(identity.version) + " (interface " +
                     visible(identity.interfaceVersion) + "), loaded from " +
                     visible(collector.file().string()),
                 screen);
}

std::string classLines(const std::string& provider, const Screen& screen) {
  std::string lines;
  for (const auto& cimClass : NKRXVEL20::host::schema()) {
    if (cimClass.provider != provider || cimClass.isAbstract) continue;
    lines += paragraph(cimClass.name, 2, screen.width);
  }
  if (!lines.empty()) return lines;
  return paragraph("no class of the schema names it as its Provider", 2, screen.width);
}

}  // namespace

std::string collectorList(const CollectorSet& collectors, const Screen& screen) {
  std::string text;
  for (const Collector& collector : collectors.loaded()) {
    text += head(collector, screen) + classLines(collector.identity().name, screen);
  }
  for (const auto& [file, reason] : collectors.notLoaded()) {
    text += paragraph("not loaded: " + visible(file.string()), 0, screen.width);
  }
  return text;
}

}  // namespace velhost
