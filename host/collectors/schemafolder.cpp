// SPDX-License-Identifier: Apache-2.0
#include "host/collectors/schemafolder.h"

#include <initializer_list>
#include <system_error>

#include "host/files/ownersfile.h"
#include "host/text/inputerror.h"
#include "velhost/schema.h"

namespace velhost {

std::filesystem::path schemaFolder(const std::filesystem::path& programFolder) {
  const std::filesystem::path parent = programFolder.parent_path();
  for (const auto& data : {parent / VELHOST_DATA_FOLDER, parent / "share"}) {
    std::error_code ignored;
    auto folder = data / "vel" / "schema";
    if (std::filesystem::is_directory(folder, ignored)) return folder;
  }
  throw InputError("the schema is not beside " + programFolder.string() + ": there is no " +
                   (parent / VELHOST_DATA_FOLDER / "vel" / "schema").string());
}

void useSchema(const std::filesystem::path& programFolder) {
  const auto folder = schemaFolder(programFolder);
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    if (const auto reason = whyRootRefuses(entry.path())) throw InputError(*reason);
  }
  try {
    NKRXVEL20::host::setSchema(NKRXVEL20::host::readSchema(folder));
  } catch (const NKRXVEL20::host::SchemaError& error) {
    throw InputError(error.what());
  }
}

}  // namespace velhost
