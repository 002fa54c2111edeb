// SPDX-License-Identifier: Apache-2.0
//
// The firmware collector's object on a machine that a test describes: SMBIOS structures and a scripted
// service processor, which keeps what it was asked.
#pragma once

#include <string>
#include <vector>

#include "plugin/spfirmwarevpd.h"
#include "tests/support/frameworkfixture.h"
#include "velhost/pluginloader.h"
#include "velhost/rootobject.h"
#include "velhost/smbios.h"
#include "velhost/spdriver.h"

namespace spfirmwarevpd::test {

using collector::test::Fault;
using collector::test::Log;
using collector::test::Properties;
using NKRXVEL20::host::Bytes;
using NKRXVEL20::host::SimulatedSP;
using NKRXVEL20::host::SmbiosStructure;

// Pieces laid end to end.
Bytes joined(std::initializer_list<Bytes> pieces);
// The text's bytes, then zeros up to `size`.
Bytes text(const std::string& text, std::size_t size);
Bytes zeros(std::size_t size);

// A structure of the type: `data` behind the 4-byte header, then the strings.
SmbiosStructure structure(int type, const Bytes& data, const std::vector<std::string>& strings,
                          int status = 0);
// OEM strings (type 11).
SmbiosStructure oemStrings(const std::vector<std::string>& strings);

class PluginTest : public collector::test::FrameworkTest {
 public:
  PluginTest();
  ~PluginTest() override;

  PluginTest(const PluginTest&) = delete;
  PluginTest& operator=(const PluginTest&) = delete;

 protected:
  // The machine.
  void useSmbios(std::vector<SmbiosStructure> structures, int endStatus = 5, int loadStatus = 0);
  void useSP(SimulatedSP sp);

  NKRXVEL20::SPLibrary* sp();

  // "0403050601 to SP 0" and so on.
  std::vector<std::string> takeTraffic();

 private:
  NKRXVEL20::host::PluginLoader loader_;

 protected:
  SPFirmwareVpd plugin;
};

// A dot-command SP without any answer yet.
SimulatedSP dotCommandSP(int count = 1);
// The SP's answer to a command; nothing for a send that fails.
void answer(SimulatedSP& sp, const Bytes& command, const Bytes& reply, int spIndex = 0);

}  // namespace spfirmwarevpd::test
