// SPDX-License-Identifier: Apache-2.0
//
// A plug-in object on the spying platform, on a machine that a test describes.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "plugin/spfirmwarevpd.h"
#include "tests/spyplatform/core.h"
#include "tests/spyplatform/recorder.h"
#include "tests/spyplatform/script.h"

namespace spyplatform {

class SpyTest : public ::testing::Test {
 public:
  SpyTest();
  ~SpyTest() override;

  SpyTest(const SpyTest&) = delete;
  SpyTest& operator=(const SpyTest&) = delete;

 protected:
  void load();  // a new object, after its Init
  // A request for the classes.
  void query(const std::vector<std::string>& classNames);

  static Trace takeTrace();

  NKRXVEL20::SPLibrary* sp();

  boost::shared_ptr<NKRXVEL20::ICIMNamespace> ns;
  std::unique_ptr<SPFirmwareVpd> plugin;
};

}  // namespace spyplatform
