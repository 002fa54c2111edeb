// SPDX-License-Identifier: Apache-2.0
//
// A plug-in object on a machine that a test describes: SMBIOS structures, a scripted service
// processor, the namespace and both logs, all of which keep what they were asked.
#pragma once

#include <gtest/gtest.h>

#include <boost/make_shared.hpp>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "plugin/spfirmwarevpd.h"
#include "velhost/cimnamespace.h"
#include "velhost/log.h"
#include "velhost/pluginloader.h"
#include "velhost/rootobject.h"
#include "velhost/smbios.h"
#include "velhost/spdriver.h"

namespace spfirmwarevpd::test {

using NKRXVEL20::host::Bytes;
using NKRXVEL20::host::Fault;
using NKRXVEL20::host::SimulatedSP;
using NKRXVEL20::host::SmbiosStructure;

using Log = std::vector<std::pair<int, std::string>>;  // severity and text

// "SourceNode=1" and so on, in the order in which they were set.
using Properties = std::vector<std::string>;

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

class PluginTest : public ::testing::Test {
 public:
  PluginTest();
  ~PluginTest() override;

  PluginTest(const PluginTest&) = delete;
  PluginTest& operator=(const PluginTest&) = delete;

 protected:
  // The machine.
  void useSmbios(std::vector<SmbiosStructure> structures, int endStatus = 5, int loadStatus = 0);
  void useSP(SimulatedSP sp);
  void useFaults(std::vector<Fault> faults, std::vector<std::string> missingClasses = {});
  void refuseProperty(const std::string& property);  // each setting of it

  NKRXVEL20::SPLibrary* sp();

  // Publishes the instances and tells what each holds.
  std::vector<Properties> published(const SPFirmwareVpd::InstanceList& instances);
  // What was published since the last call, by class.
  std::vector<std::pair<std::string, Properties>> takePublished();
  // "0403050601 to SP 0" and so on.
  std::vector<std::string> takeTraffic();
  Log takeLog();

  Log log;         // the core log
  Log failureLog;  // the failure-data log
  boost::shared_ptr<NKRXVEL20::host::CimNamespace> ns;

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
