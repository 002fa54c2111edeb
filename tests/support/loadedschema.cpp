// SPDX-License-Identifier: Apache-2.0
//
// Sets the schema of the test program before its first test.
#include <gtest/gtest.h>

#include "velhost/schema.h"

namespace {

class LoadedSchema : public testing::Environment {
 public:
  void SetUp() override { NKRXVEL20::host::setSchema(NKRXVEL20::host::readSchema(SCHEMA_DIR)); }
};

const testing::Environment* const kLoaded = testing::AddGlobalTestEnvironment(new LoadedSchema);

}  // namespace
