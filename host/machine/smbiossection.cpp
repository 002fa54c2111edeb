// SPDX-License-Identifier: Apache-2.0
#include "host/machine/smbiossection.h"

#include <cstdint>
#include <optional>

#include "host/files/wholefile.h"
#include "host/machine/bytesfield.h"
#include "host/machine/smbiosparts.h"

namespace velhost {
namespace {

using NKRXVEL20::host::SmbiosStructure;
using NKRXVEL20::host::SmbiosTable;

constexpr std::size_t kLargestData =
    255 - kSmbiosHeaderSize;  // the Length byte counts the header too

struct StructureReading {
  std::optional<std::uint8_t> type;
  std::optional<std::uint16_t> handle;
  Bytes data;
  std::vector<std::string> strings;
  std::optional<Bytes> raw;
  int status = 0;
};

struct SectionReading {
  const std::filesystem::path& folder;
  SmbiosTable table;
  std::vector<SmbiosStructure> structures;
};

std::string readSmbiosString(const Cursor& at) {
  if (at.text().empty()) at.fail("an empty string would end the string set");
  if (at.text().find('\0') != std::string::npos) at.fail("a zero byte would end the string");
  return at.text();
}

Bytes readFormattedArea(const Cursor& at) {
  Bytes data = readBytes(at);
  if (data.size() > kLargestData) {
    at.fail("has " + std::to_string(data.size()) + " bytes; a structure holds no more than " +
            std::to_string(kLargestData) + " behind its header");
  }
  return data;
}

constexpr Member<StructureReading> kStructureMembers[] = {
    {"type", [](const Cursor& at, auto& s) { s.type = at.integer<std::uint8_t>(); }},
    {"handle", [](const Cursor& at, auto& s) { s.handle = at.integer<std::uint16_t>(); }},
    {"data", [](const Cursor& at, auto& s) { s.data = readFormattedArea(at); }},
    {"strings",
     [](const Cursor& at, auto& s) {
       at.eachElement([&](const Cursor& text) { s.strings.push_back(readSmbiosString(text)); });
     }},
    {"raw", [](const Cursor& at, auto& s) { s.raw = readBytes(at); }},
    {"status", [](const Cursor& at, auto& s) { s.status = at.integer<int>(); }},
};

void refuseBesideRaw(const Cursor& at) {
  for (const std::string_view key : {"type", "handle", "data", "strings"}) {
    if (at.has(key)) at.failAt(key, "cannot stand beside \"raw\", which is the whole structure");
  }
}

std::uint16_t handleOf(const Cursor& at, const StructureReading& structure) {
  static_assert(kMostStructures <= 0x10000, "an index is a handle");
  return structure.handle.value_or(static_cast<std::uint16_t>(at.index()));
}

SmbiosStructure readStructure(const Cursor& at) {
  StructureReading structure;
  readMembers(at, kStructureMembers, structure);
  if (structure.raw) {
    refuseBesideRaw(at);
    return {std::move(*structure.raw), structure.status};
  }
  if (!structure.type) at.failAt("type", "is missing");
  return {wholeStructure({*structure.type, handleOf(at, structure), std::move(structure.data),
                          std::move(structure.strings)}),
          structure.status};
}

std::vector<SmbiosStructure> readDump(const Cursor& at, const std::filesystem::path& folder) {
  if (at.text().find('\0') != std::string::npos) at.fail("a zero byte would end the name");
  const std::filesystem::path file = folder / at.text();
  try {
    const std::string bytes = readWholeFile(file, ReadFrom::kRegularFile);
    at.spendBytes(bytes.size());
    return NKRXVEL20::host::parseDmiDump(Bytes(bytes.begin(), bytes.end()), kMostStructures)
        .structures;
  } catch (const FileReadError& error) {
    at.fail("cannot read " + file.string() + ": " + error.what());
  } catch (const NKRXVEL20::host::DmiDumpError& error) {
    at.fail(file.string() + ": " + error.what());
  }
}

int readEndStatus(const Cursor& at) {
  const int status = at.integer<int>();
  if (status == 0) at.fail("must not be 0: a walk over the structures would never end");
  return status;
}

constexpr Member<SectionReading> kSectionMembers[] = {
    {"load_status", [](const Cursor& at, auto& s) { s.table.loadStatus = at.integer<int>(); }},
    {"dump", [](const Cursor& at, auto& s) { s.structures = readDump(at, s.folder); }},
    {"structures",
     [](const Cursor& at, auto& s) {
       at.eachElement([&](const Cursor& item) { s.structures.push_back(readStructure(item)); },
                      kMostStructures);
     }},
    {"end_status", [](const Cursor& at, auto& s) { s.table.endStatus = readEndStatus(at); }},
};

}  // namespace

SmbiosTable readSmbiosSection(const Cursor& at, const std::filesystem::path& folder) {
  if (at.has("dump") && at.has("structures")) {
    at.failAt("structures", "cannot stand beside \"dump\"");
  }
  SectionReading section{folder, {}, {}};
  readMembers(at, kSectionMembers, section);
  section.table.structures = std::move(section.structures);
  return std::move(section.table);
}

}  // namespace velhost
