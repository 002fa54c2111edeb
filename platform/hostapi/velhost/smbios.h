// SPDX-License-Identifier: Apache-2.0
//
// Where the SMBIOS library takes its table from.
#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "vel/export.h"

namespace NKRXVEL20::host {

// A whole structure, header and string set included, and the status with which it is delivered.
struct SmbiosStructure {
  std::vector<unsigned char> bytes;
  int status = 0;
};

struct SmbiosTable {
  std::vector<SmbiosStructure> structures;
  int loadStatus = 0;  // what opening the library returns
  int endStatus = 5;   // what a read returns when no structure of the type is left
};

// The table that smBiosLoad opens; nullopt: the library cannot be opened (status 1). Handles that
// are open keep the table that they were opened on.
VEL_API void setSmbiosTable(std::optional<SmbiosTable> table);

// The one that is set now; null: none.
VEL_API std::shared_ptr<const SmbiosTable> smbiosTable();

struct TableLimits {
  std::optional<std::size_t> structureCount;  // from a 32-bit entry point
  bool stopAtEndOfTable = false;              // type 127 ends it: 64-bit entry points
};

// Cuts a table into its structures. Stops at the first that its bytes do not hold: a Length below
// 4 or past the end. A string set without its double zero ends with the table.
VEL_API std::vector<SmbiosStructure> splitTable(std::span<const unsigned char> table,
                                                TableLimits limits);

// what() is one line that says what is wrong, without the file's name.
class VEL_API DmiDumpError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
  ~DmiDumpError() override;
};

// A dump as `dmidecode --dump-bin` writes it: the entry point (32-bit _SM_, legacy _DMI_ or 64-bit
// _SM3_) at offset 0, the table where the entry point says. Throws DmiDumpError for what is no
// such dump, or has more structures than that.
VEL_API SmbiosTable parseDmiDump(std::span<const unsigned char> dump,
                                 std::optional<std::size_t> mostStructures = std::nullopt);

// The live machine's tables could not be read; `error` is the errno.
class VEL_API LiveSmbiosError : public std::runtime_error {
 public:
  LiveSmbiosError(const std::string& what, int error);
  ~LiveSmbiosError() override;
  int error;
};

inline constexpr char kLiveTableFolder[] = "/sys/firmware/dmi/tables";

// Reads smbios_entry_point and DMI of that folder. Throws LiveSmbiosError.
VEL_API SmbiosTable readLiveTables(const std::filesystem::path& folder = kLiveTableFolder);

}  // namespace NKRXVEL20::host
