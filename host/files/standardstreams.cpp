// SPDX-License-Identifier: Apache-2.0
#include "host/files/standardstreams.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>

#include "host/files/interruption.h"
#include "host/files/statusline.h"
#include "host/files/writeall.h"
#include "host/text/inputerror.h"

namespace velhost {
namespace {

bool isClosed(FileCalls& calls, int stream) {
  struct stat ignored {};
  return calls.fstatat(stream, "", ignored, AT_EMPTY_PATH) == -EBADF;
}

}  // namespace

void occupyStandardStreams(FileCalls& calls) {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (!isClosed(calls, stream)) continue;
    // The lowest free number is this one. The root is always there, and with O_PATH it cannot be
    // written; /dev/null would swallow the answer when it is opened again as /dev/stdout.
    const int file = calls.openat(AT_FDCWD, "/", O_PATH | O_CLOEXEC, 0);
    if (file < 0) {
      throw InputError("descriptor " + std::to_string(stream) +
                       ": cannot be occupied: " + std::generic_category().message(-file));
    }
  }
}

void writeStandardOutput(std::string_view text, FileCalls& calls) {
  const StatusLineHidden hidden;
  if (!text.empty()) noteWritten();
  const int error = writeAll(calls, STDOUT_FILENO, text);
  if (error < 0) failWrite("standard output", -error);
}

void writeStandardError(std::string_view text, FileCalls& calls) {
  const StatusLineHidden hidden;
  static_cast<void>(writeAll(calls, STDERR_FILENO, text));
}

}  // namespace velhost
