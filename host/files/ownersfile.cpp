// SPDX-License-Identifier: Apache-2.0
#include "host/files/ownersfile.h"

#include <sys/stat.h>

namespace velhost {

std::optional<std::string> whyRootRefuses(const std::filesystem::path& file, uid_t user) {
  struct stat status {};
  if (user != 0 || ::stat(file.c_str(), &status) != 0) return std::nullopt;
  if ((status.st_mode & (S_IWGRP | S_IWOTH)) == 0) return std::nullopt;
  return file.string() + ": not loaded as root, as others than its owner may write it (chmod go-w)";
}

}  // namespace velhost
