// SPDX-License-Identifier: Apache-2.0
//
// Which service processor the SP driver speaks to, and what was said.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "vel/export.h"
#include "vel/splibrary.h"
#include "velhost/commandtime.h"

namespace NKRXVEL20::host {

using Bytes = std::vector<unsigned char>;

// One answer of a simulated SP: bytes, or a send that fails.
struct SimulatedReply {
  bool fails = false;
  Bytes bytes;                         // cut to the caller's buffer
  std::optional<std::int32_t> length;  // reported instead of the true one
};

// Replies come in turn, the last one for ever after; there is at least one. The first entry that
// matches a command answers it; a command that no entry matches fails.
struct DotCommandEntry {
  int sp = 0;
  Bytes command;
  std::optional<Bytes> data;  // nullopt: whatever the data
  std::vector<SimulatedReply> replies;
};

struct TamberCommandEntry {
  Bytes command;
  std::optional<Bytes> data;
  std::vector<SimulatedReply> replies;  // each with its 3-byte header
};

struct IpmiCommandEntry {
  Bytes request;  // the request record begins with these bytes
  std::vector<SimulatedReply> replies;
};

enum class SPKind { kNone, kDotCommand, kTamber };

// A machine's service processors as a machine file describes them.
struct SimulatedSP {
  SPKind kind = SPKind::kNone;
  bool answers = true;
  std::int32_t count = 0;
  std::int32_t bmcNodes = 0;
  bool bmc = false;
  bool ipmiDrivers = false;
  bool integratedBmc = false;
  bool twgStop = false;
  bool tvmLibrary = false;
  bool commandList = true;
  std::map<Bytes, std::int32_t> components;  // by the first four command bytes; absent = -1
  std::chrono::microseconds latency{0};      // each command takes this long
  std::vector<DotCommandEntry> dotCommands;
  std::vector<TamberCommandEntry> tamberCommands;
  std::vector<IpmiCommandEntry> ipmiCommands;
};

// A driver that answers from a description. The clock must outlive it.
VEL_API std::unique_ptr<SPLibrary> makeSimulatedSP(SimulatedSP description,
                                                   Clock& clock = steadyClock());

// A BMC that owes an answer.
struct SilentBmc {
  std::string device;                   // that leads to it
  std::chrono::milliseconds waited{0};  // for the answer
};

// The machine that the program runs on: the BMC that the kernel's IPMI driver reaches, and no
// other service processor.
struct LiveIpmi {
  std::unique_ptr<SPLibrary> library;
  std::string refusedDevice;  // the device that exists but needs more rights; empty: none
  // Set by the library when the BMC owes an answer. From then on nothing is sent to it and every
  // command fails at once: who waits for a silent BMC waits once, not once a command.
  std::shared_ptr<const std::optional<SilentBmc>> silence =
      std::make_shared<std::optional<SilentBmc>>();
};

// Opens /dev/ipmi0, /dev/ipmi/0 or /dev/ipmidev/0. A device that refuses counts as absent.
VEL_API LiveIpmi makeLiveIpmi();

// One command that went to an SP or BMC.
struct TrafficEntry {
  enum class Kind { kDotCommand, kTamberCommand, kIpmiCommand };
  Kind kind = Kind::kDotCommand;
  int sp = 0;              // dot commands
  unsigned char type = 0;  // dot commands
  Bytes command;           // dot and Tamber commands; for IPMI the request record to its data's end
  Bytes data;              // dot and Tamber commands
  bool flag0 = false;      // Tamber commands
  bool flag1 = false;
  bool answered = false;
  std::int32_t length = 0;  // as reported to the caller; 0 when not answered
  Bytes reply;              // as the caller's buffer got it; empty when not answered
};

enum class Traffic { kKept, kForgotten };

// What SPLibrary::GetSplibraryInstance hands out, wrapped so that its traffic can be kept, which
// takes memory with each command; null: the driver cannot be loaded. Forgets earlier traffic.
VEL_API void setSPLibrary(std::unique_ptr<SPLibrary> library, Traffic traffic = Traffic::kKept);

// The commands sent since the last call, in order; none where traffic is not kept.
VEL_API std::vector<TrafficEntry> takeTraffic();

// The component counts that were asked for since setSPLibrary, by the first four command bytes.
VEL_API std::map<Bytes, std::int32_t> componentsAsked();

// What a command came to, over all the times that it was sent. The data of dot and Tamber commands are
// not told apart, as one data set stands in for another.
struct CommandTally {
  TrafficEntry::Kind kind = TrafficEntry::Kind::kDotCommand;
  int sp = 0;          // dot commands
  Bytes command = {};  // as TrafficEntry has it
  unsigned sent = 0;
  unsigned refused = 0;   // of these
  bool answered = false;  // the last time
  Bytes reply = {};       // the last one, cut to kTallyReplySize
  unsigned unsent = 0;    // how often it was not sent, as the time was over
  bool isCutOff = false;  // the time was over before the last one was answered
};

inline constexpr std::size_t kTallyReplySize = 64;
inline constexpr std::size_t kMostTallies = 65536;  // further commands are not counted

// What plug-ins asked of the SP driver; nullopt: they did not ask.
struct DriverUse {
  std::optional<bool> isDotCommand;
  std::optional<bool> answers;
  std::optional<bool> isTamber;
  std::optional<bool> hasTvmLibrary;
  std::optional<bool> hasBmc;
  std::optional<bool> hasIpmiDrivers;
  std::optional<bool> hasCommandList;
  bool isCutOff = false;               // the time was over before all was asked
  std::vector<CommandTally> commands;  // in the order in which each was sent first
};

// Since setSPLibrary or forgetDriverUse, whether traffic is kept or not.
VEL_API DriverUse driverUse();
VEL_API void forgetDriverUse();

}  // namespace NKRXVEL20::host
