// SPDX-License-Identifier: Apache-2.0
//
// The firmware collector on a machine whose SPs, BMC, firmware table and USB device say whatever the bytes
// are: replies of any length with any length told. What it publishes is of the classes asked for and of
// the schema's types; a text that a record holds stands in a reply or a structure and is no longer than its
// field; nobody is asked without end; asked again it publishes the same and sends nothing.
#include <algorithm>
#include <array>
#include <boost/make_shared.hpp>
#include <cctype>
#include <map>
#include <memory>

#include "plugin/spfirmwarevpd.h"
#include "tests/fuzz/askedmachine.h"
#include "tests/fuzz/bytesource.h"
#include "tests/fuzz/require.h"
#include "tests/support/firmwareclasses.h"
#include "velhost/cimnamespace.h"
#include "velhost/pluginloader.h"
#include "velhost/rootobject.h"
#include "velhost/schema.h"
#include "velhost/smbios.h"
#include "velhost/spdriver.h"

namespace {

using namespace NKRXVEL20;
using fuzz::ByteSource;
using fuzz::require;

constexpr int kMostNodes = 4;
constexpr int kMostComponents = 4;
constexpr std::size_t kMostCommands = 400;  // for so many nodes and components
constexpr std::size_t kTamberBuffer = 255;
constexpr std::size_t kIpmiReply = 4;  // where it begins in the request's buffer

// "": as the firmware table says. The others have ways of their own.
constexpr const char* kMachineTypes[] = {"", "5010", "4210", "4320", "4430", "3105"};

// What anybody answered.
using Said = std::vector<std::string>;

class AnySP : public SPLibrary {
 public:
  AnySP(ByteSource& bytes, Said& said, std::size_t& commands)
      : bytes_(bytes),
        said_(said),
        commands_(commands),
        flags_(bytes.number()),
        count_(bytes.byte() % (kMostNodes + 1)) {}

  int discoverSPs() override { return count_; }
  bool checkSPComm() override { return has(0); }
  bool isDotcommand() override { return has(1); }
  bool isTamber() override { return has(2); }
  bool isTwgStop() override { return has(3); }
  bool isTvmlibrary() override { return has(4); }
  bool IsBMCMachine() override { return has(5); }
  bool IsIPMIDriversPresent() override { return has(6); }
  bool IsIntegratedBMC() override { return has(7); }
  int GetNumberBMCNode() override { return has(8) ? count_ : 0; }
  bool buildDotCommandList(unsigned char*, unsigned char*, unsigned char*) override {
    return has(9);
  }
  int getComponentdotCmdList(unsigned char*, int, unsigned char*, unsigned char*,
                             unsigned char*) override {
    return bytes_.byte() % (kMostComponents + 2) - 1;
  }
  bool sendDotCommand(dotCmd* /*command*/, unsigned char* reply, int* length, int spIndex,
                      int size) override {
    require(spIndex >= 0 && spIndex < std::max(count_, kMostNodes), "the SP is one of them");
    return answer({reply, static_cast<std::size_t>(size)}, length);
  }
  bool sendTamberCommand(TamberCmd* /*command*/, int* length, unsigned char* reply) override {
    return answer({reply, kTamberBuffer}, length);
  }
  bool sendIPMICommand(unsigned char* buffer, int* length, int size, bool /*wait*/) override {
    return answer(std::span(buffer, static_cast<std::size_t>(size)).subspan(kIpmiReply), length);
  }
  void printMatrix(const unsigned char*, int) override {}

 private:
  bool has(unsigned flag) const { return (flags_ >> flag & 1U) != 0; }

  // A byte of what it is: no answer, or the length as it is, or another one.
  bool answer(std::span<unsigned char> buffer, int* length) {
    require(++commands_ <= kMostCommands, "nobody is asked without end");
    const std::uint8_t kind = bytes_.byte() % 8;
    if (kind == 0) return false;
    const auto reply = bytes_.bytes(std::min<std::size_t>(bytes_.byte(), buffer.size()));
    std::ranges::copy(reply, buffer.begin());
    said_.emplace_back(reply.begin(), reply.end());
    *length = static_cast<int>(reply.size());
    if (kind == 1) *length = static_cast<std::int16_t>(bytes_.number());
    if (kind == 2) *length = bytes_.flag() ? INT32_MAX : INT32_MIN;
    return true;
  }

  ByteSource& bytes_;
  Said& said_;
  std::size_t& commands_;
  unsigned flags_;
  int count_;
};

struct RecordField {
  const char* className;
  const char* property;
  std::size_t longest;
};

// Texts of fixed fields, as the records are laid out.
constexpr RecordField kFields[] = {
    {"KRXSG_Vpd", "PartNumber", 18},
    {"KRXSG_Vpd", "SerialNumber", 8},
    {"KRXSG_Vpd", "FRUNumber", 12},
    {"KRXSG_Vpd", "RevisionLevel", 2},
    {"KRXSG_Vpd", "SlotNumber", 1},
    {"KRXSG_DiagnosticVPD", "SerialNumber", 7},
    {"KRXSG_DiagnosticVPD", "UniqueID", 11},
    {"KRXSG_DiagnosticVPD", "MachineTypeModel", 7},
    {"KRXSG_DiagnosticVPD", "FileName", 12},
    {"KRXSG_DiagnosticVPD", "Header", 2},
    {"KRXSG_DiagnosticVPD", "Signature", 3},
    {"KRXSG_SystemBIOSElement", "FileName", 12},
    {"KRXSG_SystemBIOSElement", "UniqueID", 11},
    {"KRXSG_SystemBIOSElement", "MachineTypeModel", 7},
    {"KRXSG_SystemBIOSElement", "SerialNumber", 7},
    {"KRXSG_SPROMFirmwareVPDMain", "FileName", 12},
    {"KRXSG_SPROMFirmwareVPDMain", "PartNumber", 8},
    {"KRXSG_SPROMFirmwareVPDBootROM", "BuildNumber", 7},
    {"KRXSG_SPROMFirmwareVPDBootROM", "FileName", 12},
    {"KRXSG_SPROMFirmwareVPDBootROM", "PartNumber", 8},
};

// A DIMM's serial number is shown by its digits.
std::string bytesOfDigits(const std::string& text) {
  std::string bytes;
  for (std::size_t i = 0; i + 1 < text.size(); i += 2) {
    bytes += static_cast<char>(std::stoi(text.substr(i, 2), nullptr, 16));
  }
  return bytes;
}

bool isSaid(const std::string& text, const Said& said) {
  return text == " " || std::ranges::any_of(said, [&](const std::string& reply) {
           // Behind a reply the buffer is zeros.
           return (reply + std::string(16, '\0')).find(text) != std::string::npos;
         });
}

void checkText(const RecordField& field, const std::string& text, const Said& said) {
  require(text.size() <= field.longest, "a text is no longer than its field");
  const bool isDigits = field.longest == 8 && text.size() == 8 &&
                        std::ranges::all_of(text, [](unsigned char c) { return std::isxdigit(c); });
  require(isSaid(text, said) || (isDigits && isSaid(bytesOfDigits(text), said)),
          "a text stands in what was said");
}

void checkRow(const host::PublishedInstance& row, const Said& said) {
  require(std::ranges::find(kFirmwareClasses, row.className) != kFirmwareClasses.end(),
          "the class was asked for");
  const auto* const cimClass = host::findClass(row.className);
  for (const auto& [name, value] : row.properties) {
    const auto* const property = host::findProperty(*cimClass, name);
    require(property != nullptr && property->type == value.GetType(), "the schema has it so");
    for (const RecordField& field : kFields) {
      if (row.className == field.className && name == field.property) {
        checkText(field, value.ToString(), said);
      }
    }
  }
}

std::string textOf(const std::vector<host::PublishedInstance>& rows) {
  std::string text;
  for (const auto& row : rows) {
    text += row.className + '\n';
    for (const auto& [name, value] : row.properties) text += name + '=' + value.ToString() + '\n';
  }
  return text;
}

// Sets the platform up while it lives.
class Machine {
 public:
  Machine(ByteSource& bytes) : plugin_(new SPFirmwareVpd()) {
    host::setMachineType(kMachineTypes[bytes.byte() % std::size(kMachineTypes)]);
    const auto table = bytes.bytes(bytes.number() % 1024);
    host::SmbiosTable smbios{host::splitTable(table, {}), bytes.byte() % 16 == 0, 5};
    for (const auto& structure : smbios.structures) {
      said_.emplace_back(structure.bytes.begin(), structure.bytes.end());
    }
    host::setSmbiosTable(std::move(smbios));
    ns_->addCompanion("KRXSG_USBDevice", {{"Description", TCIMValue(bytes.text() + " cKVM")}});
    host::setSPLibrary(std::make_unique<AnySP>(bytes, said_, commands_), host::Traffic::kForgotten);
    plugin_->Init();
  }
  ~Machine() {
    plugin_->PrepareForUnload();  // deletes it
    host::setSPLibrary(nullptr);
    host::setSmbiosTable(std::nullopt);
    host::setMachineType(std::nullopt);
  }
  Machine(const Machine&) = delete;
  Machine& operator=(const Machine&) = delete;

  std::vector<host::PublishedInstance> ask() {
    std::vector<boost::shared_ptr<ICIMClass>> classes;
    for (const char* name : kFirmwareClasses) classes.push_back(ns_->requestClass(name));
    plugin_->GetData(ns_, classes);
    return ns_->takePublished();
  }
  const Said& said() const { return said_; }
  std::size_t commands() const { return commands_; }

 private:
  Said said_;
  std::size_t commands_ = 0;
  host::PluginLoader loader_;
  boost::shared_ptr<host::CimNamespace> ns_ = boost::make_shared<host::CimNamespace>(
      std::vector<std::string>{}, std::vector<host::Fault>{});
  SPFirmwareVpd* plugin_;
};

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  fuzz::useSchema();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  ByteSource bytes(data, size);
  Machine machine(bytes);
  const auto rows = machine.ask();
  for (const auto& row : rows) checkRow(row, machine.said());
  const std::size_t commands = machine.commands();
  require(textOf(machine.ask()) == textOf(rows), "asked again it publishes the same");
  require(machine.commands() == commands, "asked again it sends nothing");
  return 0;
}
