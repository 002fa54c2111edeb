// SPDX-License-Identifier: Apache-2.0
//
// What nearly every test reads first, compiled once for all of them. A test still includes what it uses.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>
