// SPDX-License-Identifier: Apache-2.0
//
// What one instance is explained by, and what a line of origin finds in it. All of an instance's
// properties have to come from the same pieces, so that no line borrows another component's bytes.
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/explanation/evidence.h"

namespace velhost {

struct StringPlace {
  const Structure* structure = nullptr;
  std::size_t offset = 0;  // in the structure
  std::string text;
};

// Pointers into the evidence; null or empty: no such piece has a part in it.
struct View {
  std::vector<const Reply*>
      replies;  // one; what a BMC says of itself, asked without data, together
  std::map<int, const Structure*> structures;  // by type
  std::optional<StringPlace> string;
  const NKRXVEL20::host::PublishedInstance* instance = nullptr;
  unsigned instanceNumber = 0;  // of its class, from 1
  const FruDevice* fru = nullptr;
};

// Bytes that a line names, in the reply, structure, record, area or other instance's value that has
// them. The instance's text stands as bytes too.
struct NamedBytes {
  std::size_t offset = 0;  // of the first byte, from 0
  Bytes bytes;
  bool isOpen = false;      // a text whose encoding the bytes alone do not tell
  std::size_t missing = 0;  // of the bytes, at their end: not there, so they count as zero
};

// A line of IPMI.FRU that tells of the collector's own findings rather than of bytes.
inline constexpr std::string_view kWhatWasWrong = "what was wrong";

// nullopt: the view has nothing for the line.
std::optional<NamedBytes> placeOf(const Origin& origin, const View& view);

// The reply of the view that is to the line's command; null: none.
const Reply* replyFor(const Origin& origin, const View& view);
bool isReplyTo(const Origin& origin, const Reply& reply);

}  // namespace velhost
