// SPDX-License-Identifier: Apache-2.0
namespace {

[[gnu::constructor]] void fail() { throw 42; }

}  // namespace
