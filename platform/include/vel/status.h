// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

namespace NKRXVEL20 {

// What an operation reports instead of throwing. The numbers are the framework's; codes of the SP
// and SMBIOS libraries pass through where a caller hands them on.
struct TVELStatusCode {
  std::int32_t status = 0;
};

inline constexpr std::int32_t kStatusSuccess = 0;
inline constexpr std::int32_t kStatusFailure = 3;

}  // namespace NKRXVEL20
