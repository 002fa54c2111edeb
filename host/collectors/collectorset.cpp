// SPDX-License-Identifier: Apache-2.0
#include "host/collectors/collectorset.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "velhost/schema.h"

namespace velhost {
namespace {

char lowerCase(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

// The collector DeviceInventory is in libdeviceinventory.pi.so: its name tells its file, so that no
// other has to be loaded.
std::string fileOf(std::string name) {
  std::ranges::transform(name, name.begin(), lowerCase);
  return "lib" + name + ".pi.so";
}

}  // namespace

CollectorSet::CollectorSet(CollectorFiles files) : files_(std::move(files)) {
  for (const auto& file : files_.loaded) load(file);
  for (Collector& collector : collectors_) loadedAnyway_.push_back(&collector);
  if (collectors_.empty() && !failures_.empty()) {
    throw NKRXVEL20::host::PluginLoadError(failures_.front());
  }
}

void CollectorSet::restart() {
  for (Collector& collector : collectors_) collector.restart();
}

bool CollectorSet::isThere(const std::string& name) const {
  return !files_.names || files_.names->contains(name);
}

Collector* CollectorSet::loadedByName(const std::string& name) {
  const auto found = std::ranges::find_if(
      collectors_, [&](const Collector& collector) { return collector.identity().name == name; });
  return found == collectors_.end() ? nullptr : &*found;
}

void CollectorSet::load(const std::filesystem::path& file) {
  try {
    collectors_.emplace_back(loader_, file);
  } catch (const std::exception& error) {
    notLoaded_.push_back(file);
    failures_.emplace_back(error.what());
  }
}

void CollectorSet::loadAll() {
  for (const auto& file : std::exchange(files_.onDemand, {})) load(file);
}

Collector* CollectorSet::named(const std::string& name) {
  Collector* const found = loadedByName(name);
  auto& files = files_.onDemand;
  const auto file = std::ranges::find_if(
      files, [&](const auto& candidate) { return candidate.filename() == fileOf(name); });
  if (found != nullptr || file == files.end() || !isThere(name)) return found;
  load(*file);
  files.erase(file);
  return loadedByName(name);
}

std::vector<Collector*> CollectorSet::serving(const std::string& className) {
  const auto* const cimClass = NKRXVEL20::host::findClass(className);
  if (Collector* provider = named(std::string(cimClass->provider))) return {provider};
  if (!loadedAnyway_.empty()) return loadedAnyway_;
  Collector* const firmware = named(kFirmwareCollector);
  return firmware == nullptr ? std::vector<Collector*>() : std::vector{firmware};
}

}  // namespace velhost
