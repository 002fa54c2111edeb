// SPDX-License-Identifier: Apache-2.0
//
// The request record of sendIPMICommand.
#pragma once

#include <cstddef>
#include <span>

namespace NKRXVEL20::host {

// Request: interface, responder address, network function, LUN, command, data length, data.
// Reply: the first four bytes as in the request, completion code, data.
inline constexpr std::size_t kIpmiNetworkFunctionOffset = 2;
inline constexpr std::size_t kIpmiLunOffset = 3;
inline constexpr std::size_t kIpmiCommandOffset = 4;
inline constexpr std::size_t kIpmiDataLengthOffset = 5;
inline constexpr std::size_t kIpmiRequestDataOffset = 9;
inline constexpr std::size_t kIpmiCompletionCodeOffset = 4;

// The caller's buffer; a capacity below 0 counts as 0.
std::span<unsigned char> ipmiBuffer(unsigned char* buffer, int capacity);

// The data length that the record tells, whatever the buffer holds. The buffer must reach to the
// data.
std::size_t ipmiDataLength(std::span<const unsigned char> buffer);

// The request record up to its data's end, or to the buffer's where that comes first.
std::span<const unsigned char> ipmiRequest(std::span<const unsigned char> buffer);

}  // namespace NKRXVEL20::host
