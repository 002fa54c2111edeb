// SPDX-License-Identifier: Apache-2.0
#include "velhost/rootobject.h"

#include <gtest/gtest.h>

#include <boost/make_shared.hpp>

#include "vel/rootobject.h"
#include "velhost/cimnamespace.h"

namespace NKRXVEL20 {
namespace {

TEST(RootObject, HandsOutThePluginManagerThatTheHostSet) {
  EXPECT_EQ(nullptr, TRootObject::GetPluginManager());
  const auto manager = boost::make_shared<host::CimNamespace>(std::vector<std::string>(),
                                                              std::vector<host::Fault>());
  host::setPluginManager(manager);
  EXPECT_EQ(manager, TRootObject::GetPluginManager());
  host::setPluginManager(nullptr);
  EXPECT_EQ(nullptr, TRootObject::GetPluginManager());
}

TEST(RootObject, HasOneCoreLogger) {
  EXPECT_EQ(&TRootObject::GetCoreLogger(), &TRootObject::GetCoreLogger());
}

}  // namespace
}  // namespace NKRXVEL20
