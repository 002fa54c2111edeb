// SPDX-License-Identifier: Apache-2.0
#include "host/reasons/smbiossource.h"

#include <algorithm>
#include <string_view>

#include "host/reasons/words.h"
#include "vel/smbios.h"

namespace velhost {
namespace {

using NKRXVEL20::host::SmbiosStructure;
using NKRXVEL20::host::SmbiosTable;

constexpr std::size_t kLengthOffset = 1;
constexpr std::size_t kMostStrings = 1024;  // bytes of the string set that collectors look at

// A walk over the structures of a type, as those who read them make it.
struct Walk {
  std::vector<const SmbiosStructure*> structures;
  int badStatus = NKRXVEL20::kSmBiosRead;  // that it met; kSmBiosRead: none
};

bool isOfType(const SmbiosStructure& structure, int type) {
  return !structure.bytes.empty() && structure.bytes.front() == type;
}

Walk walk(const SmbiosTable& table, int type) {
  Walk walk;
  for (const SmbiosStructure& structure : table.structures) {
    if (!isOfType(structure, type)) continue;
    if (structure.status == NKRXVEL20::kSmBiosNoMore) return walk;
    walk.structures.push_back(&structure);
    if (structure.status != NKRXVEL20::kSmBiosRead) walk.badStatus = structure.status;
  }
  if (table.endStatus != NKRXVEL20::kSmBiosNoMore) walk.badStatus = table.endStatus;
  return walk;
}

std::string_view stringSet(const SmbiosStructure& structure) {
  const auto& bytes = structure.bytes;
  if (bytes.size() <= kLengthOffset || bytes.size() < bytes[kLengthOffset]) return {};
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): the bytes are text from here on
  const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  return text.substr(bytes[kLengthOffset], kMostStrings);
}

bool hasString(const Walk& walk, std::string_view wanted) {
  return std::ranges::any_of(walk.structures, [&](const SmbiosStructure* structure) {
    return stringSet(*structure).find(wanted) != std::string_view::npos;
  });
}

std::string typeText(int type) { return "SMBIOS type " + std::to_string(type); }

Verdict stringsVerdict(const Walk& walk, std::span<const Origin> origins) {
  std::vector<std::string> wanted;
  for (const Origin& origin : origins) {
    const std::string text = quoted(origin.contained);
    if (std::ranges::find(wanted, text) == wanted.end()) wanted.push_back(text);
  }
  const bool isThere = std::ranges::any_of(
      origins, [&](const Origin& origin) { return hasString(walk, origin.contained); });
  const std::string strings = "string of " + typeText(origins.front().structureType);
  if (!isThere) return none("no " + strings + " has " + listText(wanted));
  return looked("a " + strings + " was read, and names none");
}

// Of the lines of one type.
Verdict typeVerdict(std::span<const Origin> origins, const SmbiosTable& table) {
  const int type = origins.front().structureType;
  const Walk found = walk(table, type);
  if (found.badStatus != NKRXVEL20::kSmBiosRead) {
    return trouble(State::kUnreadable, "reading " + typeText(type) + " ended with status " +
                                           std::to_string(found.badStatus));
  }
  if (found.structures.empty()) {
    return none("SMBIOS has no structure of type " + std::to_string(type));
  }
  const bool areStrings =
      std::ranges::none_of(origins, [](const Origin& origin) { return origin.contained.empty(); });
  if (areStrings) return stringsVerdict(found, origins);
  return looked(typeText(type) + " was read, and names none");
}

std::vector<Origin> originsOfType(std::span<const Origin> origins, int type) {
  std::vector<Origin> some;
  std::ranges::copy_if(origins, std::back_inserter(some),
                       [&](const Origin& origin) { return origin.structureType == type; });
  return some;
}

bool isWorse(const Verdict& verdict, const Verdict& other) { return verdict.kind > other.kind; }

}  // namespace

Verdict smbiosTrouble(const Observations& seen) {
  if (seen.refused.smbios) {
    const bool isForbidden = seen.refused.smbios->forbidden;
    return trouble(isForbidden ? State::kForbidden : State::kUnreadable,
                   "cannot read " + seen.refused.smbios->what +
                       (isForbidden ? "; run velhost as root" : "; this system shows none"));
  }
  if (seen.smbios && seen.smbios->loadStatus == 0) return {};
  const int status = seen.smbios ? seen.smbios->loadStatus : 1;  // what smBiosLoad says of none
  return trouble(State::kUnreadable,
                 "the SMBIOS tables cannot be opened (status " + std::to_string(status) + ")");
}

// Of several types the worst, and of those the first, says why.
Verdict smbiosVerdict(std::span<const Origin> origins, const Observations& seen) {
  Verdict worst = smbiosTrouble(seen);
  if (worst.kind == Verdict::Kind::kTrouble) return worst;
  std::set<int> types;
  for (const Origin& origin : origins) {
    if (!types.insert(origin.structureType).second) continue;
    Verdict verdict = typeVerdict(originsOfType(origins, origin.structureType), *seen.smbios);
    if (isWorse(verdict, worst)) worst = std::move(verdict);
  }
  return worst;
}

}  // namespace velhost
