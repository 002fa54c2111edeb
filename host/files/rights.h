// SPDX-License-Identifier: Apache-2.0
//
// Root's rights, for as long as they are needed: what only root may open is opened first, and the bytes
// of firmware and of files are read without them.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <span>

namespace velhost {

// The user that the program was started as, also behind giveUpRoot().
uid_t startedAs() noexcept;

// Makes the process nobody's for good: the user and group 65534, no other groups, no way back through
// a program with set-id bits. Not where another user than root started it, where the system does not
// let it, nor where nobody could not read one of the files: those are opened later.
// True when the process is nobody's.
bool giveUpRoot(std::span<const std::filesystem::path> readLater);

}  // namespace velhost
