// SPDX-License-Identifier: Apache-2.0
//
// The rules of docs/schema.md: what becomes of bytes, worked out once more and in words. The collectors
// have their own code for it, so a value that a rule gives here from the bytes that they had is
// confirmed.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace velhost {

using ByteView = std::span<const unsigned char>;

// The text of the bytes' value; empty: the rule gives nothing. nullopt: it is not worked out here, as
// it needs the collector's own tables, or the bytes have an odd form.
std::optional<std::string> appliedRule(std::string_view rule, ByteView bytes);

// "letters and digits only"; the rule itself where it is nobody's that is known here.
std::string ruleInWords(std::string_view rule);

// Bytes up to the first zero, as a text.
std::string textOf(ByteView bytes);

}  // namespace velhost
