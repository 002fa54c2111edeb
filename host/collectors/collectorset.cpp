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

std::string providerOf(const std::string& className) {
  return std::string(NKRXVEL20::host::findClass(className)->provider);
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

bool CollectorSet::load(const std::filesystem::path& file) {
  try {
    collectors_.emplace_back(loader_, file);
    return true;
  } catch (const std::exception& error) {
    notLoaded_.push_back({file, error.what()});
    failures_.emplace_back(error.what());
    return false;
  }
}

Collector* CollectorSet::loadedFrom(const std::filesystem::path& file, const std::string& name) {
  if (!load(file)) return nullptr;
  Collector& collector = collectors_.back();
  if (collector.identity().name == name) return &collector;
  const std::string reason = file.string() + ": it is looked for as " + name +
                             " and calls itself " + collector.identity().name;
  misnamed_.push_back({file, reason});
  failures_.push_back(reason);
  return nullptr;
}

const std::string* CollectorSet::whyNotLoaded(const std::string& name) const {
  for (const auto* const files : {&notLoaded_, &misnamed_}) {
    const auto found = std::ranges::find_if(*files, [&](const NotLoaded& candidate) {
      return candidate.file.filename() == fileOf(name);
    });
    if (found != files->end()) return &found->reason;
  }
  return nullptr;
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
  const std::filesystem::path path = *file;
  files.erase(file);
  return loadedFrom(path, name);
}

std::vector<Collector*> CollectorSet::serving(const std::string& className) {
  const std::string provider = providerOf(className);
  if (Collector* collector = named(provider)) return {collector};
  if (!loadedAnyway_.empty() || !provider.empty()) return loadedAnyway_;
  Collector* const firmware = named(kFirmwareCollector);
  return firmware == nullptr ? std::vector<Collector*>() : std::vector{firmware};
}

bool CollectorSet::isLeftOut(const std::string& className) {
  const std::string provider = providerOf(className);
  return files_.names && !provider.empty() && loadedByName(provider) == nullptr;
}

std::string CollectorSet::whyNotServed(const std::string& className) const {
  const std::string provider = providerOf(className);
  std::string text = "no collector serves " + className;
  if (provider.empty()) return text;
  if (!isThere(provider)) return text + ": the machine's file does not list " + provider;
  return text + ": " + provider + " (" + fileOf(provider) + ") is missing or does not load";
}

}  // namespace velhost
