// SPDX-License-Identifier: Apache-2.0
#include "tests/support/frameworkfixture.h"

#include "velhost/log.h"

namespace collector::test {

using namespace NKRXVEL20;

namespace {

Properties describe(const host::PropertyList& properties) {
  Properties result;
  for (const auto& [name, value] : properties) result.push_back(name + "=" + value.ToString());
  return result;
}

host::LogSink appendTo(Log& log) {
  return [&log](const host::LogEntry& entry) { log.emplace_back(entry.severity, entry.text); };
}

}  // namespace

FrameworkTest::FrameworkTest()
    : ns(boost::make_shared<host::CimNamespace>(std::vector<std::string>{}, std::vector<Fault>{})) {
  host::setCoreLogSink(appendTo(log));
  host::setFailureLogSink(appendTo(failureLog));
}

FrameworkTest::~FrameworkTest() {
  host::setCoreLogSink({});
  host::setFailureLogSink({});
}

void FrameworkTest::useFaults(std::vector<Fault> faults, std::vector<std::string> missingClasses) {
  ns = boost::make_shared<host::CimNamespace>(std::move(missingClasses), std::move(faults));
}

void FrameworkTest::refuseProperty(const std::string& property) {
  useFaults({{.operation = host::CimOperation::kSetProperty,
              .className = {},
              .propertyName = property,
              .nth = std::nullopt,
              .throwsRuntimeError = false}});
}

std::vector<Properties> FrameworkTest::published(const std::vector<InstanceHandle>& instances) {
  ns->takePublished();
  for (const auto& instance : instances) instance->AddToClass({});
  std::vector<Properties> result;
  for (const auto& row : ns->takePublished()) result.push_back(describe(row.properties));
  return result;
}

std::vector<std::pair<std::string, Properties>> FrameworkTest::takePublished() {
  std::vector<std::pair<std::string, Properties>> result;
  for (const auto& row : ns->takePublished()) {
    result.emplace_back(row.className, describe(row.properties));
  }
  return result;
}

Log FrameworkTest::takeLog() { return std::exchange(log, {}); }

}  // namespace collector::test
