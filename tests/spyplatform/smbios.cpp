// SPDX-License-Identifier: Apache-2.0
//
// libsmbios.so once more: hands out the machine's structures one by one.
#include "vel/smbios.h"

#include <algorithm>

#include "tests/spyplatform/recorder.h"

namespace NKRXVEL20 {

struct TSmBiosHandle {
  int type = 0;
  std::size_t next = 0;  // index of the structure to look at
};

namespace {

using spyplatform::begin;
using spyplatform::state;

TSmBiosHandle openTable;  // NOLINT: one is open at a time

std::string describeHandle(const TSmBiosHandle* handle) {
  if (handle == nullptr) return "null";
  return handle == &openTable ? "handle" : "a strange handle";
}

std::string describeBuffer(const unsigned char* buffer, const int* size) {
  return spyplatform::describeBytes(buffer, *size) + ", size " + std::to_string(*size);
}

int readNext(const spyplatform::Call& call, TSmBiosHandle& handle, unsigned char* buffer,
             const int* size) {
  int status = kSmBiosNoMore;
  while (handle.next < state().structures.size()) {
    const spyplatform::Structure& structure = state().structures[handle.next++];
    if (structure.bytes.front() != handle.type) continue;
    const auto length = std::min(structure.bytes.size(), static_cast<std::size_t>(*size));
    std::copy_n(structure.bytes.begin(), length, buffer);
    status = structure.status;
    break;
  }
  status = call.numberOr(status);
  call.writeDown(" -> " + std::to_string(status));
  return status;
}

}  // namespace

int smBiosLoad(TPluginManagerProvider* provider, TSmBiosHandle** handle) {
  const auto call = begin("smBiosLoad", std::string("smBiosLoad(") +
                                            (provider == nullptr ? "null" : "a provider") + ")");
  const int status = call.numberOr(0);
  openTable = {};
  if (status == 0) *handle = call.isNull() ? nullptr : &openTable;
  call.writeDown(" -> " + std::to_string(status) + (call.isNull() ? ", null" : ""));
  return status;
}

int smBiosGetFirst(TSmBiosHandle* handle, int type, unsigned char* buffer, int* size) {
  const auto call =
      begin("smBiosGetFirst", "smBiosGetFirst(" + describeHandle(handle) + ", " +
                                  std::to_string(type) + ", " + describeBuffer(buffer, size) + ")");
  *handle = {type, 0};
  return readNext(call, *handle, buffer, size);
}

int smBiosGetNext(TSmBiosHandle* handle, unsigned char* buffer, int* size) {
  const auto call = begin("smBiosGetNext", "smBiosGetNext(" + describeHandle(handle) + ", " +
                                               describeBuffer(buffer, size) + ")");
  return readNext(call, *handle, buffer, size);
}

int smBiosClose(TSmBiosHandle** handle) {
  begin("smBiosClose", "smBiosClose(" + describeHandle(*handle) + ")").writeDown();
  *handle = nullptr;
  return 0;
}

}  // namespace NKRXVEL20
