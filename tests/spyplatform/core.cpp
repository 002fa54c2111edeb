// SPDX-License-Identifier: Apache-2.0
//
// libvelcore.so once more: logs, exceptions, values and dates, firmware texts and the plug-in
// manager's handle.
#include "tests/spyplatform/core.h"

#include <boost/assert.hpp>
#include <boost/make_shared.hpp>
#include <cstdio>

#include "vel/log.h"
#include "vel/osspecific.h"
#include "vel/plugin.h"
#include "vel/rootobject.h"

using namespace NKRXVEL20;

namespace boost {

VEL_API void assertion_failed(const char* expression, const char* /*function*/,
                              const char* /*file*/, long /*line*/) {
  spyplatform::Call("assertion_failed", std::string("assertion_failed ") + expression).writeDown();
  const spyplatform::Muted muted;
  throw TVELException(kErrorAssertion, expression);
}

VEL_API void assertion_failed_msg(const char* expression, const char* /*message*/,
                                  const char* function, const char* file, long line) {
  assertion_failed(expression, function, file, line);
}

}  // namespace boost

namespace spyplatform {
namespace {

class SpyLogger : public ICoreLogger {
 public:
  void Log(EVELLogSeverity severity, const std::string& text) override {
    const bool isFetched = std::exchange(state().loggerFetched, false);
    begin("Log", "Log(" + std::to_string(severity) + ", " + quoted(text) + ")" +
                     (isFetched ? "" : " of a logger that was kept"))
        .writeDown();
  }
};

// The manager of another framework: no TPluginManagerNamespace.
class OtherManager : public ICIMNamespace {
 public:
  boost::shared_ptr<ICIMClass> GetClass(const std::string& /*name*/,
                                        TCIMValueMap /*context*/) override {
    return {};
  }
};

// A digit or a letter of ASCII.
bool isAlphaNumeric(char c) {
  return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

// A string set as text: "|" for each zero byte between and behind its strings.
std::string describeStrings(const char* source, int length) {
  std::string text(source, static_cast<std::size_t>(length));
  text.erase(text.find_last_not_of('\0') + 1);
  for (char& c : text) c = c == '\0' ? '|' : c;
  return std::to_string(length) + " bytes " + quoted(text);
}

std::string stringOf(const char* source, int length, int number) {
  std::string set(source, static_cast<std::size_t>(length));
  std::size_t start = 0;
  for (int i = 1; i < number; ++i) {
    const std::size_t end = set.find('\0', start);
    if (end == std::string::npos) return {};
    start = end + 1;
  }
  return number < 1 ? "" : set.substr(start, set.find('\0', start) - start);
}

std::string typed(const char* type, const TCIMValue& value) {
  return std::string(type) + " " + value.ToString(10);
}

}  // namespace

std::string describe(const TCIMValue& value) {
  const Muted muted;
  switch (value.GetType()) {
    case ECIMType::kEmpty:
      return "empty";
    case ECIMType::kString:
      return quoted(value.ToString(10));
    case ECIMType::kBoolean:
      return value.ToString(10);
    case ECIMType::kUint8:
      return typed("uint8", value);
    case ECIMType::kUint16:
      return typed("uint16", value);
    case ECIMType::kUint64:
      return typed("uint64", value);
    case ECIMType::kDateTime:
      return typed("date", value);
  }
  return {};
}

std::string describe(const TCIMValueMap& map) {
  std::string entries;
  for (const auto& [key, value] : map) {
    entries += (entries.empty() ? "" : ", ") + key + ": " + describe(value);
  }
  return "{" + entries + "}";
}

}  // namespace spyplatform

namespace NKRXVEL20 {

using spyplatform::begin;
using spyplatform::quoted;
using spyplatform::state;

ICoreLogger::~ICoreLogger() = default;
IPluginCallbacks::~IPluginCallbacks() { begin("~plug-in", "~plug-in").writeDown(); }
IPluginBasicQueryCallbacks::~IPluginBasicQueryCallbacks() = default;

TVELException::TVELException(std::int32_t code) : TVELException(code, "") {}

TVELException::TVELException(std::int32_t code, const std::string& what)
    : std::runtime_error(what), code_(code) {
  // The words are the thrower's own.
  spyplatform::Call("TVELException", "TVELException(" + std::to_string(code) + ")").writeDown();
}

TVELException::~TVELException() = default;

ICoreLogger& TRootObject::GetCoreLogger() {
  static spyplatform::SpyLogger logger;
  const auto call = begin("GetCoreLogger", "GetCoreLogger()");
  // One that is fetched for an entry is seen in the entry's line.
  if (std::exchange(state().loggerFetched, true)) call.writeDown(" without an entry before it");
  return logger;
}

void fdrWriteLog(EVELLogSeverity severity, const char* text) {
  begin("fdrWriteLog", "fdrWriteLog(" + std::to_string(severity) + ", " + quoted(text) + ")")
      .writeDown();
}

std::string TCIMValue::ToString(int base) const {
  auto text = std::visit(
      [](const auto& value) -> std::string {
        using T = std::decay_t<decltype(value)>;
        if constexpr (std::is_same_v<T, std::monostate>) return "";
        if constexpr (std::is_same_v<T, std::string>) return value;
        if constexpr (std::is_same_v<T, TCIMDateTime>) return value.ToString();
        if constexpr (std::is_same_v<T, bool>) return value ? "true" : "false";
        if constexpr (std::is_integral_v<T>) return std::to_string(value);
      },
      value_);
  begin("ToString", "TCIMValue " + quoted(text) + ".ToString(" + std::to_string(base) + ")")
      .writeDown();
  return text;
}

std::uint64_t TCIMValue::ToUint64() const {
  const auto number = std::visit(
      [](const auto& value) -> std::uint64_t {
        using T = std::decay_t<decltype(value)>;
        if constexpr (std::is_integral_v<T>) return value;
        return 0;
      },
      value_);
  begin("ToUint64", "TCIMValue.ToUint64()").writeDown(" -> " + std::to_string(number));
  return number;
}

TCIMDateTime::TCIMDateTime() : text_("00000000000000.000000+000") {
  begin("TCIMDateTime", "TCIMDateTime()").writeDown();
}

TCIMDateTime::TCIMDateTime(const std::string& text) : text_(text) {
  begin("TCIMDateTime", "TCIMDateTime(" + quoted(text) + ")").writeDown();
}

// Takes whatever numbers come; a status but 0 is for a rule to say. Only 3 leaves the value alone.
int fdrSetDateTime(TCIMDateTime* value, int year, int month, int day, int hour, int minute,
                   int second, int microseconds, int utcOffset) {
  std::string line = "fdrSetDateTime(" + value->ToString();
  for (const int number : {year, month, day, hour, minute, second, microseconds, utcOffset}) {
    line += ", " + std::to_string(number);
  }
  const auto call = begin("fdrSetDateTime", line + ")");
  const int status = call.numberOr(0);
  call.writeDown(" -> " + std::to_string(status));
  if (status == 3) return status;
  std::array<char, 64> text{};
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-vararg)
  std::snprintf(text.data(), text.size(), "%04d%02d%02d%02d%02d%02d.%06d+%03d", year, month, day,
                hour, minute, second, microseconds, utcOffset);
  const spyplatform::Muted muted;
  *value = TCIMDateTime(text.data());
  return status;
}

std::string TOSSpecific::GetMachineTypeFromID() {
  begin("GetMachineTypeFromID", "GetMachineTypeFromID()")
      .writeDown(" -> " + quoted(state().machineType));
  return state().machineType;
}

void TOSSpecific::getBIDString(char* source, char* destination, int length, int number) {
  constexpr int kDestinationSize = 100;
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): texts are shown as bytes
  const auto* const before = reinterpret_cast<const unsigned char*>(destination);
  const auto call =
      begin("getBIDString", "getBIDString(" + spyplatform::describeStrings(source, length) + ", " +
                                spyplatform::describeBytes(before, kDestinationSize) + ", " +
                                std::to_string(length) + ", " + std::to_string(number) + ")");
  const std::string text =
      spyplatform::stringOf(source, length, number).substr(0, kDestinationSize - 1);
  call.writeDown(" -> " + quoted(text));
  text.copy(destination, text.size());
  destination[text.size()] = '\0';
}

void TOSSpecific::removeNonAlpaNumeric(std::string& text) {
  const auto call = begin("removeNonAlpaNumeric", "removeNonAlpaNumeric(" + quoted(text) + ")");
  std::erase_if(text, [](char c) { return !spyplatform::isAlphaNumeric(c); });
  call.writeDown(" -> " + quoted(text));
}

// Another maker's rule: three characters of version, the rest is the build.
void TOSSpecific::breakApartVersion(std::string& version, std::string& build) {
  const auto call = begin("breakApartVersion",
                          "breakApartVersion(" + quoted(version) + ", " + quoted(build) + ")");
  build = version.substr(std::min<std::size_t>(3, version.size()));
  version = version.substr(0, 3);
  call.writeDown(" -> " + quoted(version) + ", " + quoted(build));
}

boost::shared_ptr<ICIMNamespace> TRootObject::GetPluginManager() {
  const auto call = begin("GetPluginManager", "GetPluginManager()");
  call.writeDown();
  if (call.isNull()) return {};
  if (call.numberOr(0) != 0) return boost::make_shared<spyplatform::OtherManager>();
  return state().pluginManager;
}

}  // namespace NKRXVEL20
