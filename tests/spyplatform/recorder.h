// SPDX-License-Identifier: Apache-2.0
//
// What the spying platform writes down and what it was told to answer. The platform is the four
// framework libraries once more, behind the same public headers, and nothing of the real ones:
// every call that a plug-in makes becomes a line of text with every argument.
#pragma once

#include <boost/shared_ptr.hpp>
#include <functional>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "vel/cimvalue.h"
#include "vel/exception.h"
#include "vel/export.h"
#include "vel/plugin.h"

namespace spyplatform {

using Bytes = std::vector<unsigned char>;
using Trace = std::vector<std::string>;

// Thrown where a rule says so. It is no std::exception: nobody catches it by habit.
struct VEL_API Foreign {};

// What a call does instead of its usual answer.
struct Outcome {
  enum class Kind { kUsual, kNumber, kReply, kNull, kRefusal, kForeign };

  Kind kind = Kind::kUsual;
  int number = 0;  // what it returns, the code of its refusal, the length of its reply
  Bytes reply;
};

inline Outcome returns(int number) { return {Outcome::Kind::kNumber, number, {}}; }
inline Outcome replies(const Bytes& bytes, int length) {
  return {Outcome::Kind::kReply, length, bytes};
}
inline Outcome replies(const Bytes& bytes) {
  return replies(bytes, static_cast<int>(bytes.size()));
}
inline Outcome null() { return {Outcome::Kind::kNull, 0, {}}; }
inline Outcome refuses(int code) { return {Outcome::Kind::kRefusal, code, {}}; }
inline Outcome throwsForeign() { return {Outcome::Kind::kForeign, 0, {}}; }

// Which calls have the outcome. Of several rules for a call the last one counts.
struct Rule {
  std::string operation;           // the call's name, as "SetProperty"
  std::vector<std::string> parts;  // all stand in the call's line
  Outcome outcome;
  int nth = 0;                   // only the nth of those calls, from 1; 0: each
  std::function<void()> action;  // runs when the call is made; such a rule has no outcome
  int seen = 0;
};

// A structure of the SMBIOS table and the status of its read.
struct Structure {
  Bytes bytes;
  int status = 0;
};

using PropertyValues = std::map<std::string, NKRXVEL20::TCIMValue>;

// A dot command that was made, and what a send was given: what their addresses tell.
struct Made {
  std::string name;  // dotCmd#1
  bool onStack;
};
struct Sent {
  unsigned char* reply;
  int* replyLength;
};

// All that the platform knows: one machine at a time.
struct State {
  // The machine. What its service processors answer are rules.
  std::vector<Rule> rules;
  std::string machineType;
  std::vector<Structure> structures;
  std::map<std::string, std::vector<PropertyValues>> published;  // by other collectors, by class

  // What happened.
  Trace trace;
  std::vector<std::string> operations;  // the names of the calls
  std::vector<Made> made;
  std::vector<Sent> sent;
  NKRXVEL20::IPluginCallbacks* registered = nullptr;
  boost::shared_ptr<NKRXVEL20::ICIMNamespace> pluginManager;  // see installPluginManager()

  std::thread::id firstThread;
  std::map<std::string, int> created;  // how many of a kind, so far
  bool loggerFetched = false;
  bool muted = false;  // while the platform itself uses what it offers
};

VEL_API State& state();

// Another machine; nothing has happened. The plug-in manager stays.
VEL_API void reset();

// "dotCmd#3" for the third of its kind.
VEL_API std::string nextName(const std::string& kind);

// "a text" in quotes, with \n for the end of a line.
VEL_API std::string quoted(const std::string& text);

// "04 03 05"
VEL_API std::string hex(const unsigned char* bytes, int count);

// "2048 zero bytes", "256 bytes 01 20 06, then zeros", "4096 bytes 41 42 43 ..." or "null".
VEL_API std::string describeBytes(const unsigned char* bytes, int count);

inline std::string describeBool(bool value) { return value ? "true" : "false"; }

// Nothing is written down while it lives.
class Muted {
 public:
  Muted() : before_(state().muted) { state().muted = true; }
  ~Muted() { state().muted = before_; }
  Muted(const Muted&) = delete;
  Muted& operator=(const Muted&) = delete;

 private:
  bool before_;
};

// One call. Looks up its outcome when it is made.
class VEL_API Call {
 public:
  Call(const std::string& operation, std::string line);

  // Throws what the rule says, and writes that down.
  void obey() const {
    if (outcome_.kind == Outcome::Kind::kRefusal) {
      writeDown(" throws TVELException(" + std::to_string(outcome_.number) + ")");
      const Muted muted;
      throw NKRXVEL20::TVELException(outcome_.number, "refused");
    }
    if (outcome_.kind == Outcome::Kind::kForeign) {
      writeDown(" throws something foreign");
      throw Foreign{};
    }
  }

  bool isNull() const { return outcome_.kind == Outcome::Kind::kNull; }
  int numberOr(int usual) const {
    return outcome_.kind == Outcome::Kind::kNumber ? outcome_.number : usual;
  }
  // The reply and its length; null when there is none.
  const Outcome* reply() const {
    return outcome_.kind == Outcome::Kind::kReply ? &outcome_ : nullptr;
  }

  // The line, with what came of the call behind it.
  void writeDown(const std::string& result = {}) const;

 private:
  std::string line_;
  Outcome outcome_;
};

// A call that may be refused.
inline Call begin(const std::string& operation, const std::string& line) {
  const Call call(operation, line);
  call.obey();
  return call;
}

}  // namespace spyplatform
