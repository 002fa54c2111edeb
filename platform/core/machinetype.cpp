// SPDX-License-Identifier: Apache-2.0
#include "machinetype.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>
#include <vector>

#include "asciitext.h"
#include "smbiosstring.h"
#include "vel/smbios.h"
#include "velhost/rootobject.h"

namespace NKRXVEL20 {
namespace {

// System Information (DSP0134, 7.2).
constexpr int kSystemInformation = 1;
constexpr std::size_t kLengthOffset = 1;
constexpr std::size_t kProductNameOffset = 5;

constexpr std::size_t kStructureSize = 4096;
using Structure = std::array<unsigned char, kStructureSize>;

constexpr std::size_t kMachineTypeSize = 4;
constexpr std::size_t kTypeModelSize = 7;

class SmbiosTable {
 public:
  SmbiosTable() : opened_(smBiosLoad(nullptr, &handle_) == 0 && handle_ != nullptr) {}
  ~SmbiosTable() {
    if (opened_) smBiosClose(&handle_);
  }
  SmbiosTable(const SmbiosTable&) = delete;
  SmbiosTable& operator=(const SmbiosTable&) = delete;

  // All zero when there is none of the type. The status does not matter: a structure that was read
  // with an error still says what it says.
  Structure first(int type) {
    Structure structure{};
    int size = kStructureSize;
    if (opened_) smBiosGetFirst(handle_, type, structure.data(), &size);
    return structure;
  }

 private:
  TSmBiosHandle* handle_ = nullptr;
  bool opened_;
};

std::string productName(const Structure& structure) {
  const std::size_t length = structure[kLengthOffset];
  if (length <= kProductNameOffset) return {};
  const std::string strings(structure.begin() + static_cast<std::ptrdiff_t>(length),
                            structure.end());
  return std::string(smbiosString(strings, structure[kProductNameOffset]));
}

// The runs of letters and digits between all other characters.
std::vector<std::string_view> words(std::string_view text) {
  std::vector<std::string_view> found;
  for (auto at = text.begin(); at != text.end();) {
    const auto begin = std::find_if(at, text.end(), isAlphaNumeric);
    at = std::find_if_not(begin, text.end(), isAlphaNumeric);
    if (begin != at) found.emplace_back(begin, at);
  }
  return found;
}

bool startsWithMachineType(std::string_view word) {
  return word.size() >= kMachineTypeSize &&
         std::all_of(word.begin(), word.begin() + kMachineTypeSize, isDigit);
}

std::optional<std::string>& machineTypeSet() {
  static std::optional<std::string> machineType;
  return machineType;
}

}  // namespace

void host::setMachineType(std::optional<std::string> machineType) {
  machineTypeSet() = std::move(machineType);
}

const std::optional<std::string>& machineTypeOverride() { return machineTypeSet(); }

std::string_view machineTypeFromProductName(std::string_view productName) {
  const std::vector<std::string_view> all = words(productName);
  for (const std::size_t size : {kTypeModelSize, kMachineTypeSize}) {
    const auto word = std::find_if(all.begin(), all.end(), [size](std::string_view candidate) {
      return candidate.size() == size && startsWithMachineType(candidate);
    });
    if (word != all.end()) return word->substr(0, kMachineTypeSize);
  }
  return {};
}

std::string machineTypeFromSmbios() {
  const std::string name = productName(SmbiosTable().first(kSystemInformation));
  return std::string(machineTypeFromProductName(name));
}

}  // namespace NKRXVEL20
