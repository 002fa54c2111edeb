// SPDX-License-Identifier: Apache-2.0
#include "smbios/smbioswalk.h"

#include <algorithm>

#include "collectors/support/corelog.h"
#include "vel/osspecific.h"
#include "vel/smbios.h"

using namespace NKRXVEL20;
using namespace collector;

namespace spfirmwarevpd {

namespace {

// The buffer that the library reads into. It is told the size by address and may change it.
struct ReadBuffer {
  SmbiosBuffer bytes{};
  int size = kSmbiosBufferSize;

  void clear() {
    std::fill_n(bytes.begin(), std::clamp(size, 0, kSmbiosBufferSize),
                static_cast<unsigned char>(0));
  }
};

int readStructure(TSmBiosHandle* handle, int type, bool first, ReadBuffer& buffer) {
  buffer.clear();
  if (first) {
    logProgress("SMBIOSInfo::getSMBIOSInfo - Retrieving first SMBIOS structure");
    return smBiosGetFirst(handle, type, buffer.bytes.data(), &buffer.size);
  }
  logProgress("SMBIOSInfo::getSMBIOSInfo - Retrieving the next SMBIOS structure.");
  return smBiosGetNext(handle, buffer.bytes.data(), &buffer.size);
}

// False when the walk was abandoned.
bool walkOpenTable(TSmBiosHandle* handle, const SmbiosWalk& walk) {
  ReadBuffer buffer;
  bool first = true;
  int status = kSmBiosRead;
  do {
    if (handle == nullptr) {
      // Nothing changes the handle, so this goes round until isComplete: required, not guarded.
      logFailure(
          "SMBIOSInfo::getSMBIOSInfo - Invalid handle to extended BIOS data area. Unable to "
          "retrieve information from SMBIOS.");
      status = kSmBiosRead;
    } else {
      status = readStructure(handle, walk.type, first, buffer);
      first = false;
      if (status == kSmBiosNoMore) {
        // Says type 0 whatever the type.
        logProgress("SMBIOSInfo::getSMBIOSInfo - read all smbios structures available for type 0");
        return true;
      }
      if (status == kSmBiosReadFailed) {
        logProgress("SMBIOSInfo::getSMBIOSInfo - smbios read operation failed! ");
      }
      // A failed read is processed like a good one, with what the buffer holds.
      if (!walk.process(buffer.bytes)) return false;
    }
  } while (!walk.isComplete() && status == kSmBiosRead);
  return true;
}

}  // namespace

TVELStatusCode walkSmbios(const SmbiosWalk& walk) {
  TSmBiosHandle* handle = nullptr;
  const int error = smBiosLoad(nullptr, &handle);
  if (error != 0) {
    logFailure(walk.openFailedText + std::to_string(error));
    return {kStatusFailure};
  }
  // An abandoned walk calls the library no more, also not to close it; the library owns the handle.
  if (!walkOpenTable(handle, walk)) return {kStatusFailure};
  smBiosClose(&handle);
  return {kStatusSuccess};
}

std::string smbiosString(std::span<char> stringSet, int number) {
  std::array<char, 100> text{};
  TOSSpecific::getBIDString(stringSet.data(), text.data(), static_cast<int>(stringSet.size()),
                            number);
  return text.data();
}

}  // namespace spfirmwarevpd
