// SPDX-License-Identifier: Apache-2.0
#include "cpuinfo.h"

#include <charconv>
#include <iomanip>
#include <istream>
#include <map>
#include <sstream>
#include <string_view>

namespace microcode {
namespace {

using Fields = std::map<std::string, std::string, std::less<>>;  // of one logical processor

std::string trimmed(std::string_view text) {
  constexpr const char* kBlanks = " \t";
  const auto begin = text.find_first_not_of(kBlanks);
  if (begin == std::string_view::npos) return "";
  return std::string(text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1));
}

// A paragraph of "name : value" lines for each.
std::vector<Fields> logicalProcessors(std::istream& cpuinfo) {
  std::vector<Fields> processors(1);
  for (std::string line; std::getline(cpuinfo, line);) {
    const auto colon = line.find(':');
    if (line.empty()) processors.emplace_back();
    if (colon == std::string::npos) continue;
    processors.back()[trimmed(line.substr(0, colon))] = trimmed(line.substr(colon + 1));
  }
  return processors;
}

std::string text(const Fields& fields, std::string_view name) {
  const auto field = fields.find(name);
  return field == fields.end() ? "" : field->second;
}

// 0 for what is no number: a kernel without topology gives no "physical id".
std::uint16_t number(const Fields& fields, std::string_view name) {
  const std::string digits = text(fields, name);
  std::uint16_t value = 0;
  std::from_chars(digits.data(), digits.data() + digits.size(), value);
  return value;
}

std::string signature(const Fields& fields) {
  if (text(fields, "cpu family").empty()) return "";
  std::ostringstream text;
  text << std::hex << std::setfill('0') << std::setw(2) << number(fields, "cpu family") << '-'
       << std::setw(2) << number(fields, "model") << '-' << std::setw(2)
       << number(fields, "stepping");
  return text.str();
}

}  // namespace

std::vector<Microcode> microcodeOf(std::istream& cpuinfo) {
  std::map<std::uint16_t, Microcode> packages;
  for (const Fields& fields : logicalProcessors(cpuinfo)) {
    const std::uint16_t package = number(fields, "physical id");
    const std::string revision = text(fields, "microcode");
    if (revision.empty()) continue;
    packages.try_emplace(
        package, Microcode{package, text(fields, "model name"), signature(fields), revision});
  }
  std::vector<Microcode> list;
  list.reserve(packages.size());
  for (const auto& [number, microcode] : packages) list.push_back(microcode);
  return list;
}

}  // namespace microcode
