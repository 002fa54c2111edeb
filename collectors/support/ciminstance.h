// SPDX-License-Identifier: Apache-2.0
//
// The only places where collectors create instances and set properties: each catches what the
// framework throws and logs the caller's text.
#pragma once

#include <boost/shared_ptr.hpp>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "vel/cim.h"

namespace collector {

using NamespaceHandle = boost::shared_ptr<NKRXVEL20::ICIMNamespace>;
using InstanceHandle = boost::shared_ptr<NKRXVEL20::ICIMInstance>;

// What is logged at severity 0 when the framework refuses: the text, and behind it the name of
// what it was about, where one is given.
struct FailureText {
  // NOLINTNEXTLINE(google-explicit-constructor): a plain text is the common case
  FailureText(const char* fixedText, std::string_view name = {}) : text(fixedText), subject(name) {}

  const char* text;
  std::string_view subject;
};

void logRefusal(const FailureText& failure);

// The context of every class lookup: it says that a plug-in asks.
NKRXVEL20::TCIMValueMap pluginContext();

// A new instance of the class. nullopt after TVELException, which is logged. The handle may be
// null: it is then refused where it is used first.
std::optional<InstanceHandle> createInstance(const NamespaceHandle& ns,
                                             const std::string& className,
                                             const FailureText& failure);

// False after TVELException, which is logged.
bool setProperty(const InstanceHandle& instance, const std::string& name,
                 const NKRXVEL20::TCIMValue& value, const FailureText& failure);

struct PropertyRow {
  const char* name = nullptr;
  NKRXVEL20::TCIMValue value;
  const char* failureText = nullptr;
};

// Sets the properties in the order of the rows up to the first refusal, and returns false then.
bool setProperties(const InstanceHandle& instance, std::span<const PropertyRow> rows);

// All instances of a class, as other collectors published them. Throws what the framework throws.
std::vector<InstanceHandle> enumerateInstances(const NamespaceHandle& ns,
                                               const std::string& className,
                                               const NKRXVEL20::TCIMValueMap& context);

}  // namespace collector
