// SPDX-License-Identifier: Apache-2.0
//
// The in-process CIM namespace that a host hands to its plug-ins.
#pragma once

#include <boost/shared_ptr.hpp>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "vel/cim.h"
#include "vel/export.h"

namespace NKRXVEL20::host {

enum class CimOperation {
  kGetClass,
  kCreateInstance,
  kEnumerateInstances,
  kGetProperty,
  kSetProperty,
  kAddToClass,
};

// A framework call that is made to fail. Calls are counted over the namespace's life and only those
// that plug-ins make; an empty class or property matches all.
struct Fault {
  CimOperation operation = CimOperation::kGetClass;
  std::string className;
  std::string propertyName;
  std::optional<unsigned> nth;      // the one matching call, from 1, that fails; nullopt: each
  bool throwsRuntimeError = false;  // std::runtime_error instead of TVELException code 1
};

// Property values in the order in which each was first set.
using PropertyList = std::vector<std::pair<std::string, TCIMValue>>;

// A call of a plug-in's that ended in an exception.
struct RefusedCall {
  CimOperation operation = CimOperation::kGetClass;
  std::string className;
  std::string propertyName;  // of get_property and set_property
  unsigned count = 0;        // how often

  friend bool operator==(const RefusedCall&, const RefusedCall&) = default;
};

struct PublishedInstance {
  std::string className;
  PropertyList properties;
};

class VEL_API CimNamespace : public ICIMNamespace {
 public:
  // Has the schema that is current now, and keeps it. `missingClasses`: classes of it that this
  // namespace does not have.
  CimNamespace(std::vector<std::string> missingClasses, std::vector<Fault> faults);
  ~CimNamespace() override;

  CimNamespace(const CimNamespace&) = delete;
  CimNamespace& operator=(const CimNamespace&) = delete;

  boost::shared_ptr<ICIMClass> GetClass(const std::string& name, TCIMValueMap context) override;

  // A handle that names a class in a request, also for a class that is missing here. Meets no
  // fault. Raises kErrorClassNotFound for a name that the schema does not have.
  boost::shared_ptr<ICIMClass> requestClass(const std::string& name);

  // Fills in an instance as another collector would have. Meets no fault. Raises what
  // ICIMClass::CreateInstance and ICIMInstance::SetProperty raise.
  void addCompanion(const std::string& className, const PropertyList& properties);

  // Takes the instances of a class out of it, as its collector is about to publish new ones.
  void forget(const std::string& className);

  // Is asked before a plug-in gets the instances of a class: false keeps the class's instances from
  // it. It may have other plug-ins publish some first.
  using OnEnumeration = std::function<bool(const std::string& className)>;
  void setOnEnumeration(OnEnumeration onEnumeration);

  // What was added to classes by plug-ins since the last call, in order; with `from` only what was
  // added behind the first so many.
  std::vector<PublishedInstance> takePublished(std::size_t from = 0);
  std::size_t publishedCount() const;

  // The calls that were refused since the last call, each kind of call once, at most 1024.
  std::vector<RefusedCall> takeRefusedCalls();

  // What enumerating the class gives, without the instances of classes that derive from it. Meets no
  // fault and asks no other plug-in.
  std::vector<PublishedInstance> instancesOf(const std::string& className) const;

  struct State;  // shared with the classes and instances handed out, which may outlive this object

 private:
  std::shared_ptr<State> state_;
};

}  // namespace NKRXVEL20::host
