// SPDX-License-Identifier: Apache-2.0
#include "host/commandline/classnames.h"

#include <filesystem>
#include <system_error>

#include "host/machine/schemanames.h"
#include "host/text/inputerror.h"

namespace velhost {
namespace {

// Who names a file forgot the option before it; who names no class by a hair gets the hint.
std::string whatWasMeant(const std::string& name) {
  std::error_code ignored;
  const std::filesystem::file_status status = std::filesystem::status(name, ignored);
  if (std::filesystem::exists(status) && !std::filesystem::is_directory(status)) {
    return "; a machine is asked with --machine " + name;
  }
  const std::string meant = classSuggestion(name);
  return meant.empty() ? "; velhost classes lists them" : meant;
}

}  // namespace

const NKRXVEL20::host::ClassSchema* schemaClass(const std::string& name) {
  const auto* const found = NKRXVEL20::host::findClass(name);
  if (found == nullptr) throw InputError("\"" + name + "\" is no class" + whatWasMeant(name));
  return found;
}

}  // namespace velhost
