// SPDX-License-Identifier: Apache-2.0
//
// The calls that a collection makes, written down by hand from what each collector is to do, for
// the structures and records of script.h. Repeated stretches are operations; each appends its
// lines.
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "tests/spyplatform/recorder.h"

namespace spyplatform {

// Values as the lines show them, texts in quotes.
std::string u8(int value);
std::string u16(int value);
std::string date(const std::string& timestamp);

// A property and its value, as its line shows that.
using Setting = std::pair<std::string, std::string>;

// A string of the OEM structure and its letters and digits, none for a blank one.
struct OemString {
  std::string text;
  std::string copy;
};

// What a machine's SP knows of a component: how its instance is named.
struct ComponentNames {
  std::string name;       // with the node, as the instance has it
  std::string nodeLabel;  // empty on a machine with one SP
};

class ExpectedCalls {
 public:
  const Trace& lines() const { return lines_; }

  // ---- single calls
  void call(const std::string& line);
  void log(int severity, const std::string& text);
  void trace(const std::string& text, const std::string& value);  // two entries of severity 3
  void says(const std::string& operation, bool answer);   // of the SP library, without arguments
  void counts(const std::string& operation, int answer);  // the same, a number
  void getClass(const std::string& className);
  void enumerate(const std::string& className, int count);  // the look-up and the enumeration
  std::string create(const std::string& className);         // the look-up and the instance's name
  void set(const std::string& instance, const std::string& property, const std::string& value);
  void set(const std::string& instance, const std::vector<Setting>& settings);

  // ---- the object and the query
  void construction();
  void publish(const std::string& className, const std::vector<std::string>& instances = {});

  // ---- SMBIOS
  void openSmbios();
  void firstStructure(int type);
  void noNextStructure();
  void closeSmbios();
  void smbiosString(int windowSize, const std::string& strings, int number,
                    const std::string& text);
  void oemStrings(const std::vector<OemString>& strings);
  void noOemStrings();
  void machineType(const std::string& type);
  void split(const std::string& text, const std::string& cleaned, const std::string& version,
             const std::string& build);
  std::string diagnosticsOfOemString(const std::string& level, const std::string& version,
                                     const std::string& shownVersion, const std::string& build);
  std::string diagnosticsOfNode(int node);  // behind its SP's answer

  // The walk over the one structure; `nodes` as the SP library gives it, with a POST/BIOS record
  // from each node where the SP speaks dot commands. Returns the instances.
  std::vector<std::string> systemBios(const std::string& machineType, int nodes, bool isUefi,
                                      bool isDotCommand);
  std::string firmwareOfOemString(const std::string& elementId, const OemString& oemString);

  // ---- service processors
  std::string makeDotCommand(const std::string& path);
  std::string makeDotCommand(const std::string& path, const std::string& data);
  // The length before the send, then the reply's; -1: the send fails.
  void sendDotCommand(const std::string& command, int lengthBefore, int spIndex, int length);
  void destroy(const std::string& object);

  // The descriptor walk of one SP that answers everything; a diagnostics record of zeros has no
  // date to convert.
  void descriptorWalk(int spIndex, bool hasDiagnostics);

  // The instance of one record, and the entries that go with it.
  std::string recordInstance(const std::string& className, const std::string& ownName,
                             const std::string& node, const std::vector<Setting>& settings);
  std::string firmwareRecord(const std::string& className, const std::string& spName,
                             const std::string& node, const std::string& fileName);
  std::string hardwareRecord(const std::string& node, const std::string& level);
  std::string diagnosticsRecord(const std::string& node);

  // One instance of another collector's that names an SP.
  void computerSystem(int index, int node, const std::string& description);

  void buildCommandLists();
  // A component's request from its construction to its destruction, with what is done about the
  // reply in between.
  void exchange(const std::string& path, const std::string& data, int lengthBefore, int spIndex,
                int length, const std::function<void()>& handle);
  void countComponents(const std::string& path, int count);
  std::string component(const ComponentNames& names, const std::string& fruNumber);
  std::string dimm(const std::string& nodeLabel, int number);
  std::string planar(const ComponentNames& names);
  void componentMissing(const std::string& failureLogText);

 private:
  void descriptorGroup(int spIndex, int index, bool hasDate);
  void biosElement(const std::string& instance, int node, int nodes, bool isUefi,
                   bool isDotCommand);

  Trace lines_;
  int instances_ = 0;
  int dotCommands_ = 0;
  std::string commandTrace_;  // of the descriptor walk
};

}  // namespace spyplatform
