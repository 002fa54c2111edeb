// SPDX-License-Identifier: Apache-2.0
//
// A BMC from one start of the collector to the next. The first question that it leaves without an
// answer is the last one: whoever waits for a BMC in vain waits once, not once a command.
#pragma once

#include <memory>

#include "collectors/ipmiinventory/bmc.h"
#include "collectors/ipmiinventory/deviceid.h"

namespace ipmiinventory {

class BmcSession : public Bmc {
 public:
  explicit BmcSession(std::unique_ptr<Bmc> bmc) : bmc_(std::move(bmc)) {}

  std::optional<Reply> ask(const Request& request) override;

  // Asked for once. nullopt: no answer, a refusal, or too short a reply.
  const std::optional<DeviceId>& deviceId();

  bool isSilent() const { return silent_; }

  void restart();

 private:
  std::unique_ptr<Bmc> bmc_;
  bool silent_ = false;
  std::optional<std::optional<DeviceId>> deviceId_;
};

}  // namespace ipmiinventory
