// SPDX-License-Identifier: Apache-2.0
//
// Where a machine's serial numbers, asset tags and unique ids stand.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

#include "host/text/hextext.h"

namespace velhost {

enum class Notation {
  kText,      // texts with zero bytes between and behind them
  kWideText,  // one in UTF-16, the lower byte first
  kBcdPlus,   // two characters a byte, the higher four bits first (IPMI 2.0, 43.15)
  kSixBit,    // four characters in three bytes, the lowest bits first
  kNumber,    // binary; of only 00 or only FF bytes: there is none
};

struct IdentifyingField {
  std::size_t offset;
  std::size_t size;  // ends with what it stands in at the latest
  Notation notation;

  bool operator==(const IdentifyingField&) const = default;
};

using IdentifyingFields = std::vector<IdentifyingField>;

// Of an SMBIOS structure, header and string set included, however it is cut.
IdentifyingFields fieldsOfStructure(std::span<unsigned char> structure);

// Of the reply to a dot command.
IdentifyingFields fieldsOfReply(const Bytes& command, std::size_t replySize);

// Of the reply to an IPMI request.
IdentifyingFields fieldsOfIpmiReply(const Bytes& request, std::size_t replySize);

// Of a FRU device.
IdentifyingFields fieldsOfFru(std::span<const unsigned char> device);

// Of a text property of an instance, of whatever class.
IdentifyingFields fieldsOfProperty(std::string_view name, std::string_view text);

}  // namespace velhost
