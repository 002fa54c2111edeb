// SPDX-License-Identifier: Apache-2.0
//
// An SPLibrary that passes everything on to another one and keeps what was said, where that is
// asked for. Which components were asked for, and how often each command was refused, is always kept:
// they are few.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <tuple>
#include <utility>
#include <vector>

#include "velhost/spdriver.h"

namespace NKRXVEL20::host {

class TrafficRecorder : public SPLibrary {
 public:
  explicit TrafficRecorder(std::unique_ptr<SPLibrary> library, Traffic traffic = Traffic::kKept)
      : library_(std::move(library)), keepsTraffic_(traffic == Traffic::kKept) {}

  std::vector<TrafficEntry> takeTraffic() { return std::exchange(traffic_, {}); }
  const std::map<Bytes, std::int32_t>& componentsAsked() const { return componentsAsked_; }

  const DriverUse& use() const { return use_; }
  void forgetUse();

  int discoverSPs() override;
  bool checkSPComm() override { return *(use_.answers = library_->checkSPComm()); }
  bool isDotcommand() override { return *(use_.isDotCommand = library_->isDotcommand()); }
  bool isTamber() override { return *(use_.isTamber = library_->isTamber()); }
  bool isTwgStop() override { return library_->isTwgStop(); }
  bool isTvmlibrary() override { return *(use_.hasTvmLibrary = library_->isTvmlibrary()); }
  bool IsBMCMachine() override;
  bool IsIPMIDriversPresent() override {
    return *(use_.hasIpmiDrivers = library_->IsIPMIDriversPresent());
  }
  bool IsIntegratedBMC() override { return library_->IsIntegratedBMC(); }
  int GetNumberBMCNode() override { return library_->GetNumberBMCNode(); }
  bool buildDotCommandList(unsigned char* list0, unsigned char* list1,
                           unsigned char* list2) override {
    return *(use_.hasCommandList = library_->buildDotCommandList(list0, list1, list2));
  }
  void printMatrix(const unsigned char* bytes, int length) override;

  int getComponentdotCmdList(unsigned char* command, int commandLength, unsigned char* list0,
                             unsigned char* list1, unsigned char* list2) override;
  bool sendDotCommand(dotCmd* command, unsigned char* reply, int* replyLength, int spIndex,
                      int bufferSize) override;
  bool sendTamberCommand(TamberCmd* command, int* replyLength, unsigned char* reply) override;
  bool sendIPMICommand(unsigned char* bytes, int* length, int capacity, bool wait) override;

 private:
  template <class Send>
  bool pass(TrafficEntry entry, Send send);
  bool refuse(const TrafficEntry& entry);
  bool record(TrafficEntry entry);
  CommandTally* tallyOf(const TrafficEntry& entry);

  std::unique_ptr<SPLibrary> library_;
  bool keepsTraffic_;
  std::vector<TrafficEntry> traffic_;
  std::map<Bytes, std::int32_t> componentsAsked_;
  DriverUse use_;
  std::map<std::tuple<TrafficEntry::Kind, int, Bytes>, std::size_t>
      tallies_;  // places in use_.commands
};

}  // namespace NKRXVEL20::host
