// SPDX-License-Identifier: Apache-2.0
//
// What a collection makes of the platform, written down and done once more without a plug-in: the floor
// that no collector of the same machine gets below.
#pragma once

#include <boost/shared_ptr.hpp>
#include <cstddef>
#include <filesystem>
#include <string>
#include <variant>
#include <vector>

#include "vel/cim.h"
#include "vel/log.h"
#include "vel/splibrary.h"

namespace velhost {

struct DotCommandSent {
  int sp;
  unsigned char type;
  std::vector<unsigned char> command;
  std::vector<unsigned char> data;
  int bufferSize;
};
struct TamberCommandSent {
  std::vector<unsigned char> command;
  std::vector<unsigned char> data;
  bool flag0;
  bool flag1;
};
struct IpmiCommandSent {
  std::vector<unsigned char> record;  // as the buffer was when it was sent
  bool wait;
};
struct CommandListBuilt {};
struct ComponentCounted {
  std::vector<unsigned char> command;
};
struct InstanceCreated {
  std::string className;
};
struct PropertySet {
  std::size_t instance;  // its place among those created
  std::string name;
  NKRXVEL20::TCIMValue value;
};
struct PropertyRead {
  std::size_t instance;
  std::string name;
};
struct LogWritten {
  NKRXVEL20::EVELLogSeverity severity;
  std::string text;
};

using PlatformCall =
    std::variant<DotCommandSent, TamberCommandSent, IpmiCommandSent, CommandListBuilt,
                 ComponentCounted, InstanceCreated, PropertySet, PropertyRead, LogWritten>;
using PlatformCalls = std::vector<PlatformCall>;

// Those of one collection by the plug-in on the machine of a file, in their order, but for what reads
// SMBIOS and other collectors' instances.
PlatformCalls callsOfCollection(const std::filesystem::path& machineFile);

PlatformCalls withoutLog(PlatformCalls calls);

template <typename Call>
std::size_t numberOf(const PlatformCalls& calls) {
  std::size_t number = 0;
  for (const PlatformCall& call : calls) number += std::holds_alternative<Call>(call) ? 1 : 0;
  return number;
}

// Makes the calls on the machine that the platform is set up for. Each buffer is cleared before it is
// sent with, as the plug-in does. Returns the instances, which are not published.
std::vector<boost::shared_ptr<NKRXVEL20::ICIMInstance>> repeated(const PlatformCalls& calls,
                                                                 NKRXVEL20::ICIMNamespace& ns);

}  // namespace velhost
