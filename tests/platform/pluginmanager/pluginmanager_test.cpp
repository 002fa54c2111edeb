// SPDX-License-Identifier: Apache-2.0
#include "vel/pluginmanager.h"

#include <gtest/gtest.h>

#include "vel/exception.h"

namespace NKRXVEL20 {
namespace {

TEST(PluginManagerNamespace, HasNoClasses) {
  TPluginManagerNamespace manager;
  try {
    manager.GetClass("KRXSG_Vpd", {});
    FAIL() << "no exception";
  } catch (const TVELException& e) {
    EXPECT_EQ(5, e.GetCode());
    EXPECT_EQ("the plug-in manager has no class KRXSG_Vpd", std::string(e.what()));
  }
}

}  // namespace
}  // namespace NKRXVEL20
