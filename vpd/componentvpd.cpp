// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <array>
#include <span>

#include "collectors/support/corelog.h"
#include "plugin/dotcommand.h"
#include "plugin/nodelabel.h"
#include "plugin/spfirmwarevpd.h"

using namespace NKRXVEL20;
using namespace collector;
using namespace spfirmwarevpd;

namespace {

constexpr std::size_t kPathSize = 5;
constexpr std::size_t kDataSize = 4;
constexpr std::size_t kCommandListSize = 4096;

using CommandPath = std::array<unsigned char, kPathSize>;
using CommandData = std::array<unsigned char, kDataSize>;
using CommandList = std::array<unsigned char, kCommandListSize>;

enum class Decoder { kCommon, kDimm, kPlanar };

// How often a component is read, and how its instances are named.
enum class Instances {
  kOne,       // once, under its plain name
  kCounted,   // as often as the SP counts, all under the plain name
  kNumbered,  // as often as the SP counts, the number behind the name
};

// A data set selects the block of a component's VPD; the next one is tried when it fails.
struct DataSet {
  CommandData data;
  const char* unavailableText;  // for the failure-data log
};

struct ComponentKind {
  const char* name;
  CommandPath path;  // the last byte is the number of the instance, from 1
  Instances instances;
  Decoder decoder;
  // Logged before a kind that a BMC with IPMI drivers is not asked for; null: always read.
  const char* spOnlyNotice;
  std::span<const DataSet> dataSets;
};

// A power supply's text has its name and number before it. A DIMM that cannot be read is reported to
// the core log instead.
constexpr DataSet kDimmData[] = {{{0x00, 0x00, 0x7F, 0x00}, nullptr}};
constexpr DataSet kPowerSupplyData[] = {{{0x00, 0x00, 0x80, 0x00}, "VPD not available "}};
constexpr DataSet kPowerBackplaneData[] = {
    {{0x00, 0x00, 0x81, 0x00}, "power backplane VPD not available...trying alternate data set"},
    {{0x00, 0x00, 0x80, 0x00}, "Power backplane VPD not available"},
};
constexpr DataSet kProcessorCardData[] = {
    {{0x00, 0x00, 0xA0, 0x00}, "Processor Card VPD not available"}};
constexpr DataSet kDasdBackplaneData[] = {
    {{0x00, 0x00, 0x70, 0x00}, "DASD backplane VPD not available"}};
constexpr DataSet kPlanarData[] = {{{0x10, 0x00, 0x10, 0x00}, "planar VPD not available"}};

// In the order in which they are read.
constexpr ComponentKind kComponents[] = {
    {"DIMM",
     {0x04, 0x03, 0x05, 0x0B, 1},
     Instances::kNumbered,
     Decoder::kDimm,
     "get DIMM info only from QLA",
     kDimmData},
    {"Power Supply",
     {0x04, 0x03, 0x05, 0x0C, 1},
     Instances::kNumbered,
     Decoder::kCommon,
     nullptr,
     kPowerSupplyData},
    {"Power BackPlane",
     {0x04, 0x03, 0x05, 0x0D, 1},
     Instances::kOne,
     Decoder::kCommon,
     "get power backplane info only from QLA",
     kPowerBackplaneData},
    {"Processor Card",
     {0x04, 0x03, 0x05, 0x03, 1},
     Instances::kOne,
     Decoder::kCommon,
     nullptr,
     kProcessorCardData},
    {"DASD BackPlane",
     {0x04, 0x03, 0x05, 0x0E, 1},
     Instances::kCounted,
     Decoder::kCommon,
     nullptr,
     kDasdBackplaneData},
    {"Planar",
     {0x04, 0x03, 0x05, 0x02, 1},
     Instances::kOne,
     Decoder::kPlanar,
     nullptr,
     kPlanarData},
};

// "DIMM  3 VPD not populated.": a blank stands on each side of the number, and one in the name's
// own text before it.
std::string numberedText(const char* name, int number, const char* text) {
  return std::string(name) + "  " + std::to_string(number) + " " + text;
}

// Reads every component of every SP, one after the other.
class ComponentReader {
 public:
  ComponentReader(SPFirmwareVpd& plugin, SPLibrary& spLibrary,
                  const SPFirmwareVpd::NamespaceHandle& ns)
      : plugin_(plugin), spLibrary_(spLibrary), ns_(ns) {
    std::ranges::transform(kComponents, paths_.begin(), &ComponentKind::path);
  }

  void run();

 private:
  void readKind(const ComponentKind& kind, CommandPath& path, int spIndex);
  void readInstance(const ComponentKind& kind, const CommandPath& path, int spIndex);
  bool send(dotCmd& command, int spIndex);
  void decode(const ComponentKind& kind, int number);
  void reportUnread(const ComponentKind& kind, const DataSet& dataSet, int number,
                    bool wasSent) const;
  int countInstances(CommandPath& path);

  SPFirmwareVpd& plugin_;
  SPLibrary& spLibrary_;
  const SPFirmwareVpd::NamespaceHandle& ns_;
  // The commands as they stand: instance numbers run on from one SP to the next.
  std::array<CommandPath, std::size(kComponents)> paths_{};
  std::array<CommandList, 3> commandLists_{};  // the SP driver's own
  ReplyBuffer reply_{};
  int replyLength_ = 0;
  std::string nodeLabel_;
};

void ComponentReader::run() {
  auto& [list0, list1, list2] = commandLists_;
  const bool hasLists = spLibrary_.buildDotCommandList(list0.data(), list1.data(), list2.data());
  logProgress(hasLists ? "1.1 command passed : got dotcommand list "
                       : "1.1 command failed: can not build dotcommand list ");
  const int count = spLibrary_.discoverSPs();
  for (int spIndex = 0; spIndex < count; ++spIndex) {
    if (count > 1) nodeLabel_ = nodeLabel(spIndex + 1);
    for (std::size_t i = 0; i < paths_.size(); ++i) readKind(kComponents[i], paths_[i], spIndex);
  }
}

void ComponentReader::readKind(const ComponentKind& kind, CommandPath& path, int spIndex) {
  if (kind.spOnlyNotice != nullptr) {
    if (spLibrary_.IsBMCMachine() && spLibrary_.IsIPMIDriversPresent()) return;
    logProgress(kind.spOnlyNotice);
  }
  if (kind.instances == Instances::kOne) return readInstance(kind, path, spIndex);
  const int count = countInstances(path);
  for (int i = 0; i < count; ++i) {
    readInstance(kind, path, spIndex);
    ++path.back();  // one byte: behind 255 comes 0
  }
}

int ComponentReader::countInstances(CommandPath& path) {
  auto& [list0, list1, list2] = commandLists_;
  return spLibrary_.getComponentdotCmdList(path.data(), kPathSize, list0.data(), list1.data(),
                                           list2.data());
}

void ComponentReader::readInstance(const ComponentKind& kind, const CommandPath& path,
                                   int spIndex) {
  for (const DataSet& dataSet : kind.dataSets) {
    dotCmd command(kDotCommandType, kPathSize, kDataSize, path.data(), dataSet.data.data());
    const bool wasSent = send(command, spIndex);
    if (wasSent && replyLength_ >= 1) return decode(kind, path.back());
    reportUnread(kind, dataSet, path.back(), wasSent);
  }
}

bool ComponentReader::send(dotCmd& command, int spIndex) {
  reply_.fill(0);
  return spLibrary_.sendDotCommand(&command, reply_.data(), &replyLength_, spIndex, kReplySize);
}

// A decoder that fails has logged why; the other components are still read.
void ComponentReader::decode(const ComponentKind& kind, int number) {
  std::string name = kind.name;
  switch (kind.decoder) {
    case Decoder::kDimm:
      plugin_.printMemoryVpdData(name.data(), nodeLabel_.c_str(), reply_.data(), number, ns_);
      break;
    case Decoder::kCommon:
      if (kind.instances == Instances::kNumbered) name.append(" ").append(std::to_string(number));
      plugin_.printVpdData(name.data(), nodeLabel_.c_str(), reply_.data(), ns_);
      break;
    case Decoder::kPlanar:
      plugin_.printPlanarVpd(name.data(), nodeLabel_.c_str(), reply_.data(), ns_);
      break;
  }
}

// DIMMs are reported to the core log; the others to the failure-data log.
void ComponentReader::reportUnread(const ComponentKind& kind, const DataSet& dataSet, int number,
                                   bool wasSent) const {
  if (kind.decoder == Decoder::kDimm) {
    if (wasSent) {
      logProgress(numberedText(kind.name, number, "VPD not populated."));
    } else {
      logFailure(numberedText(kind.name, number, "VPD sendDotCommand failed "));
    }
    return;
  }
  logProgress("getMachineType() completed.");  // a fixed line, odd as it is, and not the text below
  const std::string text = kind.instances == Instances::kNumbered
                               ? numberedText(kind.name, number, dataSet.unavailableText)
                               : dataSet.unavailableText;
  fdrWriteLog(kSeverityProgress, text.c_str());
}

}  // namespace

TVELStatusCode SPFirmwareVpd::getVPDdata(SPLibrary* spLibrary, NamespaceHandle ns) {
  ComponentReader(*this, *spLibrary, ns).run();
  return {kStatusSuccess};
}
