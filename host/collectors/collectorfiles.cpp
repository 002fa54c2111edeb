// SPDX-License-Identifier: Apache-2.0
#include "host/collectors/collectorfiles.h"

#include <algorithm>
#include <initializer_list>
#include <system_error>

#include "host/text/inputerror.h"

namespace velhost {
namespace {

constexpr char kFirmwareCollectorFile[] = "libspfirmwarevpd.pi.so";
constexpr char kPluginEnd[] = ".pi.so";

}  // namespace

std::filesystem::path programFolder() {
  return std::filesystem::read_symlink("/proc/self/exe").parent_path();
}

std::filesystem::path collectorsFolder(const std::filesystem::path& programFolder) {
  const std::filesystem::path parent = programFolder.parent_path();
  for (const auto& folder : {parent / VELHOST_LIBRARY_FOLDER, parent / "lib", programFolder}) {
    std::error_code ignored;
    if (std::filesystem::exists(folder / kFirmwareCollectorFile, ignored)) return folder;
  }
  throw InputError(std::string(kFirmwareCollectorFile) + " is not beside " +
                   programFolder.string() + "; name a plug-in with --plugin FILE");
}

std::vector<std::filesystem::path> pluginsIn(const std::filesystem::path& folder) {
  std::vector<std::filesystem::path> plugins;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    if (entry.path().filename().string().ends_with(kPluginEnd)) plugins.push_back(entry.path());
  }
  std::ranges::sort(plugins);
  return plugins;
}

CollectorFiles collectorFiles(const std::vector<std::filesystem::path>& named,
                              const Machine& machine, const std::filesystem::path& programFolder) {
  if (!named.empty()) return {.loaded = named, .onDemand = {}};
  const auto folder = collectorsFolder(programFolder);
  CollectorFiles files{.loaded = {}, .onDemand = pluginsIn(folder)};
  if (machine.source == "live") return files;
  files.loaded = {folder / kFirmwareCollectorFile};
  std::erase(files.onDemand, files.loaded.front());
  files.names = {machine.collectors.begin(), machine.collectors.end()};
  return files;
}

}  // namespace velhost
