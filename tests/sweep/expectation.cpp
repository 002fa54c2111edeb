// SPDX-License-Identifier: Apache-2.0
#include "tests/sweep/expectation.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "tests/sweep/watch.h"

namespace sweep {
namespace {

constexpr char kFruClass[] = "KRXSG_IPMIFRU";
constexpr char kUsbClass[] = "KRXSG_USBDevice";
constexpr char kSPClass[] = "KRXSG_QLA_ComputerSystem";
constexpr char kReadsNext[] = "SMBIOSInfo::getSMBIOSInfo - Retrieving the next SMBIOS structure.";

bool isLog(const Event& event, const char* text) {
  return event.kind == Kind::kCoreLog && event.value == text;
}

bool isSPLookup(const Event& event) {
  return event.kind == Kind::kClassLookup && event.what == kSPClass;
}

// Nobody catches what these throw.
bool passes(const Event& event) {
  switch (event.kind) {
    case Kind::kClassLookup:
    case Kind::kEnumeration:
    case Kind::kPropertyRead:
      return event.what == kSPClass;
    case Kind::kValueRead:
      return event.what == kSPClass || event.what == kUsbClass;
    case Kind::kCreation:
    case Kind::kPropertySet:
      return false;
    default:
      return true;
  }
}

std::size_t count(const Trace& trace, const std::function<bool(const Event&)>& is) {
  return static_cast<std::size_t>(std::ranges::count_if(trace, is));
}

std::vector<unsigned char> bytesOf(const std::string& hex) {
  std::vector<unsigned char> bytes;
  for (std::size_t i = 0; i < hex.size(); i += 2) {
    bytes.push_back(static_cast<unsigned char>(std::stoi(hex.substr(i, 2), nullptr, 16)));
  }
  return bytes;
}

const NKRXVEL20::host::SimulatedReply kNoReply = {.fails = true, .bytes = {}, .length = {}};

// The SP answers the command so often as it does, and then no more.
void silence(velhost::MachineFile& machine, const std::string& sp, const std::string& command,
             std::size_t answers, const std::string& data = "") {
  auto& entries = machine.sp.dotCommands;
  NKRXVEL20::host::DotCommandEntry entry = {std::stoi(sp), bytesOf(command), std::nullopt, {}};
  if (!data.empty()) entry.data = bytesOf(data);
  const auto known = std::ranges::find_if(
      entries, [&](const auto& e) { return e.sp == entry.sp && e.command == entry.command; });
  for (std::size_t i = 0; i < answers; ++i) {
    entry.replies.push_back(known->replies[std::min(i, known->replies.size() - 1)]);
  }
  entry.replies.push_back(kNoReply);
  entries.insert(entries.begin(), std::move(entry));
}

}  // namespace

Expectation::Expectation(Baselines& baselines, Fault fault)
    : baselines_(baselines),
      baseline_(&baselines.plain()),
      machine_(baselines.sharedMachine()),
      fault_(fault) {
  run();
}

Expectation::Expectation(Baselines& baselines, const Baseline& baseline, Stored stored)
    : baselines_(baselines),
      baseline_(&baseline),
      machine_(baselines.sharedMachine()),
      stored_(std::move(stored)) {}

void Expectation::run() {
  while (!isAtEnd()) step();
}

void Expectation::step() {
  tellFirmwareFailure();
  if (isAtEnd()) return;
  const Event event = now();
  if (event.kind == Kind::kAddToClass) {  // publish() has told of it
    ++at_;
    return;
  }
  noteStage(event);
  if (isSPLookup(event) && !broken_.empty()) {
    dropBrokenRecords();
  }
  if (readingEnds_ && isLog(event, kReadsNext)) {
    readingEnds_ = false;
    at_ = baseline_->find({Kind::kSmbiosClose, {}, {}, {}}, at_);
    return;
  }
  if (isDue(event)) {
    fail(event);
  } else {
    proceed();
  }
}

bool Expectation::isDue(const Event& event) {
  return event.kind == fault_.kind && fault_.isDue(++calls_);
}

void Expectation::noteStage(const Event& event) {
  if (isLog(event, "Entering SPFirmwareVpd::getType11()")) {
    const bool isFound =
        !out_.empty() && (out_.back().value.starts_with("spfirmwarevpd: There is o") ||
                          out_.back().value.starts_with("spfirmwarevpd: There are"));
    hasFruSource_ = isFound || (machine_->sp.bmc && machine_->sp.ipmiDrivers);
  }
  if (event.kind == Kind::kClassName) isGathered_ = true;
  if (event.kind != Kind::kClassLookup) return;
  if (event.what == kUsbClass) isGathered_ = true;
  if (event.what == kSPClass) {
    isWalking_ = false;
    hasRecords_ = count(out_, [](const Event& e) { return isLog(e, " memset data "); }) > 0;
  }
}

void Expectation::emit(Event event) {
  if (isWalking_ || isLog(event, " starting to read data types of dotcommand ")) noteWalk(event);
  if (isWalking_ && !out_.empty() && isLog(out_.back(), "dotcommand ")) event.value = sentBytes_;
  if (event.kind == Kind::kPropertySet && !tamberValue_.empty() &&
      (event.detail == "BuildNumber" || event.detail == "Version")) {
    event.value = tamberValue_;
  }
  if (event.kind == Kind::kPropertySet && !event.fails) {
    contents_ += shownSetting(event.detail, event.value);
  }
  out_.push_back(std::move(event));
}

void Expectation::emitFailing(Event event) {
  event.fails = true;
  if (event.kind == Kind::kSmbiosRead) event.value.clear();  // it has no status
  emit(std::move(event));
}

void Expectation::noteWalk(const Event& event) {
  if (isLog(event, " starting to read data types of dotcommand ")) {
    if (!isWalking_) sentBytes_.clear();
    isWalking_ = true;
    isRetry_ = false;
    line_ = 0;
  } else if (!out_.empty() && isLog(out_.back(), " reading dotcommand ")) {
    sentBytes_ += event.value;
  } else if (event.kind == Kind::kDotCommand && !event.fails) {
    line_ = lineBehindGroup(line_);
    isRetry_ = false;
  } else if (event.kind == Kind::kDotCommand) {
    line_ += isRetry_ ? 1 : 0;
    isRetry_ = !isRetry_;
  }
}

void Expectation::proceed() {
  const Event& event = now();
  emit(event);
  if (event.kind == Kind::kThrown) isOver_ = true;
  const Block* const block = baseline_->blockAt(at_);
  if (block != nullptr && block->end == at_) store(baseline_->trace[block->begin].what);
  ++at_;
  if (event.kind == Kind::kClassName) publish(event.what);
}

void Expectation::store(const std::string& className) {
  stored_[className].push_back(std::exchange(contents_, {}));
  if (className == "KRXSG_SPROMFirmwareVPDMain") tamberValue_.clear();
}

void Expectation::publish(const std::string& className) {
  for (const std::string& contents : stored_[className]) {
    const Event event{Kind::kAddToClass, className, {}, contents};
    if (isDue(event)) {
      fail(event);
      return;
    }
    emit(event);
  }
}

void Expectation::end(const std::string& exception) {
  emit(thrown(exception));
  isOver_ = true;
}

void Expectation::switchTo(const std::string& key, const Change& change) {
  auto changed = std::make_shared<velhost::MachineFile>(*machine_);
  change(*changed);
  machine_ = std::move(changed);
  key_ += key;
  baseline_ = &baselines_.of(key_, *machine_);
  contents_.clear();
}

// Behind the one of equal entries that was told last.
void Expectation::resumeBehind(const Event& event) {
  at_ = 0;
  for (std::size_t told = count(out_, [&](const Event& e) { return e == event; }); told > 0;
       --told) {
    at_ = baseline_->find(event, at_) + 1;
  }
}

// ---- exceptions

void Expectation::fail(const Event& event) {
  if (fault_.throws()) {
    emitFailing(event);
    if (fault_.failure != Failure::kVelException || passes(event))
      return end(nameOf(fault_.failure));
    if (!event.fails) return contain(event);
    ++at_;  // it fails on this machine anyway
    return;
  }
  if (event.kind == Kind::kSmbiosRead) return failRead(event);
  if (event.fails) return proceed();
  if (event.kind == Kind::kDotCommand) return failDotCommand(event);
  if (event.kind == Kind::kTamberCommand) return failTamberCommand(event);
  failIpmiCommand(event);
}

void Expectation::contain(const Event& event) {
  if (event.what == kFruClass) {
    const Event told = coreLog(3, "spfirmwarevpd: Can't get any instance of KRXSG_IPMIFRU");
    emit(told);
    switchTo("no FRU class;",
             [](velhost::MachineFile& m) { m.missingClasses.emplace_back(kFruClass); });
    return resumeBehind(told);
  }
  if (event.what == kUsbClass && event.kind == Kind::kPropertyRead) return forgetDescription();
  if (event.what == kUsbClass) {
    emit(coreLog(3, "spfirmwarevpd: Can't get any instance of KRXSG_USBDevice"));
    at_ = baseline_->findClassName();
    return;
  }
  const Block* const block = baseline_->blockAt(at_);
  if (block != nullptr) return refuseInstance(event, *block);
  ++at_;  // fails differently: its class is not there to make an instance
}

// As a device without a description is looked at.
void Expectation::forgetDescription() {
  emit(coreLog(3,
               "spfirmwarevpd: No Description property in the current instance of "
               "KRXSG_USBDevice"));
  const auto isRead = [](const Event& e) {
    return e.kind == Kind::kPropertyRead && e.what == kUsbClass;
  };
  const std::size_t device = count(out_, isRead) - 1;
  switchTo("USB device " + std::to_string(device) + ';', [&](velhost::MachineFile& m) {
    std::size_t place = 0;
    for (auto& row : m.instances) {
      if (row.className != kUsbClass || place++ != device) continue;
      std::erase_if(row.properties, [](const auto& p) { return p.first == "Description"; });
    }
  });
  std::size_t reads = 0;
  for (at_ = 0; reads <= device; ++at_) reads += isRead(now()) ? 1 : 0;
  ++at_;  // the value that was read
}

void Expectation::refuseInstance(const Event& event, const Block& block) {
  const bool isCreation = event.kind == Kind::kClassLookup || event.kind == Kind::kCreation;
  if (event.kind == Kind::kPropertySet && event.detail == "ReleaseDate") {
    emit(coreLog(0, "Error adding BuildDate property"));
    emit(coreLog(0, "failed to create CIMDateTime"));
    ++at_;
    return;
  }
  std::string text;
  if (block.rule == nullptr) {
    const bool isFirmware = event.what.starts_with("KRXSG_SPROMFirmwareVPD");
    const bool isFirstName = isFirmware && event.kind == Kind::kPropertySet &&
                             event.detail == "Name" && contents_.empty();
    text =
        isCreation ? recordCreationText(event.what) : recordSettingText(event.detail, isFirstName);
  } else {
    const auto* const setting =
        std::ranges::find(block.rule->settings, event.detail, &SettingRule::property).base();
    text = isCreation ? block.rule->creationText : setting->text;
  }
  emit(coreLog(0, text));
  contents_.clear();
  tamberValue_.clear();
  at_ = block.end + 1;
  if (block.rule != nullptr) follow(block.rule->aftermath);
}

void Expectation::follow(Aftermath aftermath) {
  switch (aftermath) {
    case Aftermath::kNothing:
      return;
    case Aftermath::kOemDiagnostics:
      if (isNow(coreLog(3, "Leaving  SPFirmwareVpd::createDiagInstance"))) ++at_;
      return;
    case Aftermath::kOtherNodes:
      return skipOtherNodes();
    case Aftermath::kFirmwareOfSmbios:
      firmwareFailed_ = true;
      return;
    case Aftermath::kTamber: {
      const Event told = coreLog(0, "Failed to collect full set of AMP firmware data");
      emit(told);
      switchTo("Tamber silent;", [](velhost::MachineFile& m) { m.sp.tamberCommands.clear(); });
      return resumeBehind(told);
    }
    case Aftermath::kSystemBios:
      emit(coreLog(0, "Failed to collect BIOS data from smbios"));
      at_ = baseline_->find(coreLog(3, "Exiting SPFirmwareVpd::getBIOSstructure()"), at_) + 1;
  }
}

void Expectation::skipOtherNodes() {
  while (!isAtEnd()) {
    const Block* const block = baseline_->blockAt(at_);
    const bool isNode = block != nullptr && block->rule != nullptr &&
                        block->rule->aftermath == Aftermath::kOtherNodes;
    if (!isNode && !(now().kind == Kind::kDotCommand && now().what == "0403050101")) return;
    at_ = isNode ? block->end + 1 : at_ + 1;
  }
}

// Behind the last SP that was looked for in SMBIOS.
void Expectation::tellFirmwareFailure() {
  if (!firmwareFailed_ || at_ < baseline_->firmwareOfSmbiosEnd) return;
  firmwareFailed_ = false;
  const Event told = coreLog(0, "Failed to collect SP firmware data from smbios");
  if (!isNow(told)) emit(told);
}

// ---- commands

void Expectation::failDotCommand(const Event& event) {
  const bool isComponent = !event.detail.empty();
  if (fault_.failure == Failure::kRefused && !isComponent) return refuseDotCommand(event);
  // Records of fixed layout are cut whatever their length.
  if (!isComponent || (fault_.failure == Failure::kLength && fault_.number > 0)) return proceed();
  missComponent(event);
}

void Expectation::refuseDotCommand(const Event& event) {
  if (isWalking_) return refuseDescriptor(event);
  emitFailing(event);
  const Block* const block = baseline_->blockAt(at_);
  if (block != nullptr) {  // the system BIOS goes on without its SP's record
    at_ = block->end + 1;
    return store(baseline_->trace[block->begin].what);
  }
  ++at_;  // no diagnostics of this node, and no word of it
  skipInstance();
}

// It is sent once more, at once.
void Expectation::refuseDescriptor(const Event& event) {
  emitFailing(event);
  if (!isRetry_) giveUpSP(event);
}

// How often the SP got the command before the fault.
std::size_t Expectation::sentBefore(const std::string& command, const std::string& sp) const {
  unsigned call = 0;
  return count(out_, [&](const Event& e) {
    if (e.kind != Kind::kDotCommand || ++call >= fault_.nth) return false;
    return e.what == command && e.value == sp;
  });
}

// The rest of the table is walked with empty commands, and this SP's further records are missing.
void Expectation::giveUpSP(const Event& event) {
  const Event failed = coreLog(1, " cmd failed..trying again.. ");
  broken_.push_back({event.value, event.what});
  emit(failed);
  while (line_ < kDescriptorLines) {
    emit(coreLog(3, "dotcommand "));
    emit(coreLog(3, sentBytes_));
    for (int i = 0; i < 2; ++i) {
      const Event empty{Kind::kDotCommand, {}, {}, event.value, true};
      isDue(empty);
      emit(empty);
    }
    emit(failed);
  }
  const auto isNextSP = [&] {
    return isLog(now(), " starting to read data types of dotcommand ") || isSPLookup(now());
  };
  for (++at_; !isAtEnd() && !isNextSP();) ++at_;
}

// From here on as on a machine whose SPs do not answer these commands, once they have refused one.
void Expectation::dropBrokenRecords() {
  constexpr const char* kCommands[] = {"0403050601", "0403050602", "04030507", "0403050101", ""};
  const std::vector<Refusal> refusals = std::exchange(broken_, {});
  for (const Refusal& r : refusals) {
    for (const auto* at = std::ranges::find(kCommands, r.command); at != std::end(kCommands);
         ++at) {
      const std::size_t sends = sentBefore(*at, r.sp);
      switchTo("SP " + r.sp + " at " + *at + " after " + std::to_string(sends) + ';',
               [&](velhost::MachineFile& m) { silence(m, r.sp, *at, sends); });
    }
  }
  for (at_ = 0; !isSPLookup(now());) ++at_;
}

void Expectation::missComponent(const Event& event) {
  const ComponentRule& rule = *componentRule(event.what, event.detail);
  Event sent = event;
  sent.fails = fault_.failure == Failure::kRefused;
  const bool isToldAnyway = event.length < 1;  // the reply is empty on this machine anyway
  if (isToldAnyway && (rule.text != nullptr || !sent.fails)) {
    emit(sent);
    ++at_;
    return;
  }
  emit(sent);
  tellMissing(sent, rule);
  at_ += isToldAnyway ? 2 : 1;
  if (!isToldAnyway) skipInstance();
  if (event.detail != "00008100") return;
  switchTo("backplane of " + event.value + ';',
           [&](velhost::MachineFile& m) { silence(m, event.value, event.what, 0, event.detail); });
  resumeBehind(failureLog(rule.text));
}

void Expectation::tellMissing(const Event& event, const ComponentRule& rule) {
  if (rule.text == nullptr) {
    return emit(event.fails ? coreLog(0, numbered("DIMM", event.what, "VPD sendDotCommand failed "))
                            : coreLog(3, numbered("DIMM", event.what, "VPD not populated.")));
  }
  emit(coreLog(3, "getMachineType() completed."));  // says so whatever was read
  emit(failureLog(rule.isNumbered ? numbered("Power Supply", event.what, rule.text) : rule.text));
}

// The instance that would have been made next, or the word that its class is not there.
void Expectation::skipInstance() {
  const Block* const block = baseline_->blockAt(at_);
  if (block != nullptr && block->begin == at_) {
    at_ = block->end + 1;
  } else if (!isAtEnd() && now().kind == Kind::kClassLookup && now().fails) {
    at_ += 2;
  }
}

void Expectation::failTamberCommand(const Event& event) {
  if (fault_.failure == Failure::kLength) {
    tamberValue_ = shown(NKRXVEL20::TCIMValue(tamberText(*event.reply, fault_.number)));
    return proceed();
  }
  emitFailing(event);
  emit(coreLog(0, "Command Failed..while getting SP Firmware data"));
  follow(Aftermath::kTamber);
}

void Expectation::failIpmiCommand(const Event& event) {
  LevelReply reply;
  if (fault_.failure == Failure::kRefused) {
    emitFailing(event);
    emit(coreLog(3, "cKVM - IPMI command failed to send successfully."));
  } else {
    emit(event);
    emit(coreLog(3, "cKVM - IPMI command was sent successfully."));
    reply = readLevel(*event.reply, fault_.number);
    if (!reply.isGood) emit(coreLog(0, reply.text));
  }
  if (reply.isGood) makecKVM(reply.level);
  if (reply.level.empty()) makecKVM("1.3.11.37");
  at_ = baseline_->findClassName();
}

void Expectation::makecKVM(const std::string& version) {
  const std::string name = "KRXSG_cKVM";
  const bool isMissing = std::ranges::count(machine_->missingClasses, name) > 0;
  emit({Kind::kClassLookup, name, {}, {}, isMissing});
  if (isMissing) return emit(coreLog(0, "cKVM - Cannot create KRXSG_cKVM instance."));
  emit({Kind::kCreation, name, {}, {}});
  using NKRXVEL20::TCIMValue;
  const std::pair<const char*, TCIMValue> settings[] = {
      {"SoftwareElementID", TCIMValue("cKVM")},
      {"SoftwareElementState", TCIMValue(std::uint16_t{3})},
      {"TargetOperatingSystem", TCIMValue(std::uint16_t{66})},
      {"Version", TCIMValue(version)},
      {"FirmwareVersion", TCIMValue(version)}};
  for (const auto& [property, value] : settings) {
    emit({Kind::kPropertySet, name, property, shown(value)});
  }
  store(name);
}

// ---- SMBIOS

// The walk ends behind this structure: as on a machine that has no further one of the type, and
// nothing in this one where no bytes were read.
void Expectation::failRead(const Event& event) {
  const auto isOfType = [&](const Event& e) {
    return e.kind == Kind::kSmbiosRead && e.what == event.what;
  };
  const std::size_t place = count(out_, isOfType);
  const bool isWhole = fault_.failure == Failure::kReadWhole && event.value != "5";
  const auto type = static_cast<unsigned char>(std::stoi(event.what));
  const NKRXVEL20::host::SmbiosStructure nothing{
      {type, static_cast<unsigned char>(type == 0 ? 0 : 5), 0, 0, 0, 0, 0}, 0};
  switchTo("type " + event.what + " to " + std::to_string(place) + (isWhole ? " whole;" : ";"),
           [&](velhost::MachineFile& m) {
             auto& structures = m.smbios->structures;
             std::size_t seen = 0;
             std::erase_if(structures, [&](auto& s) {
               if (s.bytes.empty() || s.bytes.front() != type) return false;
               if (seen == place && isWhole) s.status = 0;
               if (seen == place && !isWhole) s = nothing;
               return seen++ > place;
             });
             if (seen <= place) structures.push_back(nothing);
           });
  std::size_t reads = 0;
  for (at_ = 0; reads <= place; ++at_) reads += isOfType(now()) ? 1 : 0;
  Event read = event;
  read.value = std::to_string(fault_.number);
  emit(read);
  if (fault_.number == 3) {
    emit(coreLog(3, "SMBIOSInfo::getSMBIOSInfo - smbios read operation failed! "));
  }
  readingEnds_ = true;
}

// ---- the next request

Trace Expectation::second() {
  if (isGathered_) {
    Trace published;
    const Trace& trace = baselines_.plain().trace;
    for (const Event& event : trace) {
      if (event.kind != Kind::kClassName) continue;
      published.push_back(event);
      for (const std::string& contents : stored_[event.what]) {
        published.push_back({Kind::kAddToClass, event.what, {}, contents});
      }
    }
    return published;
  }
  Expectation again(baselines_, baselines_.afterProbe(hasFruSource_), stored_);
  while (!again.isAtEnd()) {
    if (hasRecords_ && again.now() == Event{Kind::kDriverCall, "discoverSPs", {}, {}} &&
        isLog(again.out_.back(), "Getting firmware and vpd")) {
      while (again.now().what != kSPClass) ++again.at_;
    }
    again.step();
  }
  return again.out_;
}

std::vector<Trace> Expectation::secondAfter(Baselines& baselines, std::size_t count) {
  Expectation cut(baselines, baselines.plain(), {});
  while (!cut.isAtEnd() && cut.out_.size() < count) cut.step();
  std::vector<Expectation> all = {cut};
  const auto maybe = [&](const std::function<void(Expectation&)>& happened) {
    for (std::size_t i = all.size(); i > 0; --i) happened(all.emplace_back(all[i - 1]));
  };
  const Block* const last = cut.at_ == 0 ? nullptr : cut.baseline_->blockAt(cut.at_ - 1);
  if (last != nullptr && last->end == cut.at_ - 1) {
    maybe([&](Expectation& e) { e.stored_[e.baseline_->trace[last->begin].what].pop_back(); });
  }
  if (!cut.isAtEnd()) maybe([](Expectation& e) { e.noteStage(e.now()); });
  if (cut.out_.size() < cut.baseline_->find(coreLog(3, "Entering SPFirmwareVpd::getType11()"))) {
    maybe([](Expectation& e) { e.hasFruSource_ = true; });
  }
  std::vector<Trace> traces;
  for (Expectation& one : all) traces.push_back(one.second());
  return traces;
}

}  // namespace sweep
