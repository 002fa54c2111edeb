// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <vector>

namespace velhost {

// The texts of a field: zero bytes end texts, and the blanks around a text are none of it.
std::vector<std::span<unsigned char>> textsIn(std::span<unsigned char> field);

// A binary number whose bytes are all 00 or all FF says that there is none.
bool isNumber(std::span<const unsigned char> field);

// Gives each value a stand-in of the same shape: a digit for each digit, a letter for each letter
// (those that are hexadecimal digits stay so), all other characters as they are. Equal values get
// equal ones and different values of one shape different ones, as long as the shape has enough.
// Values are counted as they come, so the same values in the same order always get the same
// stand-ins, and stand-ins get themselves.
class Pseudonyms {
 public:
  // The stand-in of a value. What has no digit and no letter is its own.
  const std::string& of(const std::string& value);

  // Replaces the texts of a field in place; what is between them stays.
  void replaceText(std::span<unsigned char> field);

  // Replaces a binary number in place, as the text of its hexadecimal digits would be. What says
  // that there is none stays.
  void replaceBytes(std::span<unsigned char> field);

 private:
  std::map<std::string, std::string> known_;
  std::map<std::string, std::uint64_t> countOfShape_;
};

}  // namespace velhost
