// SPDX-License-Identifier: Apache-2.0
//
// Code and schemas that others than their owner may write are not for root.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <optional>
#include <string>

#include "host/files/rights.h"

namespace velhost {

// One line that names the file and the reason, for root and a file that its group or everyone may
// write; nullopt for any other file and user. A file that is not there is nobody's to refuse.
std::optional<std::string> whyRootRefuses(const std::filesystem::path& file,
                                          uid_t user = startedAs());

}  // namespace velhost
