// SPDX-License-Identifier: Apache-2.0
#include "tests/fuzz/collectorsinside.h"

#include <boost/make_shared.hpp>
#include <map>
#include <string>
#include <utility>

#include "collectors/ipmiinventory/ipmiinventory.h"
#include "collectors/ipmiinventory/spbmc.h"
#include "collectors/smbiosinventory/smbiosinventory.h"
#include "plugin/spfirmwarevpd.h"
#include "vel/pluginmanager.h"
#include "vel/rootobject.h"
#include "velhost/pluginloader.h"
#include "velhost/rootobject.h"

namespace {

constexpr char kFirmware[] = "libspfirmwarevpd.pi.so";
constexpr char kIpmi[] = "libipmiinventory.pi.so";
constexpr char kSmbios[] = "libsmbiosinventory.pi.so";

}  // namespace

namespace NKRXVEL20::host {
namespace {

template <class Plugin>
class PluginInside : public LoadedPlugin {
 public:
  explicit PluginInside(Plugin* plugin) : plugin_(plugin) {}
  ~PluginInside() override {
    plugin_->DeInit();
    plugin_->PrepareForUnload();  // deletes it
  }
  PluginInside(const PluginInside&) = delete;
  PluginInside& operator=(const PluginInside&) = delete;

  IPluginCallbacks& callbacks() override { return *plugin_; }
  IPluginBasicQueryCallbacks& query() override { return *plugin_; }

 private:
  Plugin* plugin_;
};

template <class Plugin>
std::unique_ptr<LoadedPlugin> inside(Plugin* plugin) {
  return std::make_unique<PluginInside<Plugin>>(plugin);
}

}  // namespace

PluginLoader::PluginLoader() { setPluginManager(boost::make_shared<TPluginManagerNamespace>()); }

PluginLoader::~PluginLoader() { setPluginManager(nullptr); }

std::unique_ptr<LoadedPlugin> PluginLoader::load(const std::filesystem::path& file) {
  if (file == kFirmware) return inside(new SPFirmwareVpd());
  if (file == kIpmi) return inside(new ipmiinventory::IpmiInventory(ipmiinventory::makeSpBmc()));
  if (file == kSmbios) {
    return inside(new collector::Companion(smbiosinventory::kName, smbiosinventory::kVersion,
                                           smbiosinventory::servedClasses()));
  }
  throw PluginLoadError(file.string() + ": is not inside");
}

}  // namespace NKRXVEL20::host

namespace fuzz {

velhost::CollectorFiles collectorsOf(const velhost::MachineFile& machine) {
  velhost::CollectorFiles files{.loaded = {kFirmware}, .onDemand = {kIpmi, kSmbios}};
  files.names = {machine.collectors.begin(), machine.collectors.end()};
  return files;
}

}  // namespace fuzz
