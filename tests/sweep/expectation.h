// SPDX-License-Identifier: Apache-2.0
//
// What has to come of a fault: the run without it, changed by the rules of rules.h.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tests/sweep/baseline.h"
#include "tests/sweep/fault.h"

namespace sweep {

// By class, what was set in each instance that is kept for publication.
using Stored = std::map<std::string, std::vector<std::string>>;

class Expectation {
 public:
  // The first request of an object, with the fault.
  Expectation(Baselines& baselines, Fault fault);

  const Trace& first() const { return out_; }

  // The next request of the same object, without a fault: what is stored is published; an object
  // whose collection an exception ended collects once more first, and has kept the instances, the
  // SPs' records and the look for an IPMI FRU source.
  Trace second();

  // The same for a request that an allocation cut off behind the first `count` events; what lies
  // between two events may have happened or not, so there are several.
  static std::vector<Trace> secondAfter(Baselines& baselines, std::size_t count);

 private:
  Expectation(Baselines& baselines, const Baseline& baseline, Stored stored);

  using Change = std::function<void(velhost::MachineFile&)>;

  void run();
  void step();
  const Event& now() const { return baseline_->trace[at_]; }
  bool isAtEnd() const { return isOver_ || at_ >= baseline_->trace.size(); }
  bool isNow(const Event& event) const { return !isAtEnd() && now() == event; }
  bool isDue(const Event& event);

  void noteStage(const Event& event);
  void emit(Event event);
  void emitFailing(Event event);
  void noteWalk(const Event& event);
  void proceed();
  void store(const std::string& className);
  void publish(const std::string& className);
  void end(const std::string& exception);
  void switchTo(const std::string& key, const Change& change);
  void resumeBehind(const Event& event);

  // Exceptions.
  void fail(const Event& event);
  void contain(const Event& event);
  void refuseInstance(const Event& event, const Block& block);
  void follow(Aftermath aftermath);
  void skipOtherNodes();
  void tellFirmwareFailure();
  void forgetDescription();

  // Commands.
  void failDotCommand(const Event& event);
  void refuseDotCommand(const Event& event);
  void refuseDescriptor(const Event& event);
  std::size_t sentBefore(const std::string& command, const std::string& sp) const;
  void giveUpSP(const Event& event);
  void dropBrokenRecords();
  void missComponent(const Event& event);
  void tellMissing(const Event& event, const ComponentRule& rule);
  void skipInstance();
  void failTamberCommand(const Event& event);
  void failIpmiCommand(const Event& event);
  void makecKVM(const std::string& version);

  // SMBIOS.
  void failRead(const Event& event);

  Baselines& baselines_;
  const Baseline* baseline_ = nullptr;
  std::shared_ptr<const velhost::MachineFile> machine_;
  std::string key_;
  Fault fault_;
  unsigned calls_ = 0;
  std::size_t at_ = 0;
  bool isOver_ = false;
  Trace out_;
  Stored stored_;
  std::string contents_;  // of the instance that is being made

  bool hasFruSource_ = false;
  bool hasRecords_ = false;
  bool isGathered_ = false;
  bool firmwareFailed_ = false;
  bool readingEnds_ = false;
  std::string tamberValue_;

  // The walk through the SP command descriptors.
  bool isWalking_ = false;
  bool isRetry_ = false;
  int line_ = 0;
  std::string sentBytes_;
  struct Refusal {
    std::string sp;
    std::string command;  // the first that it refused twice
  };
  std::vector<Refusal> broken_;
};

}  // namespace sweep
