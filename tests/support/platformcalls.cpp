// SPDX-License-Identifier: Apache-2.0
#include "tests/support/platformcalls.h"

#include <algorithm>
#include <array>
#include <boost/make_shared.hpp>
#include <memory>
#include <utility>

#include "host/machine/machine.h"
#include "tests/support/pluginonmachine.h"
#include "vel/rootobject.h"
#include "velhost/log.h"
#include "velhost/spdriver.h"

namespace velhost {
namespace {

namespace host = NKRXVEL20::host;

using namespace NKRXVEL20;

using Bytes = std::vector<unsigned char>;

constexpr std::size_t kReplySize = 2048;
constexpr std::size_t kTamberReplySize = 255;
constexpr std::size_t kCommandListSize = 4096;

// What is written down, and how many instances there are.
struct Record {
  PlatformCalls calls;
  std::size_t instances = 0;
};

// An instance that writes down what is set and read in it.
class WatchedInstance : public ICIMInstance {
 public:
  WatchedInstance(boost::shared_ptr<ICIMInstance> target, Record& record)
      : target_(std::move(target)), record_(record), number_(record.instances++) {}

  boost::shared_ptr<ICIMProperty> GetProperty(const std::string& name,
                                              const TCIMValueMap& qualifiers) override {
    record_.calls.emplace_back(PropertyRead{number_, name});
    return target_->GetProperty(name, qualifiers);
  }
  void SetProperty(const std::string& name, const TCIMValue& value,
                   const TCIMValueMap& qualifiers) override {
    record_.calls.emplace_back(PropertySet{number_, name, value});
    target_->SetProperty(name, value, qualifiers);
  }
  void AddToClass(TCIMValueMap context) override { target_->AddToClass(std::move(context)); }

 private:
  boost::shared_ptr<ICIMInstance> target_;
  Record& record_;
  std::size_t number_;
};

class WatchedClass : public ICIMClass {
 public:
  WatchedClass(boost::shared_ptr<ICIMClass> target, Record& record)
      : target_(std::move(target)), record_(record) {}

  const std::string& GetName(const TCIMValueMap& qualifiers) const override {
    return target_->GetName(qualifiers);
  }
  void GetInstances(const boost::function<bool(boost::shared_ptr<ICIMInstance>)>& callback,
                    bool deep, const TCIMValueMap& context) override {
    target_->GetInstances(callback, deep, context);
  }
  boost::shared_ptr<ICIMInstance> CreateInstance() override {
    record_.calls.emplace_back(InstanceCreated{target_->GetName({})});
    return boost::make_shared<WatchedInstance>(target_->CreateInstance(), record_);
  }

 private:
  boost::shared_ptr<ICIMClass> target_;
  Record& record_;
};

class WatchedNamespace : public ICIMNamespace {
 public:
  WatchedNamespace(boost::shared_ptr<ICIMNamespace> target, Record& record)
      : target_(std::move(target)), record_(record) {}

  boost::shared_ptr<ICIMClass> GetClass(const std::string& name, TCIMValueMap context) override {
    return boost::make_shared<WatchedClass>(target_->GetClass(name, std::move(context)), record_);
  }

 private:
  boost::shared_ptr<ICIMNamespace> target_;
  Record& record_;
};

class WatchedLibrary : public SPLibrary {
 public:
  WatchedLibrary(std::unique_ptr<SPLibrary> target, Record& record)
      : target_(std::move(target)), record_(record) {}

  int discoverSPs() override { return target_->discoverSPs(); }
  bool checkSPComm() override { return target_->checkSPComm(); }
  bool isDotcommand() override { return target_->isDotcommand(); }
  bool isTamber() override { return target_->isTamber(); }
  bool isTwgStop() override { return target_->isTwgStop(); }
  bool isTvmlibrary() override { return target_->isTvmlibrary(); }
  bool IsBMCMachine() override { return target_->IsBMCMachine(); }
  bool IsIPMIDriversPresent() override { return target_->IsIPMIDriversPresent(); }
  bool IsIntegratedBMC() override { return target_->IsIntegratedBMC(); }
  int GetNumberBMCNode() override { return target_->GetNumberBMCNode(); }
  void printMatrix(const unsigned char* bytes, int length) override {
    target_->printMatrix(bytes, length);
  }

  bool buildDotCommandList(unsigned char* list0, unsigned char* list1,
                           unsigned char* list2) override {
    record_.calls.emplace_back(CommandListBuilt{});
    return target_->buildDotCommandList(list0, list1, list2);
  }
  int getComponentdotCmdList(unsigned char* command, int commandLength, unsigned char* list0,
                             unsigned char* list1, unsigned char* list2) override {
    record_.calls.emplace_back(ComponentCounted{Bytes(command, command + commandLength)});
    return target_->getComponentdotCmdList(command, commandLength, list0, list1, list2);
  }
  bool sendDotCommand(dotCmd* command, unsigned char* reply, int* replyLength, int spIndex,
                      int bufferSize) override {
    record_.calls.emplace_back(
        DotCommandSent{spIndex, command->type, command->command, command->data, bufferSize});
    return target_->sendDotCommand(command, reply, replyLength, spIndex, bufferSize);
  }
  bool sendTamberCommand(TamberCmd* command, int* replyLength, unsigned char* reply) override {
    record_.calls.emplace_back(
        TamberCommandSent{command->command, command->data, command->flag0, command->flag1});
    return target_->sendTamberCommand(command, replyLength, reply);
  }
  bool sendIPMICommand(unsigned char* buffer, int* length, int capacity, bool wait) override {
    record_.calls.emplace_back(IpmiCommandSent{Bytes(buffer, buffer + capacity), wait});
    return target_->sendIPMICommand(buffer, length, capacity, wait);
  }

 private:
  std::unique_ptr<SPLibrary> target_;
  Record& record_;
};

// Makes the calls, one overload each.
class Repetition {
 public:
  explicit Repetition(ICIMNamespace& ns) : ns_(ns) {}

  void operator()(const DotCommandSent& sent) {
    dotCmd command(sent.type, static_cast<int>(sent.command.size()),
                   static_cast<int>(sent.data.size()), sent.command.data(), sent.data.data());
    reply_.fill(0);
    sp_.sendDotCommand(&command, reply_.data(), &length_, sent.sp, sent.bufferSize);
  }
  void operator()(TamberCommandSent sent) {
    TamberCmd command(sent.command[0], sent.command[1], sent.command[2], sent.command[3],
                      sent.data.data(), static_cast<int>(sent.data.size()), sent.flag0, sent.flag1);
    std::fill_n(reply_.begin(), kTamberReplySize, static_cast<unsigned char>(0));
    sp_.sendTamberCommand(&command, &length_, reply_.data());
  }
  void operator()(const IpmiCommandSent& sent) {
    std::ranges::copy(sent.record, reply_.begin());
    sp_.sendIPMICommand(reply_.data(), &length_, static_cast<int>(sent.record.size()), sent.wait);
  }
  void operator()(const CommandListBuilt& /*built*/) {
    for (auto& list : lists_) list.fill(0);
    sp_.buildDotCommandList(lists_[0].data(), lists_[1].data(), lists_[2].data());
  }
  void operator()(ComponentCounted counted) {
    sp_.getComponentdotCmdList(counted.command.data(), static_cast<int>(counted.command.size()),
                               lists_[0].data(), lists_[1].data(), lists_[2].data());
  }
  void operator()(const InstanceCreated& created) {
    instances_.push_back(ns_.GetClass(created.className, context_)->CreateInstance());
  }
  void operator()(const PropertySet& set) {
    instances_[set.instance]->SetProperty(set.name, set.value, {});
  }
  void operator()(const PropertyRead& read) {
    instances_[read.instance]->GetProperty(read.name, {});
  }
  void operator()(const LogWritten& entry) { log_.Log(entry.severity, entry.text); }

  std::vector<boost::shared_ptr<ICIMInstance>> takeInstances() { return std::move(instances_); }

 private:
  ICIMNamespace& ns_;
  SPLibrary& sp_ = *SPLibrary::GetSplibraryInstance(0);
  ICoreLogger& log_ = TRootObject::GetCoreLogger();
  const TCIMValueMap context_ = {
      {TCIMSchemaHelper::kContextName, TCIMValue(TCIMSchemaHelper::kPluginNSPName)}};
  std::array<unsigned char, kReplySize> reply_{};
  std::array<std::array<unsigned char, kCommandListSize>, 3> lists_{};
  int length_ = 0;
  std::vector<boost::shared_ptr<ICIMInstance>> instances_;
};

}  // namespace

PlatformCalls callsOfCollection(const std::filesystem::path& machineFile) {
  Record record;
  PluginOnMachine plugin(machineFile);
  host::setSPLibrary(std::make_unique<WatchedLibrary>(machineOfFile(machineFile).sp, record),
                     host::Traffic::kForgotten);
  plugin.load();
  plugin.init();
  host::setCoreLogSink([&record](const host::LogEntry& entry) {
    record.calls.emplace_back(LogWritten{static_cast<EVELLogSeverity>(entry.severity), entry.text});
  });
  plugin.collect(boost::make_shared<WatchedNamespace>(plugin.ns(), record));
  host::setCoreLogSink({});
  plugin.init();  // lets go of the watched instances
  return std::move(record.calls);
}

PlatformCalls withoutLog(PlatformCalls calls) {
  std::erase_if(calls, [](const auto& call) { return std::holds_alternative<LogWritten>(call); });
  return calls;
}

std::vector<boost::shared_ptr<ICIMInstance>> repeated(const PlatformCalls& calls,
                                                      ICIMNamespace& ns) {
  Repetition repetition(ns);
  for (const PlatformCall& call : calls) std::visit(repetition, call);
  return repetition.takeInstances();
}

}  // namespace velhost
