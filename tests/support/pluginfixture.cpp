// SPDX-License-Identifier: Apache-2.0
#include "tests/support/pluginfixture.h"

namespace spfirmwarevpd::test {

using namespace NKRXVEL20;

namespace {

std::string hex(const Bytes& bytes) {
  std::string result;
  for (const unsigned char byte : bytes) {
    char pair[3];
    std::snprintf(pair, sizeof pair, "%02X", byte);
    result += pair;
  }
  return result;
}

std::string describe(const host::TrafficEntry& entry) {
  const std::string outcome = entry.answered ? "" : " failed";
  switch (entry.kind) {
    case host::TrafficEntry::Kind::kDotCommand:
      return hex(entry.command) + (entry.data.empty() ? "" : " " + hex(entry.data)) + " to SP " +
             std::to_string(entry.sp) + outcome;
    case host::TrafficEntry::Kind::kTamberCommand:
      return hex(entry.command) + (entry.data.empty() ? "" : " " + hex(entry.data)) +
             (entry.flag0 ? " true" : " false") + (entry.flag1 ? " true" : " false") + outcome;
    case host::TrafficEntry::Kind::kIpmiCommand:
      return hex(entry.command) + outcome;
  }
  return {};
}

}  // namespace

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

SmbiosStructure structure(int type, const Bytes& data, const std::vector<std::string>& strings,
                          int status) {
  Bytes bytes = {static_cast<unsigned char>(type), static_cast<unsigned char>(4 + data.size()), 0,
                 0};
  bytes.insert(bytes.end(), data.begin(), data.end());
  for (const std::string& string : strings) {
    bytes.insert(bytes.end(), string.begin(), string.end());
    bytes.push_back(0);
  }
  bytes.resize(bytes.size() + (strings.empty() ? 2 : 1));
  return {bytes, status};
}

SmbiosStructure oemStrings(const std::vector<std::string>& strings) {
  return structure(11, {static_cast<unsigned char>(strings.size())}, strings);
}

PluginTest::PluginTest() {
  host::setMachineType("");
  host::setSmbiosTable(std::nullopt);
  useSP({});
}

PluginTest::~PluginTest() {
  host::setMachineType(std::nullopt);
  host::setSmbiosTable(std::nullopt);
  host::setSPLibrary(nullptr);
}

void PluginTest::useSmbios(std::vector<SmbiosStructure> structures, int endStatus, int loadStatus) {
  host::setSmbiosTable(host::SmbiosTable{std::move(structures), loadStatus, endStatus});
}

void PluginTest::useSP(SimulatedSP description) {
  host::setSPLibrary(host::makeSimulatedSP(std::move(description)));
}

SPLibrary* PluginTest::sp() { return SPLibrary::GetSplibraryInstance(0); }

std::vector<std::string> PluginTest::takeTraffic() {
  std::vector<std::string> result;
  for (const auto& entry : host::takeTraffic()) result.push_back(describe(entry));
  return result;
}

SimulatedSP dotCommandSP(int count) {
  SimulatedSP sp;
  sp.kind = host::SPKind::kDotCommand;
  sp.count = count;
  return sp;
}

void answer(SimulatedSP& sp, const Bytes& command, const Bytes& reply, int spIndex) {
  host::DotCommandEntry entry;
  entry.sp = spIndex;
  entry.command = command;
  entry.replies.push_back({.fails = false, .bytes = reply, .length = std::nullopt});
  sp.dotCommands.push_back(std::move(entry));
}

}  // namespace spfirmwarevpd::test
