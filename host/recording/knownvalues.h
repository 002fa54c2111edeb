// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace velhost {

// Values that are to go wherever they stand, and what is put in their places. A value is looked for
// - as a text of ASCII and of UTF-16 (the lower byte first), in upper and lower case;
// - as bytes, where it is hexadecimal digits: those of a UUID, with or without its dashes, in both
//   byte orders (DSP0134, 7.2.1), and the UUID as texts too; other numbers of at least 4 bytes.
class KnownValues {
 public:
  // The replacement has the value's length, and a hexadecimal digit for each of one. Of two for one
  // value the first counts. A value that could stand anywhere by chance is not looked for: a text of
  // fewer than 4 characters, of one character repeated or that only says that there is none; a number
  // shorter than a UUID of which fewer than 3 bytes are neither 00 nor FF, or all are characters of
  // ASCII.
  void add(const std::string& value, const std::string& replacement);

  // To be called between the last add and the first replaceIn.
  void seal();

  // From the start on, the longest that stands at a place; what was put there stays.
  void replaceIn(std::span<unsigned char> bytes) const;

 private:
  struct Form {
    std::string key;  // what is compared, cut to the longest that is looked at
    std::string value;
    std::string replacement;
  };
  using Forms = std::vector<Form>;

  void addText(const std::string& value, const std::string& replacement);
  void addBytes(const std::string& value, const std::string& replacement);
  void addUuid(const std::string& value, const std::string& replacement);

  Forms texts_;
  Forms numbers_;
};

}  // namespace velhost
