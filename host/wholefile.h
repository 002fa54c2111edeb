// SPDX-License-Identifier: Apache-2.0
//
// Files read and written whole.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace velhost {

// Throws std::system_error, whose code says why the file cannot be read. A file above 64 MiB is
// refused (std::errc::file_too_large), so that a device that never ends cannot fill the memory.
std::string readWholeFile(const std::filesystem::path& file);

struct FileRules {
  bool isPrivate = false;  // for its owner's eyes only, whatever the file there before was
  bool mayReplace = true;  // takes the place of a file that is there
};

// A file that is written whole or not at all: the text goes to a new file beside it, which takes
// its place at the end. What is no regular file (a terminal, a pipe, /dev/stdout) is written as it is.
class OutputFile {
 public:
  // Throws InputError when no file can be written there, or may not be: see FileRules.
  explicit OutputFile(std::filesystem::path file, FileRules rules = {});
  ~OutputFile();

  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  // Throws InputError, and leaves a file that was there before as it was.
  void write(std::string_view text);

 private:
  void takePlace();

  std::filesystem::path target_;
  std::filesystem::path written_;  // the new file, or the target itself
  FileRules rules_;
  int descriptor_ = -1;
};

}  // namespace velhost
