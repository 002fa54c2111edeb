// SPDX-License-Identifier: Apache-2.0
//
// What collectors were given: replies, SMBIOS structures, FRU devices, others' instances.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "host/reasons/origin.h"
#include "velhost/cimnamespace.h"
#include "velhost/smbios.h"
#include "velhost/spdriver.h"

namespace velhost {

// To a command that was answered.
struct Reply {
  Source source = Source::kDotCommand;
  Bytes command;  // IPMI: network function and command
  Bytes data;     // of the request
  int sp = 0;     // dot commands
  std::int32_t length = 0;
  Bytes bytes;
};

struct Structure {
  Bytes bytes;  // header and string set included; none: the read gave nothing
  int type = 0;
  unsigned number = 0;  // among those of its type, from 1
};

// As a BMC gave it, put together from as many replies as it took (IPMI 2.0, 33 and 34).
struct FruDevice {
  unsigned number = 0;
  Bytes record;  // that locates it, header included; none: no record does
  Bytes bytes;
};

struct Evidence {
  std::vector<Reply> replies;  // in order
  std::vector<Structure> structures;
  std::vector<FruDevice> frus;
  std::map<std::string, std::vector<NKRXVEL20::host::PublishedInstance>, std::less<>> instances;
};

// `smbios` may be null. The instances are the caller's to add: those of the classes that lines name.
Evidence evidenceOf(const std::vector<NKRXVEL20::host::TrafficEntry>& traffic,
                    const NKRXVEL20::host::SmbiosTable* smbios);

}  // namespace velhost
