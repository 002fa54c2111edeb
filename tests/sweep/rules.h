// SPDX-License-Identifier: Apache-2.0
//
// What the documents promise of a call that fails, stated once and without a look at the plug-in.
//
// - An exception of the framework's own, TVELException, is caught where an instance is made and
//   where a property of it is set: the call's text is logged, nothing more is set in the instance
//   and it is not published.
// - What that ends besides the instance differs from collector to collector: Aftermath.
// - It is caught as well where the USB devices and the IPMI FRU records of others are looked for.
// - Everywhere else it passes out of the request, and every other exception does so everywhere.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "tests/sweep/trace.h"

namespace sweep {

// What a refused instance takes with it.
enum class Aftermath {
  kNothing,           // the next instance is made
  kOemDiagnostics,    // its closing log entry is not written
  kOtherNodes,        // of the same look at all nodes, nothing more is made
  kFirmwareOfSmbios,  // the others are made; the driver then says that some are missing
  kTamber,            // the driver says so, and SMBIOS is asked for the firmware instead
  kSystemBios,        // the walk through SMBIOS is abandoned; the driver says so
};

struct SettingRule {
  const char* property;
  const char* text;       // logged when it is refused
  bool optional = false;  // not set where the machine does not tell it
};

// How a collector makes its instances: the settings in their order.
struct InstanceRule {
  const char* className;
  const char* creationText;
  std::span<const SettingRule> settings;
  Aftermath aftermath;
};

// The one whose settings are those made; null: an SP firmware record.
const InstanceRule* ruleOf(const std::string& className, const std::vector<std::string>& settings);

// SP firmware records: the texts hold the class or the property.
std::string recordCreationText(const std::string& className);
std::string recordSettingText(const std::string& property, bool isFirstName);

// What is logged for a component whose command is not answered.
struct ComponentRule {
  const char* path;  // the first four bytes of the command
  const char* data;
  bool isNumbered;  // the text has the instance's number before it
  const char* text;
};
const ComponentRule* componentRule(const std::string& command, const std::string& data);

// "DIMM  3 VPD not populated."
std::string numbered(const std::string& name, const std::string& command, const std::string& text);

// The descriptor table's line on which the walk stands behind the group of the line given, and how
// many lines there are.
inline constexpr int kDescriptorLines = 31;
int lineBehindGroup(int line);

// The entries of the system BIOS from its SP's record.
bool isPostBiosProperty(const std::string& property);

// A trace of the search for firmware of SPs in SMBIOS, on machines that name absent ones.
bool isBrennaTrace(const Event& event);

// The level in a cKVM device's reply; false: the reply is none, and `text` is logged.
struct LevelReply {
  bool isGood = false;
  std::string level = {};
  std::string text = {};
};
LevelReply readLevel(const std::vector<unsigned char>& record, int length);

// The build text of a Tamber reply.
std::string tamberText(const std::vector<unsigned char>& reply, int length);

}  // namespace sweep
