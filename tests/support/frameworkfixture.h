// SPDX-License-Identifier: Apache-2.0
//
// The framework around a collector of any kind: the namespace and both logs, which keep what they
// were asked.
#pragma once

#include <gtest/gtest.h>

#include <boost/make_shared.hpp>
#include <string>
#include <utility>
#include <vector>

#include "collectors/support/ciminstance.h"
#include "velhost/cimnamespace.h"

namespace collector::test {

using NKRXVEL20::host::Fault;

using Log = std::vector<std::pair<int, std::string>>;  // severity and text

// "SourceNode=1" and so on, in the order in which they were set.
using Properties = std::vector<std::string>;

class FrameworkTest : public ::testing::Test {
 public:
  FrameworkTest();
  ~FrameworkTest() override;

  FrameworkTest(const FrameworkTest&) = delete;
  FrameworkTest& operator=(const FrameworkTest&) = delete;

 protected:
  void useFaults(std::vector<Fault> faults, std::vector<std::string> missingClasses = {});
  void refuseProperty(const std::string& property);  // each setting of it

  // Publishes the instances and tells what each holds.
  std::vector<Properties> published(const std::vector<InstanceHandle>& instances);
  // What was published since the last call, by class.
  std::vector<std::pair<std::string, Properties>> takePublished();
  Log takeLog();

  Log log;         // the core log
  Log failureLog;  // the failure-data log
  boost::shared_ptr<NKRXVEL20::host::CimNamespace> ns;
};

}  // namespace collector::test
