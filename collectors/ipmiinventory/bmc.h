// SPDX-License-Identifier: Apache-2.0
//
// A management controller that can be asked, and the commands that are asked of it.
#pragma once

#include <optional>
#include <string>

#include "collectors/ipmiinventory/bytes.h"

namespace ipmiinventory {

// IPMI 2.0, appendix G.
enum class Command : std::uint16_t {  // network function, command
  kGetDeviceId = 0x0601,
  kGetDeviceGuid = 0x0608,
  kGetFruInventoryAreaInfo = 0x0A10,
  kReadFruData = 0x0A11,
  kReserveSdrRepository = 0x0A22,
  kGetSdr = 0x0A23,
};

// Completion codes (IPMI 2.0, table 5-2).
inline constexpr std::uint8_t kCompleted = 0x00;
inline constexpr std::uint8_t kReservationLost = 0xC5;
inline constexpr std::uint8_t kNotPresent = 0xCB;
inline constexpr std::uint8_t kUnspecifiedError = 0xFF;

// The request was well but for its length, or that of its reply: less may be had.
inline bool isTooMuch(std::uint8_t code) { return code == 0xC7 || code == 0xC8 || code == 0xCA; }

struct Request {
  Command command;
  Bytes data;
  std::uint8_t lun = 0;

  bool operator==(const Request&) const = default;
};

struct Reply {
  std::uint8_t completionCode = kCompleted;
  Bytes data;

  bool operator==(const Reply&) const = default;
};

class Bmc {
 public:
  Bmc() = default;
  Bmc(const Bmc&) = delete;
  Bmc& operator=(const Bmc&) = delete;
  virtual ~Bmc() = default;

  // nullopt: no answer.
  virtual std::optional<Reply> ask(const Request& request) = 0;
};

// "completion code C9h"
std::string completionText(std::uint8_t code);

}  // namespace ipmiinventory
