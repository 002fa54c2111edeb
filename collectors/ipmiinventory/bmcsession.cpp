// SPDX-License-Identifier: Apache-2.0
#include "collectors/ipmiinventory/bmcsession.h"

namespace ipmiinventory {

std::optional<Reply> BmcSession::ask(const Request& request) {
  if (silent_) return std::nullopt;
  std::optional<Reply> reply = bmc_->ask(request);
  silent_ = !reply;
  return reply;
}

const std::optional<DeviceId>& BmcSession::deviceId() {
  if (!deviceId_) {
    const auto reply = ask({Command::kGetDeviceId, {}});
    const bool completed = reply && reply->completionCode == kCompleted;
    deviceId_ = completed ? decodeDeviceId(reply->data) : std::nullopt;
  }
  return *deviceId_;
}

void BmcSession::restart() {
  silent_ = false;
  deviceId_.reset();
}

}  // namespace ipmiinventory
