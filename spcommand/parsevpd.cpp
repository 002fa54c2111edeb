// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cstdint>
#include <memory>

#include "collectors/support/contains.h"
#include "collectors/support/corelog.h"
#include "plugin/classnames.h"
#include "plugin/dotcommand.h"
#include "plugin/spfirmwarevpd.h"
#include "plugin/textfields.h"
#include "spcommand/descriptorline.h"

using namespace NKRXVEL20;
using namespace collector;
using namespace spfirmwarevpd;

namespace {

constexpr std::size_t kTextLimit = 99;  // longest text of an "a" field

using PropertyMap = SPFirmwareVpd::PropertyMap;

// A command line, taken apart. A command of no bytes has an array of no bytes: the driver is never
// handed a null pointer.
struct DescribedCommand {
  int count = 0;
  std::unique_ptr<unsigned char[]> path;
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
  bool send(dotCmd& request, int spIndex);
  bool startFields();
  PropertyMap readGroup(const std::string& className, int spIndex);
  bool readField(const std::string& className, RecordBytes field, PropertyMap& properties);
  void readNumber(const std::string& className, RecordBytes field, PropertyMap& properties);
  void readText(RecordBytes field, PropertyMap& properties);
  RecordBytes replyFrom(std::int64_t offset) const;
  std::string dateText(const std::string& text);
  bool hasLine() const { return lineIndex_ < table_.size(); }

  SPFirmwareVpd& plugin_;
  const std::vector<std::string>& table_;
  SPLibrary& spLibrary_;
  ReplyBuffer reply_{};
  std::string commandTrace_;  // never cleared: holds all command bytes read so far
  std::vector<SPFirmwareVpd::ClassRecord> records_;

  // A copy of the line that the walk stands on; reading a command takes it apart from the front.
  std::string line_;
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
    const unsigned char noData = 0;
    const auto request =
        std::make_unique<dotCmd>(kDotCommandType, command.count, 0, command.path.get(), &noData);
    if (!send(*request, spIndex)) {
      // No third try, whatever the words say. The line is not loaded anew, on purpose: the commands
      // that follow are empty, and an SP that failed twice is not asked for its other records.
      logPrevented(" cmd failed..trying again.. ");
      ++lineIndex_;
      continue;
    }
    if (!startFields()) return;
    records_.emplace_back().emplace(command.className, readGroup(command.className, spIndex));
    ++lineIndex_;
  } while (hasLine());
}

DescribedCommand DescriptorWalk::readCommand() {
  reply_.fill(0);
  takeToken(line_);  // the type: whatever line the walk stands on is taken for a command line
  DescribedCommand command;
  command.count = std::max(tokenNumber(takeToken(line_).value_or("0")), 0);
  command.path = std::make_unique<unsigned char[]>(static_cast<std::size_t>(command.count));
  for (int i = 0; i < command.count; ++i) {
    const auto token = takeToken(line_);
    if (!token) continue;  // the byte stays 0
    logTrace(" reading dotcommand ", *token);
    commandTrace_ += *token;
    command.path[static_cast<std::size_t>(i)] = static_cast<unsigned char>(tokenNumber(*token));
  }
  command.className = takeToken(line_).value_or("");
  logTrace("dotcommand ", commandTrace_);
  return command;
}

// Sends the command, and once more when that fails.
bool DescriptorWalk::send(dotCmd& request, int spIndex) {
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
  std::int64_t offset = 0;
  while (true) {
    logProgress("spfirmwarevpd::getSPFirmwareVpd parsing for data type, length , description");
    field_.read(line_);
    if (!readField(className, replyFrom(offset), properties)) break;
    offset += field_.length;  // a negative length moves it back
    ++lineIndex_;
    if (!hasLine()) break;
    line_ = table_[lineIndex_];
  }
  return properties;
}

// The reply from the offset on; nothing of it when the offset lies outside.
RecordBytes DescriptorWalk::replyFrom(std::int64_t offset) const {
  if (offset < 0 || offset >= kReplySize) return {};
  return RecordBytes(reply_).subspan(static_cast<std::size_t>(offset));
}

// False for a line that is no field line.
bool DescriptorWalk::readField(const std::string& className, RecordBytes field,
                               PropertyMap& properties) {
  if (field_.type == "b") {
    readNumber(className, field, properties);
  } else if (field_.type == "a") {
    readText(field, properties);
  } else if (field_.type == "v") {
    properties.emplace("Version", "");
  } else if (field_.type != "r") {
    return false;
  }
  return true;
}

// The field's first byte, whatever its length.
void DescriptorWalk::readNumber(const std::string& className, RecordBytes field,
                                PropertyMap& properties) {
  const std::string number = std::to_string(field.empty() ? 0 : field.front());
  properties.emplace(field_.name, number);
  if (contains(className, kHardwareRevisionClass) && contains(field_.name, "Hardwarelevel")) {
    properties.emplace("Version", number);
  }
}

void DescriptorWalk::readText(RecordBytes field, PropertyMap& properties) {
  const auto length = static_cast<std::size_t>(std::max(field_.length, 0));
  const std::string text = cutText(field, 0, std::min(length, kTextLimit));
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
