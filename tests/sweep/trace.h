// SPDX-License-Identifier: Apache-2.0
//
// What the plug-in does while it is asked, one event a call or log entry.
#pragma once

#include <array>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

namespace sweep {

enum class Kind {
  // Calls that are made to fail, each counted by itself.
  kClassLookup,
  kClassName,
  kEnumeration,
  kCreation,
  kPropertyRead,
  kValueRead,
  kPropertySet,
  kAddToClass,
  kDriverCall,  // of the SP driver, without a command to an SP
  kDotCommand,
  kTamberCommand,
  kIpmiCommand,
  kSmbiosRead,  // by the plug-in, of types 0 and 11
  // The rest.
  kSmbiosClose,
  kCoreLog,
  kFailureLog,
  kThrown,  // out of the request
};
inline constexpr std::size_t kKinds = static_cast<std::size_t>(Kind::kThrown) + 1;

struct Event {
  Kind kind = Kind::kThrown;
  std::string what;    // class, operation, command, type of a structure, severity, exception
  std::string detail;  // property, data and SP of a command
  std::string value;   // that was set, published, logged, or a read's status
  bool fails = false;

  // Not compared.
  int instance = -1;                                             // made by this request
  std::shared_ptr<const std::vector<unsigned char>> reply = {};  // buffer of a Tamber or IPMI reply
  int length = 0;                                                // of that reply

  friend bool operator==(const Event& a, const Event& b) {
    return a.kind == b.kind && a.fails == b.fails && a.what == b.what && a.detail == b.detail &&
           a.value == b.value;
  }
};

using Trace = std::vector<Event>;

std::ostream& operator<<(std::ostream& out, const Event& event);

// Empty for equal traces; otherwise where they part, with some lines of both.
std::string difference(const Trace& expected, const Trace& actual);

Event coreLog(int severity, const std::string& text);
Event failureLog(const std::string& text);
Event thrown(const std::string& what);

}  // namespace sweep
