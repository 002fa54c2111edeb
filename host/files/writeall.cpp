// SPDX-License-Identifier: Apache-2.0
#include "host/files/writeall.h"

#include <cerrno>
#include <system_error>

#include "host/text/inputerror.h"

namespace velhost {
namespace {

// Whoever gave the descriptor may have made it non-blocking.
int waitForRoom(FileCalls& calls, int descriptor) {
  pollfd waited{descriptor, POLLOUT, 0};
  return calls.poll(waited);
}

}  // namespace

void failWrite(const std::filesystem::path& file, int error) {
  throw InputError(file.string() +
                   ": cannot be written: " + std::generic_category().message(error));
}

int writeAll(FileCalls& calls, int descriptor, std::string_view text) {
  while (!text.empty()) {
    ssize_t written = calls.write(descriptor, text);
    if (written > 0) text.remove_prefix(static_cast<std::size_t>(written));
    if (written == -EAGAIN) written = waitForRoom(calls, descriptor);
    if (written == 0) return -EIO;  // a device that takes nothing would never end
    if (written < 0 && written != -EINTR) return static_cast<int>(written);
  }
  return 0;
}

}  // namespace velhost
