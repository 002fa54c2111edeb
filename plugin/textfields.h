// SPDX-License-Identifier: Apache-2.0
//
// Text fields of the fixed-layout records that SPs reply with.
#pragma once

#include <algorithm>
#include <cstddef>
#include <span>
#include <string>

#include "collectors/support/ciminstance.h"

namespace spfirmwarevpd {

using RecordBytes = std::span<const unsigned char>;

// The bytes of a field up to the first zero byte; what lies outside the record is left out.
std::string cutText(RecordBytes record, std::size_t offset, std::size_t length);

// What becomes of a field without text.
enum class Empty { kKeep, kSpace };

// " " for an empty text under Empty::kSpace.
std::string orSpace(std::string text, Empty empty = Empty::kSpace);

struct TextField {
  const char* property{};
  std::size_t offset{};
  std::size_t length{};
  const char* failureText{};  // logged when the framework refuses the value
  Empty empty = Empty::kKeep;
};

// Every row lies within the record.
constexpr bool allWithin(std::span<const TextField> fields, std::size_t recordSize) {
  return std::ranges::all_of(
      fields, [=](const TextField& field) { return field.offset + field.length <= recordSize; });
}

// Sets the fields' properties in the order of the rows up to the first refusal, and returns false
// then.
bool setTextFields(const collector::InstanceHandle& instance, std::span<const TextField> fields,
                   RecordBytes record);

}  // namespace spfirmwarevpd
