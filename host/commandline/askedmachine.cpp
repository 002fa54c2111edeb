// SPDX-License-Identifier: Apache-2.0
#include "host/commandline/askedmachine.h"

#include <algorithm>
#include <filesystem>
#include <iterator>

#include "host/commandline/complaint.h"
#include "host/files/rights.h"
#include "host/files/standardstreams.h"
#include "host/machine/refusedsource.h"

namespace velhost {

void giveUpRoot(const CollectorFiles& collectors, const std::unique_ptr<OutputFile>& output) {
  if (output) return;
  std::vector<std::filesystem::path> files = collectors.loaded;
  std::ranges::copy(collectors.onDemand, std::back_inserter(files));
  giveUpRoot(files);
}

void print(const std::unique_ptr<OutputFile>& file, std::string_view text) {
  if (file) {
    file->write(text);
  } else {
    writeStandardOutput(text);
  }
}

void Unreadable::tellRefused() const {
  for (const std::string& line : refused_) complain(line);
}

void Unreadable::tellSilence() const {
  if (isSilent()) complain(silenceLine(**silence_));
}

ExitStatus Unreadable::status(bool answered) const {
  if (!answered) return kRefused;
  return isAny() ? kUnreadable : kAnswered;
}

}  // namespace velhost
