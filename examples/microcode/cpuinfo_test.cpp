// SPDX-License-Identifier: Apache-2.0
#include "cpuinfo.h"

#include <iostream>
#include <sstream>

namespace {

// A line a package: "NUMBER PROCESSOR|SIGNATURE|REVISION".
std::string told(const std::string& cpuinfo) {
  std::istringstream text(cpuinfo);
  std::string lines;
  for (const auto& [package, processor, signature, revision] : microcode::microcodeOf(text)) {
    lines += std::to_string(package) + ' ' + processor + '|' + signature + '|' + revision + '\n';
  }
  return lines;
}

const struct {
  const char* what;
  const char* cpuinfo;
  const char* expected;
} kCases[] = {
    {"nothing", "", ""},
    {"a kernel that tells no microcode", "processor\t: 0\ncpu family\t: 6\n\n", ""},
    {"all that is used",
     "processor\t: 0\ncpu family\t: 6\nmodel\t\t: 85\nmodel name\t: A : B\nstepping\t: 11\n"
     "microcode\t: 0x1a\nphysical id\t: 3\n\n",
     "3 A : B|06-55-0b|0x1a\n"},
    {"no topology, no family", "microcode\t: 0x1\n\nmicrocode\t: 0x1\n", "0 ||0x1\n"},
    {"an unnamed processor", "microcode: 0x1\nmodel name:  \ncpu family: 25\n",
     "0 |19-00-00|0x1\n"},
    {"packages out of order", "microcode: 0x2\nphysical id: 1\n\nmicrocode: 0x1\nphysical id: 0\n",
     "0 ||0x1\n1 ||0x2\n"},
    {"several of a package: the first one",
     "microcode: 0x7\n\nmicrocode: 0x8\n\nmicrocode: 0x9\nphysical id: 2\n", "0 ||0x7\n2 ||0x9\n"},
};

}  // namespace

int main() {
  int failures = 0;
  for (const auto& c : kCases) {
    if (told(c.cpuinfo) == c.expected) continue;
    std::cerr << c.what << ": got\n" << told(c.cpuinfo) << "instead of\n" << c.expected;
    ++failures;
  }
  return failures == 0 ? 0 : 1;
}
