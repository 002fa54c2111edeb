// SPDX-License-Identifier: Apache-2.0
//
// The BMC behind the kernel's IPMI device (linux/ipmi.h).
#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "systemcalls.h"

namespace NKRXVEL20::host {

// A BMC that never answers must not hang whoever asks it.
inline constexpr std::chrono::seconds kIpmiTimeLimit{5};

struct IpmiRequest {
  unsigned char networkFunction = 0;
  unsigned char lun = 0;
  unsigned char command = 0;
  std::span<const unsigned char> data;
};

// An open device; closed at the end.
class IpmiDevice {
 public:
  IpmiDevice(SystemCalls& calls, int file) : calls_(calls), file_(file) {}
  ~IpmiDevice() { calls_.close(file_); }
  IpmiDevice(const IpmiDevice&) = delete;
  IpmiDevice& operator=(const IpmiDevice&) = delete;

  using Deadline = std::chrono::steady_clock::time_point;

  // The BMC's answer: completion code and data, cut to `room` bytes. nullopt: the request could
  // not be sent, the device failed, or no answer came within kIpmiTimeLimit, or before `latest`.
  std::optional<std::vector<unsigned char>> ask(const IpmiRequest& request, std::size_t room,
                                                std::optional<Deadline> latest = std::nullopt);

  // How long the last request was waited for, when the BMC owes the answer: none came, the device
  // failed, or the kernel's driver gave up and answered in the BMC's place. nullopt otherwise, also
  // for a request that the driver found wrong, and for one that was given up at `latest`.
  std::optional<std::chrono::milliseconds> waitedInVain() const { return waitedInVain_; }

 private:
  enum class Received { kReply, kNothingOfOurs, kFailure };

  int retried(unsigned long operation, void* argument, Deadline deadline);
  int send(const IpmiRequest& request, Deadline deadline);
  std::optional<std::vector<unsigned char>> awaitReply(std::size_t room, Deadline deadline);
  bool waitForMessage(Deadline deadline);
  Received receive(std::vector<unsigned char>& reply, Deadline deadline);

  SystemCalls& calls_;
  int file_;
  long sequence_ = 0;  // of the last request
  std::optional<std::chrono::milliseconds> waitedInVain_;
};

struct IpmiOpening {
  std::unique_ptr<IpmiDevice> device;  // null: no device can be opened
  std::string name;                    // of the device
  std::string refused;  // without a device: the one that exists but needs another user's rights
};

// Opens the first of the names that the kernel's device goes by.
IpmiOpening openIpmiDevice(SystemCalls& calls);

}  // namespace NKRXVEL20::host
