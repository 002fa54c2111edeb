// SPDX-License-Identifier: Apache-2.0
#include "vel/log.h"

#include <utility>

#include "vel/rootobject.h"
#include "velhost/log.h"

namespace NKRXVEL20 {
namespace {

host::LogSink& coreLogSink() {
  static host::LogSink sink;
  return sink;
}

host::LogSink& failureLogSink() {
  static host::LogSink sink;
  return sink;
}

void write(const host::LogSink& sink, EVELLogSeverity severity, const std::string& text) {
  if (sink) sink({severity, text});
}

class CoreLogger : public ICoreLogger {
 public:
  void Log(EVELLogSeverity severity, const std::string& text) override {
    write(coreLogSink(), severity, text);
  }
};

}  // namespace

ICoreLogger::~ICoreLogger() = default;

ICoreLogger& TRootObject::GetCoreLogger() {
  static CoreLogger logger;
  return logger;
}

void fdrWriteLog(EVELLogSeverity severity, const char* text) {
  write(failureLogSink(), severity, text);
}

namespace host {

void setCoreLogSink(LogSink sink) { coreLogSink() = std::move(sink); }

void setFailureLogSink(LogSink sink) { failureLogSink() = std::move(sink); }

}  // namespace host
}  // namespace NKRXVEL20
