// SPDX-License-Identifier: Apache-2.0
#include "host/explanation/evidence.h"

#include <set>
#include <utility>

#include "host/explanation/bmcdevices.h"
#include "vel/smbios.h"

namespace velhost {
namespace {

using NKRXVEL20::host::SmbiosStructure;
using NKRXVEL20::host::SmbiosTable;
using NKRXVEL20::host::TrafficEntry;

// Of the request record (platform/include/vel/splibrary.h).
constexpr std::size_t kFunctionOffset = 2;
constexpr std::size_t kCommandOffset = 4;
constexpr std::size_t kDataOffset = 9;

Reply ipmiReply(const TrafficEntry& entry) {
  const Bytes& record = entry.command;
  if (record.size() < kDataOffset) return {Source::kIpmi, record, {}, 0, entry.length, entry.reply};
  return {Source::kIpmi,
          {record[kFunctionOffset], record[kCommandOffset]},
          {record.begin() + kDataOffset, record.end()},
          0,
          entry.length,
          entry.reply};
}

Reply replyOf(const TrafficEntry& entry) {
  if (entry.kind == TrafficEntry::Kind::kIpmiCommand) return ipmiReply(entry);
  const bool isDot = entry.kind == TrafficEntry::Kind::kDotCommand;
  return {isDot ? Source::kDotCommand : Source::kTamberCommand,
          entry.command,
          entry.data,
          entry.sp,
          entry.length,
          entry.reply};
}

// As those who read them get them: the end of a walk that is not told as such gives one more, of
// nothing.
std::vector<Structure> structuresOf(const SmbiosTable& table) {
  std::vector<Structure> structures;
  std::map<int, unsigned> counts;
  for (const SmbiosStructure& structure : table.structures) {
    if (structure.bytes.empty()) continue;
    const int type = structure.bytes.front();
    structures.push_back({structure.bytes, type, ++counts[type]});
  }
  if (table.endStatus == NKRXVEL20::kSmBiosNoMore) return structures;
  for (int type = 0; type < 256; ++type) structures.push_back({{}, type, ++counts[type]});
  return structures;
}

}  // namespace

Evidence evidenceOf(const std::vector<TrafficEntry>& traffic, const SmbiosTable* smbios) {
  Evidence evidence;
  for (const TrafficEntry& entry : traffic) {
    if (entry.answered) evidence.replies.push_back(replyOf(entry));
  }
  if (smbios != nullptr && smbios->loadStatus == 0) evidence.structures = structuresOf(*smbios);
  evidence.frus = fruDevices(evidence.replies);
  return evidence;
}

}  // namespace velhost
