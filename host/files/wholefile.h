// SPDX-License-Identifier: Apache-2.0
//
// Files read whole.
#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>

#include "host/files/filecalls.h"

namespace velhost {

// A file cannot be read; what() says why, without its name.
class FileReadError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

enum class ReadFrom {
  kRegularFile,  // for a name out of a file: nothing that waits, nothing that acts when it is opened
  kFileOrStream,  // for a name that a person gave: a pipe or a terminal too
};

// Throws FileReadError. What is refused for its kind has not been opened, and a file above 64 MiB is
// refused, so that one that never ends cannot fill the memory.
std::string readWholeFile(const std::filesystem::path& file, ReadFrom from,
                          FileCalls& calls = kernelFiles());

// The same for standard input, whatever it is.
std::string readStandardInput(FileCalls& calls = kernelFiles());

}  // namespace velhost
