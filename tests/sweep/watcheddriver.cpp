// SPDX-License-Identifier: Apache-2.0
//
// The SP driver and the SMBIOS library.
#include <dlfcn.h>

#include <algorithm>
#include <span>
#include <stdexcept>
#include <utility>

#include "tests/sweep/allocations.h"
#include "tests/sweep/watch.h"
#include "vel/smbios.h"

namespace sweep {

using namespace NKRXVEL20;

namespace {

constexpr std::size_t kTamberReplySize = 255;

std::string hex(const std::vector<unsigned char>& bytes) {
  std::string result;
  for (const unsigned char byte : bytes) {
    result += "0123456789ABCDEF"[byte / 16];
    result += "0123456789ABCDEF"[byte % 16];
  }
  return result;
}

// A command is written down, refused, or answered with the length that is to be told.
template <class Send>
bool commanded(Event event, int* length, Send send) {
  Watch& watch = *Watch::current();
  const Fault& fault = watch.fault;
  const bool due = watch.isDue(event.kind);
  event.fails = due && (fault.throws() || fault.failure == Failure::kRefused);
  watch.trace.push_back(std::move(event));
  if (due && fault.throws()) raise(fault.failure);
  Event& noted = watch.trace.back();
  if (!noted.fails) noted.fails = !send(noted);
  if (!noted.fails) noted.length = *length;
  if (!noted.fails && due) *length = fault.number;
  return !noted.fails;
}

class WatchedDriver : public SPLibrary {
 public:
  explicit WatchedDriver(std::unique_ptr<SPLibrary> target) : target_(std::move(target)) {}

  int discoverSPs() override { return asked("discoverSPs", &SPLibrary::discoverSPs); }
  bool checkSPComm() override { return asked("checkSPComm", &SPLibrary::checkSPComm); }
  bool isDotcommand() override { return asked("isDotcommand", &SPLibrary::isDotcommand); }
  bool isTamber() override { return asked("isTamber", &SPLibrary::isTamber); }
  bool isTwgStop() override { return asked("isTwgStop", &SPLibrary::isTwgStop); }
  bool isTvmlibrary() override { return asked("isTvmlibrary", &SPLibrary::isTvmlibrary); }
  bool IsBMCMachine() override { return asked("IsBMCMachine", &SPLibrary::IsBMCMachine); }
  bool IsIPMIDriversPresent() override {
    return asked("IsIPMIDriversPresent", &SPLibrary::IsIPMIDriversPresent);
  }
  bool IsIntegratedBMC() override { return asked("IsIntegratedBMC", &SPLibrary::IsIntegratedBMC); }
  int GetNumberBMCNode() override {
    return asked("GetNumberBMCNode", &SPLibrary::GetNumberBMCNode);
  }
  bool buildDotCommandList(unsigned char* list0, unsigned char* list1,
                           unsigned char* list2) override {
    const PlatformWork work;
    Watch::current()->call({Kind::kDriverCall, "buildDotCommandList", {}, {}});
    return target_->buildDotCommandList(list0, list1, list2);
  }
  int getComponentdotCmdList(unsigned char* command, int commandLength, unsigned char* list0,
                             unsigned char* list1, unsigned char* list2) override {
    const PlatformWork work;
    Watch::current()->call(
        {Kind::kDriverCall, "getComponentdotCmdList", hex({command, command + commandLength}), {}});
    return target_->getComponentdotCmdList(command, commandLength, list0, list1, list2);
  }

  bool sendDotCommand(dotCmd* command, unsigned char* reply, int* replyLength, int spIndex,
                      int bufferSize) override {
    const PlatformWork work;
    return commanded(
        {Kind::kDotCommand, hex(command->command), hex(command->data), std::to_string(spIndex)},
        replyLength, [&](Event&) {
          return target_->sendDotCommand(command, reply, replyLength, spIndex, bufferSize);
        });
  }
  bool sendTamberCommand(TamberCmd* command, int* replyLength, unsigned char* reply) override {
    const PlatformWork work;
    return commanded({Kind::kTamberCommand, hex(command->command), hex(command->data), {}},
                     replyLength, [&](Event& event) {
                       const bool sent = target_->sendTamberCommand(command, replyLength, reply);
                       keepReply(event, {reply, kTamberReplySize});
                       return sent;
                     });
  }
  bool sendIPMICommand(unsigned char* buffer, int* length, int capacity, bool wait) override {
    const PlatformWork work;
    const std::size_t size = static_cast<std::size_t>(std::max(capacity, 0));
    return commanded({Kind::kIpmiCommand, hex({buffer, buffer + capacity}), {}, {}}, length,
                     [&](Event& event) {
                       const bool sent = target_->sendIPMICommand(buffer, length, capacity, wait);
                       keepReply(event, {buffer, size});
                       return sent;
                     });
  }
  void printMatrix(const unsigned char* bytes, int length) override {
    target_->printMatrix(bytes, length);
  }

 private:
  template <class Answer>
  Answer asked(const char* operation, Answer (SPLibrary::*question)()) {
    const PlatformWork work;
    Watch::current()->call({Kind::kDriverCall, operation, {}, {}});
    return ((*target_).*question)();
  }

  static void keepReply(Event& event, std::span<const unsigned char> buffer) {
    event.reply = std::make_shared<const std::vector<unsigned char>>(buffer.begin(), buffer.end());
  }

  std::unique_ptr<SPLibrary> target_;
};

// ---- SMBIOS

template <class Function>
Function* real(const char* mangled) {
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): that is how dlsym gives functions
  auto* const found = reinterpret_cast<Function*>(dlsym(RTLD_NEXT, mangled));
  if (found == nullptr) throw std::logic_error(std::string("no ") + mangled);
  return found;
}

int typeRead = 0;  // NOLINT: that the last smBiosGetFirst asked for

// The machine type's own look at the tables is the platform's.
bool isPlugins() { return Watch::current() != nullptr && (typeRead == 0 || typeRead == 11); }

template <class Read>
int readStructure(const Read& read) {
  if (!isPlugins()) return read();
  Watch& watch = *Watch::current();
  const bool due = watch.isDue(Kind::kSmbiosRead);
  if (due && watch.fault.throws()) {
    watch.trace.push_back({Kind::kSmbiosRead, std::to_string(typeRead), {}, {}, true});
    raise(watch.fault.failure);
  }
  int status = due && watch.fault.failure == Failure::kReadNothing ? 0 : read();
  if (due) status = watch.fault.number;
  watch.trace.push_back({Kind::kSmbiosRead, std::to_string(typeRead), {}, std::to_string(status)});
  return status;
}

}  // namespace

std::unique_ptr<SPLibrary> watched(std::unique_ptr<SPLibrary> target) {
  return std::make_unique<WatchedDriver>(std::move(target));
}

}  // namespace sweep

namespace NKRXVEL20 {

using namespace sweep;

SPLibrary* SPLibrary::GetSplibraryInstance(int /*reserved*/) {
  return Watch::current()->driver.get();
}

int smBiosGetFirst(TSmBiosHandle* handle, int type, unsigned char* buffer, int* size) {
  const PlatformWork work;
  static auto* const next =
      real<decltype(smBiosGetFirst)>("_ZN9NKRXVEL2014smBiosGetFirstEPNS_13TSmBiosHandleEiPhPi");
  typeRead = type;
  return readStructure([&] { return next(handle, type, buffer, size); });
}

int smBiosGetNext(TSmBiosHandle* handle, unsigned char* buffer, int* size) {
  const PlatformWork work;
  static auto* const next =
      real<decltype(smBiosGetNext)>("_ZN9NKRXVEL2013smBiosGetNextEPNS_13TSmBiosHandleEPhPi");
  return readStructure([&] { return next(handle, buffer, size); });
}

int smBiosClose(TSmBiosHandle** handle) {
  const PlatformWork work;
  static auto* const next =
      real<decltype(smBiosClose)>("_ZN9NKRXVEL2011smBiosCloseEPPNS_13TSmBiosHandleE");
  if (isPlugins()) Watch::current()->trace.push_back({Kind::kSmbiosClose, {}, {}, {}});
  return next(handle);
}

}  // namespace NKRXVEL20
