// SPDX-License-Identifier: Apache-2.0
//
// Where the name of an output file leads.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "host/files/filecalls.h"

namespace velhost {

struct OutputTarget {
  Descriptor folder;                  // opened with O_PATH
  std::string name;                   // in the folder
  std::optional<struct stat> status;  // none when nothing is there
  bool isLinked = false;              // a symbolic link led here
  bool isOpenFile = false;  // a link of /proc/self/fd, as /dev/stdout is: what it leads to is open
};

// Follows symbolic links by hand, so that the folder in which the file is to be replaced is known.
// In a folder that everyone may write to and where nobody may remove another's files (/tmp), a link
// is followed only when it belongs to us or to the folder's owner, as the kernel has it with
// fs.protected_symlinks, and so is a pipe, a device or a socket there: root's output is not
// for whoever guesses its name. Throws InputError.
OutputTarget findOutputTarget(FileCalls& calls, const std::filesystem::path& file);

}  // namespace velhost
