// SPDX-License-Identifier: Apache-2.0
//
// Files written whole or not at all.
#pragma once

#include <filesystem>
#include <string_view>

#include "host/files/filecalls.h"
#include "host/files/outputtarget.h"

namespace velhost {

struct FileRules {
  bool isPrivate = false;  // for its owner's eyes only, whatever the file there before was
  bool mayReplace = true;  // takes the place of a file that is there
};

// A regular file, or one that is not there yet, is replaced by a new one that is whole when it gets
// the name. What is something else (a terminal, a pipe, a device) and what somebody has open already
// (/dev/stdout, /dev/fd/3) is written as it is.
class OutputFile {
 public:
  // Throws InputError when no file can be written there, or may not be: see FileRules. A file to be
  // replaced is not touched yet.
  explicit OutputFile(std::filesystem::path file, FileRules rules = {},
                      FileCalls& calls = kernelFiles());

  // Throws InputError, and leaves a file that was there before as it was. To be called once.
  void write(std::string_view text);

 private:
  void expectRoom() const;
  void open();
  void replace(std::string_view text) const;
  int orFail(int result) const;

  FileCalls& calls_;
  std::filesystem::path file_;
  FileRules rules_;
  OutputTarget target_;
  Descriptor open_;  // what is written as it is
};

}  // namespace velhost
