// SPDX-License-Identifier: Apache-2.0
#include "host/defaultplugin.h"

#include <initializer_list>
#include <system_error>

#include "host/inputerror.h"

namespace velhost {
namespace {

constexpr char kPluginName[] = "libspfirmwarevpd.pi.so";

}  // namespace

std::filesystem::path defaultPlugin(const std::filesystem::path& programFolder) {
  const std::filesystem::path parent = programFolder.parent_path();
  for (const auto& folder : {parent / VELHOST_LIBRARY_FOLDER, parent / "lib", programFolder}) {
    std::error_code ignored;
    if (std::filesystem::exists(folder / kPluginName, ignored)) return folder / kPluginName;
  }
  throw InputError(std::string(kPluginName) + " is not beside " + programFolder.string() +
                   "; name a plug-in with --plugin FILE");
}

std::filesystem::path programFolder() {
  return std::filesystem::read_symlink("/proc/self/exe").parent_path();
}

}  // namespace velhost
