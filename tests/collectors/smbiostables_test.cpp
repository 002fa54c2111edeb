// SPDX-License-Identifier: Apache-2.0
//
// The tables of an SMBIOS library that opens well and gives no handle: this program defines the
// library's functions, and they take the place of the real ones.
#include <gtest/gtest.h>

#include <string>

#include "collectors/smbiosinventory/tables.h"
#include "vel/smbios.h"
#include "velhost/log.h"

namespace {

std::string calls;  // NOLINT

}  // namespace

namespace NKRXVEL20 {

int smBiosLoad(TPluginManagerProvider* /*provider*/, TSmBiosHandle** handle) {
  calls += " load";
  *handle = nullptr;
  return 0;
}

int smBiosGetFirst(TSmBiosHandle* /*handle*/, int /*type*/, unsigned char* /*buffer*/,
                   int* /*size*/) {
  calls += " first";
  return kSmBiosReadFailed;
}

int smBiosGetNext(TSmBiosHandle* /*handle*/, unsigned char* /*buffer*/, int* /*size*/) {
  calls += " next";
  return kSmBiosReadFailed;
}

int smBiosClose(TSmBiosHandle** handle) {
  calls += *handle == nullptr ? " close of null" : " close";
  return 0;
}

}  // namespace NKRXVEL20

namespace smbiosinventory {
namespace {

TEST(Tables, WithoutAHandleNothingIsRead) {
  std::string logged;
  NKRXVEL20::host::setFailureLogSink(
      [&](const NKRXVEL20::host::LogEntry& entry) { logged += entry.text; });
  {
    Tables tables;
    tables.forEach(0, [](const Structure&) { ADD_FAILURE() << "a structure"; });
  }
  NKRXVEL20::host::setFailureLogSink({});
  EXPECT_EQ("SMBIOSInventory: the SMBIOS library cannot be opened, error 0", logged);
  EXPECT_EQ(" load close of null", calls);
}

}  // namespace
}  // namespace smbiosinventory
