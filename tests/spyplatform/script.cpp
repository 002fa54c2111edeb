// SPDX-License-Identifier: Apache-2.0
#include "tests/spyplatform/script.h"

#include <algorithm>
#include <iterator>

namespace spyplatform {

Bytes joined(std::initializer_list<Bytes> pieces) {
  Bytes result;
  for (const Bytes& piece : pieces) result.insert(result.end(), piece.begin(), piece.end());
  return result;
}

Bytes text(const std::string& text, std::size_t size) {
  Bytes result(text.begin(), text.end());
  result.resize(size);
  return result;
}

Bytes zeros(std::size_t size) { return Bytes(size); }

Structure biosInformation() {
  return {joined({{0, 24, 0, 0},  // type, length, handle
                  {1, 2},         // vendor, version: string numbers
                  {0x00, 0xE0},   // starting address segment, little-endian
                  {3},            // release date: string number
                  {0x3F},         // ROM size
                  zeros(14),
                  text("Maker", 6),
                  text("1.08 [ABC123]", 14),
                  text("03/15/07", 9),
                  zeros(1)})};
}

Structure oemStrings(const std::vector<std::string>& strings) {
  Bytes bytes = {11, 5, 0, 0, static_cast<unsigned char>(strings.size())};
  for (const std::string& string : strings) {
    bytes = joined({bytes, text(string, string.size() + 1)});
  }
  return {joined({bytes, zeros(1)})};
}

Bytes firmwareRecord(const std::string& fileName) {
  return joined({text("BUILD07", 7),   // build number
                 {0xFF, 0xFF, 0xFF},   // reserved
                 text(fileName, 12),   // file name
                 {0xAB},               // checksum
                 text("03/15/07", 8),  // build date
                 {9},                  // version
                 text("PART-008", 8)});
}

Bytes nodeRecord() {
  return joined({text("HD", 2),            // header
                 text("SIG", 3),           // signature
                 {'L'},                    // length
                 zeros(7),                 // reserved
                 text("BUILD-009", 9),     // build number
                 text("SERIAL7", 7),       // serial number
                 text("UNIQUE-ID11", 11),  // unique identifier
                 text("5010AC1", 7),       // machine type-model
                 {0x21},                   // checksum
                 text("03/15/07", 8),      // build date
                 text("NODEFILE.ROM", 12),
                 {'7'}});  // version
}

Bytes componentRecord(const std::string& fruNumber) {
  return joined({zeros(14), text("PART-NUMBER1", 12), text(fruNumber, 12), text("SER006", 6),
                 zeros(6), text("VEND", 4), text("S", 1)});
}

Bytes dimmRecord() {
  return joined({zeros(64),
                 {0x7F, 0x7F, 0x9E, 0, 0, 0, 0, 0},  // bank 3, code 1E with its parity bit
                 text("Q", 1),                       // location
                 text("DIMM-PART", 18),
                 text("R2", 2),
                 {0x07, 0x20},  // manufacturing date
                 {0x01, 0xAB, 0x00, 0x7F}});
}

Bytes planarRecord() { return joined({text("PSER06", 6), text("PLANAR-PART1", 12)}); }

void when(const std::string& operation, const std::vector<std::string>& parts,
          const Outcome& outcome, int nth) {
  state().rules.push_back({operation, parts, outcome, nth, {}});
}

void when(const std::string& operation, const Outcome& outcome, int nth) {
  when(operation, std::vector<std::string>{}, outcome, nth);
}

void whenSent(const std::string& request, int spIndex, const Outcome& outcome, int nth) {
  when("sendDotCommand", {" " + request + ",", "SP " + std::to_string(spIndex) + ","}, outcome,
       nth);
}

void whenever(const std::string& operation, const std::vector<std::string>& parts, int nth,
              const std::function<void()>& action) {
  state().rules.push_back({operation, parts, {}, nth, action});
}

std::string difference(const Trace& calls, const Trace& expected) {
  const auto [call, line] =
      std::mismatch(calls.begin(), calls.end(), expected.begin(), expected.end());
  if (call == calls.end() && line == expected.end()) return "";
  std::string result = "call " + std::to_string(call - calls.begin() + 1) + "\n";
  for (auto before = call - std::min<std::ptrdiff_t>(call - calls.begin(), 5); before != call;
       ++before) {
    result += "           " + *before + "\n";
  }
  result += "  made:     " + (call == calls.end() ? "nothing" : *call) + "\n";
  return result + "  expected: " + (line == expected.end() ? "nothing" : *line) + "\n";
}

Trace linesWith(const Trace& calls, const std::string& part) {
  Trace result;
  std::ranges::copy_if(calls, std::back_inserter(result), [&](const std::string& line) {
    return line.find(part) != std::string::npos;
  });
  return result;
}

}  // namespace spyplatform
