// SPDX-License-Identifier: Apache-2.0
#include <algorithm>

#include "plugin/classnames.h"
#include "plugin/contains.h"
#include "plugin/corelog.h"
#include "plugin/dotcommand.h"
#include "plugin/spfirmwarevpd.h"
#include "plugin/textfields.h"
#include "spcommand/descriptorline.h"

using namespace NKRXVEL20;
using namespace spfirmwarevpd;

namespace {

constexpr std::size_t kTextLimit = 99;  // longest text of an "a" field

using PropertyMap = SPFirmwareVpd::PropertyMap;

// A command line, taken apart.
struct DescribedCommand {
  std::vector<unsigned char> path;
  std::string className;
};

// Walks the table once for each SP: a command, its fields, the next command.
class DescriptorWalk {
 public:
  DescriptorWalk(SPFirmwareVpd& plugin, SPLibrary& spLibrary)
      : plugin_(plugin), table_(plugin.spCommandTable), spLibrary_(spLibrary) {}

  std::vector<SPFirmwareVpd::ClassRecord> run() {
    const int count = spLibrary_.discoverSPs();
    for (int spIndex = 0; spIndex < count; ++spIndex) walkSP(spIndex);
    return std::move(records_);
  }

 private:
  void walkSP(int spIndex);
  DescribedCommand readCommand();
  bool send(const DescribedCommand& command, int spIndex);
  bool startFields();
  PropertyMap readGroup(const std::string& className, int spIndex);
  bool readField(const std::string& className, std::size_t offset, PropertyMap& properties);
  void readNumber(const std::string& className, std::size_t offset, PropertyMap& properties);
  void readText(std::size_t offset, PropertyMap& properties);
  std::string dateText(const std::string& text);
  bool hasLine() const { return lineIndex_ < table_.size(); }

  SPFirmwareVpd& plugin_;
  const std::vector<std::string>& table_;
  SPLibrary& spLibrary_;
  ReplyBuffer reply_{};
  std::string commandTrace_;  // never cleared: holds all command bytes read so far
  std::vector<SPFirmwareVpd::ClassRecord> records_;

  // The line that the walk stands on; reading a command takes it apart from the front.
  std::string_view line_;
  std::size_t lineIndex_ = 0;
  FieldLine field_;
};

void DescriptorWalk::walkSP(int spIndex) {
  if (table_.empty()) {
    logFailure("Failed to get sp commands!");
    return;
  }
  line_ = table_.front();
  logTrace(" starting to read data types of dotcommand ", table_.front());
  lineIndex_ = 0;
  do {
    const DescribedCommand command = readCommand();
    if (!send(command, spIndex)) {
      // No third try, whatever the words say. The line is not loaded anew, on purpose: the commands
      // that follow are empty, and an SP that failed twice is not asked for its other records.
      logPrevented(" cmd failed..trying again.. ");
      ++lineIndex_;
      continue;
    }
    if (!startFields()) return;
    records_.push_back({{command.className, readGroup(command.className, spIndex)}});
    ++lineIndex_;
  } while (hasLine());
}

DescribedCommand DescriptorWalk::readCommand() {
  reply_.fill(0);
  takeToken(line_);  // the type: whatever line the walk stands on is taken for a command line
  const int count = std::max(tokenNumber(takeToken(line_).value_or("0")), 0);
  DescribedCommand command;
  command.path.resize(static_cast<std::size_t>(count));
  for (unsigned char& byte : command.path) {
    const auto token = takeToken(line_);
    if (!token) continue;  // the byte stays 0
    logTrace(" reading dotcommand ", std::string(*token));
    commandTrace_ += *token;
    byte = static_cast<unsigned char>(tokenNumber(*token));
  }
  command.className = takeToken(line_).value_or("");
  logTrace("dotcommand ", commandTrace_);
  return command;
}

// Sends the command, and once more when that fails.
bool DescriptorWalk::send(const DescribedCommand& command, int spIndex) {
  const unsigned char noData = 0;
  dotCmd request(kDotCommandType, static_cast<int>(command.path.size()), 0, command.path.data(),
                 &noData);
  int replyLength = 0;  // fields are cut at the offsets of the table, whatever was sent
  const auto sendOnce = [&] {
    return spLibrary_.sendDotCommand(&request, reply_.data(), &replyLength, spIndex, kReplySize);
  };
  return sendOnce() || sendOnce();  // NOLINT(misc-redundant-expression): the SP may answer now
}

// Loads the first field line of the command that was answered. False: the table ends before it.
bool DescriptorWalk::startFields() {
  logProgress(" memset data ");
  logProgress("sent dotcommand to sp driver");
  // The first command's own line still counts as current; behind a later command it does not.
  if (lineIndex_ == 0) lineIndex_ = 1;
  if (!hasLine()) return false;
  line_ = table_[lineIndex_];
  return true;
}

// Cuts the reply by the field lines up to the next line of another kind. The first value of a name
// stays, so the diagnostics keep an empty Version.
PropertyMap DescriptorWalk::readGroup(const std::string& className, int spIndex) {
  const std::string spNumber = std::to_string(spIndex + 1);
  PropertyMap properties = {{"TargetOperatingSystem", ""},
                            {"SoftwareElementState", ""},
                            {"SourceNode", spNumber},
                            {"SoftwareElementID", spNumber}};
  if (contains(className, kDiagnosticClass)) properties.emplace("Version", "");

  field_.type.assign(1, 'x');  // no type of a field
  std::size_t offset = 0;
  while (true) {
    logProgress("spfirmwarevpd::getSPFirmwareVpd parsing for data type, length , description");
    field_.read(line_);
    if (!readField(className, offset, properties)) break;
    offset += static_cast<std::size_t>(std::max(field_.length, 0));
    ++lineIndex_;
    if (!hasLine()) break;
    line_ = table_[lineIndex_];
  }
  return properties;
}

// False for a line that is no field line.
bool DescriptorWalk::readField(const std::string& className, std::size_t offset,
                               PropertyMap& properties) {
  if (field_.type == "b") {
    readNumber(className, offset, properties);
  } else if (field_.type == "a") {
    readText(offset, properties);
  } else if (field_.type == "v") {
    properties.emplace("Version", "");
  } else if (field_.type != "r") {
    return false;
  }
  return true;
}

void DescriptorWalk::readNumber(const std::string& className, std::size_t offset,
                                PropertyMap& properties) {
  const bool isThere = field_.length > 0 && offset < reply_.size();
  const std::string number = std::to_string(isThere ? reply_.at(offset) : 0);
  properties.emplace(field_.name, number);
  if (contains(className, kHardwareRevisionClass) && contains(field_.name, "Hardwarelevel")) {
    properties.emplace("Version", number);
  }
}

void DescriptorWalk::readText(std::size_t offset, PropertyMap& properties) {
  const auto length = static_cast<std::size_t>(std::max(field_.length, 0));
  const std::string text = cutText(reply_, offset, std::min(length, kTextLimit));
  properties.emplace(field_.name, contains(field_.name, "BuildDate") ? dateText(text) : text);
}

// A date that cannot be converted keeps the date-time's own text.
std::string DescriptorWalk::dateText(const std::string& text) {
  if (text.empty()) return text;
  TCIMDateTime value;
  const TVELStatusCode result = plugin_.doTime({}, "BuildDate", text, value, true);
  if (result.status == kStatusFailure) logFailure("failed to create CIMDateTime");
  return value.ToString();
}

}  // namespace

std::vector<SPFirmwareVpd::ClassRecord> SPFirmwareVpd::getParseVPD(SPLibrary* spLibrary,
                                                                   NamespaceHandle /*ns*/) {
  return DescriptorWalk(*this, *spLibrary).run();
}
