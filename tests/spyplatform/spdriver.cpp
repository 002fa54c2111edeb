// SPDX-License-Identifier: Apache-2.0
//
// libspdriver.so once more: a service processor that answers what the rules say, and else nothing.
#include <pthread.h>

#include <algorithm>
#include <map>

#include "tests/spyplatform/recorder.h"
#include "vel/splibrary.h"

namespace NKRXVEL20 {

namespace {

using spyplatform::begin;
using spyplatform::Bytes;
using spyplatform::Call;
using spyplatform::describeBool;
using spyplatform::describeBytes;
using spyplatform::hex;
using spyplatform::nextName;
using spyplatform::state;

// The requests that live, by address.
std::map<const void*, std::string>& names() {
  static std::map<const void*, std::string> theNames;
  return theNames;
}

std::string nameOf(const void* request) {
  const auto name = names().find(request);
  return name == names().end() ? "a dead request" : name->second;
}

std::pair<const char*, const char*> stackOfThread() {
  pthread_attr_t attributes;
  void* start = nullptr;
  std::size_t size = 0;
  pthread_getattr_np(pthread_self(), &attributes);
  pthread_attr_getstack(&attributes, &start, &size);
  pthread_attr_destroy(&attributes);
  const auto* const first = static_cast<const char*>(start);
  return {first, first + size};
}

// Whether the object lies on the stack of the thread that runs.
bool isOnStack(const void* object) {
  thread_local const std::pair<const char*, const char*> stack = stackOfThread();
  return std::less_equal<>{}(stack.first, static_cast<const char*>(object)) &&
         std::less<>{}(static_cast<const char*>(object), stack.second);
}

Bytes copied(const unsigned char* bytes, int count) {
  return bytes == nullptr || count < 1 ? Bytes{} : Bytes(bytes, bytes + count);
}

// What a pointer to `count` bytes gives; none of them is read when there is none.
std::string describeInput(const unsigned char* bytes, int count) {
  if (bytes == nullptr) return "null";
  return count < 1 ? "no bytes" : hex(bytes, count);
}

std::string hexOf(const Bytes& bytes) { return hex(bytes.data(), static_cast<int>(bytes.size())); }

std::string describeRequest(const dotCmd* command) {
  const std::string path = command->command.empty() ? "" : " " + hexOf(command->command);
  return nameOf(command) + path + (command->data.empty() ? "" : " / " + hexOf(command->data));
}

// Puts the rule's reply into the buffer. False: no rule gives one.
bool answer(const Call& call, unsigned char* buffer, int* length, int capacity) {
  const spyplatform::Outcome* const reply = call.reply();
  if (reply == nullptr) {
    call.writeDown(" -> false");
    return false;
  }
  const auto count = std::min(reply->reply.size(), static_cast<std::size_t>(capacity));
  std::copy_n(reply->reply.begin(), count, buffer);
  *length = reply->number;
  call.writeDown(" -> true, length " + std::to_string(*length));
  return true;
}

class SpySPLibrary : public SPLibrary {
 public:
  int discoverSPs() override { return number("discoverSPs"); }
  bool checkSPComm() override { return truth("checkSPComm"); }
  bool isDotcommand() override { return truth("isDotcommand"); }
  bool isTamber() override { return truth("isTamber"); }
  bool isTwgStop() override { return truth("isTwgStop"); }
  bool isTvmlibrary() override { return truth("isTvmlibrary"); }
  bool IsBMCMachine() override { return truth("IsBMCMachine"); }
  bool IsIPMIDriversPresent() override { return truth("IsIPMIDriversPresent"); }
  bool IsIntegratedBMC() override { return truth("IsIntegratedBMC"); }
  int GetNumberBMCNode() override { return number("GetNumberBMCNode"); }

  // The lists hold one byte each, by which they are known again.
  bool buildDotCommandList(unsigned char* list0, unsigned char* list1,
                           unsigned char* list2) override {
    const Call call = begin("buildDotCommandList",
                            "buildDotCommandList(" + describeLists(list0, list1, list2) + ")");
    const bool isBuilt = call.numberOr(0) != 0;
    call.writeDown(" -> " + describeBool(isBuilt));
    if (!isBuilt) return false;
    *list0 = 0xA0;
    *list1 = 0xA1;
    *list2 = 0xA2;
    return true;
  }

  int getComponentdotCmdList(unsigned char* command, int commandLength, unsigned char* list0,
                             unsigned char* list1, unsigned char* list2) override {
    return number("getComponentdotCmdList",
                  describeInput(command, commandLength) + ", " + std::to_string(commandLength) +
                      ", " + describeLists(list0, list1, list2),
                  -1);
  }

  bool sendDotCommand(dotCmd* command, unsigned char* reply, int* replyLength, int spIndex,
                      int bufferSize) override {
    state().sent.push_back({reply, replyLength});
    const Call call =
        begin("sendDotCommand",
              "sendDotCommand(" + describeRequest(command) + ", " +
                  describeBytes(reply, bufferSize) + ", length " + std::to_string(*replyLength) +
                  ", SP " + std::to_string(spIndex) + ", " + std::to_string(bufferSize) + ")");
    return answer(call, reply, replyLength, bufferSize);
  }

  bool sendTamberCommand(TamberCmd* command, int* replyLength, unsigned char* reply) override {
    const Call call = begin("sendTamberCommand", "sendTamberCommand(" + nameOf(command) +
                                                     ", length " + std::to_string(*replyLength) +
                                                     ", " + describeBytes(reply, 255) + ")");
    return answer(call, reply, replyLength, 255);
  }

  bool sendIPMICommand(unsigned char* buffer, int* length, int capacity, bool wait) override {
    const Call call =
        begin("sendIPMICommand", "sendIPMICommand(" + describeBytes(buffer, capacity) +
                                     ", length " + std::to_string(*length) + ", " +
                                     std::to_string(capacity) + ", " + describeBool(wait) + ")");
    return answer(call, buffer, length, capacity);
  }

  void printMatrix(const unsigned char* bytes, int length) override {
    begin("printMatrix",
          "printMatrix(" + describeInput(bytes, length) + ", " + std::to_string(length) + ")")
        .writeDown();
  }

 private:
  static int number(const std::string& operation, const std::string& arguments = {},
                    int usual = 0) {
    const Call call = begin(operation, operation + "(" + arguments + ")");
    const int result = call.numberOr(usual);
    call.writeDown(" -> " + std::to_string(result));
    return result;
  }

  static bool truth(const std::string& operation) {
    const Call call = begin(operation, operation + "()");
    const bool result = call.numberOr(0) != 0;
    call.writeDown(" -> " + describeBool(result));
    return result;
  }

  static std::string describeLists(const unsigned char* list0, const unsigned char* list1,
                                   const unsigned char* list2) {
    constexpr int kListSize = 4096;
    return describeBytes(list0, kListSize) + "; " + describeBytes(list1, kListSize) + "; " +
           describeBytes(list2, kListSize);
  }
};

}  // namespace

// A pointer to data of length 0 points to one byte, which is shown.
dotCmd::dotCmd(unsigned char commandType, int commandLength, int dataLength,
               const unsigned char* commandBytes, const unsigned char* dataBytes)
    : type(commandType),
      command(copied(commandBytes, commandLength)),
      data(copied(dataBytes, dataLength)) {
  const std::string name = nextName("dotCmd");
  const bool isByte = dataBytes != nullptr && dataLength == 0;
  begin("dotCmd",
        name + "(" + std::to_string(type) + ", " + std::to_string(commandLength) + ", " +
            std::to_string(dataLength) + ", " + describeInput(commandBytes, commandLength) + ", " +
            (isByte ? "one byte " + hex(dataBytes, 1) : describeInput(dataBytes, dataLength)) + ")")
      .writeDown();
  names()[this] = name;
  state().made.push_back({name, isOnStack(this)});
}

dotCmd::~dotCmd() {
  Call("~dotCmd", "~" + nameOf(this)).writeDown();
  names().erase(this);
}

TamberCmd::TamberCmd(unsigned char byte0, unsigned char byte1, unsigned char byte2,
                     unsigned char byte3, unsigned char* dataBytes, int dataLength, bool flag0Value,
                     bool flag1Value)
    : command{byte0, byte1, byte2, byte3},
      data(copied(dataBytes, dataLength)),
      flag0(flag0Value),
      flag1(flag1Value) {
  const std::string name = nextName("TamberCmd");
  begin("TamberCmd", name + "(" + hexOf(command) + ", " + describeInput(dataBytes, dataLength) +
                         ", " + std::to_string(dataLength) + ", " + describeBool(flag0) + ", " +
                         describeBool(flag1) + ")")
      .writeDown();
  names()[this] = name;
}

SPLibrary::~SPLibrary() = default;

SPLibrary* SPLibrary::GetSplibraryInstance(int reserved) {
  static SpySPLibrary library;
  const Call call =
      begin("GetSplibraryInstance", "GetSplibraryInstance(" + std::to_string(reserved) + ")");
  call.writeDown(call.isNull() ? " -> null" : "");
  return call.isNull() ? nullptr : &library;
}

}  // namespace NKRXVEL20
