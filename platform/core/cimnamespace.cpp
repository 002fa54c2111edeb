// SPDX-License-Identifier: Apache-2.0
#include "velhost/cimnamespace.h"

#include <algorithm>
#include <boost/make_shared.hpp>
#include <map>
#include <set>
#include <stdexcept>
#include <tuple>

#include "vel/exception.h"
#include "velhost/schema.h"

namespace NKRXVEL20::host {
namespace {

// What an instance holds, apart from the handles to it: the namespace keeps these, and a handle
// keeps the namespace's state, so that neither keeps itself alive.
struct InstanceData {
  explicit InstanceData(const ClassSchema& itsClass) : cimClass(&itsClass) {
    properties.reserve(itsClass.properties.size());
  }

  const ClassSchema* cimClass;
  PropertyList properties;
  bool inClass = false;  // enumerations of the class give it
};

using InstanceList = std::vector<std::shared_ptr<InstanceData>>;

const ClassSchema& requireClass(const Schema& schema, const std::string& name) {
  const ClassSchema* found = findClass(schema, name);
  if (found == nullptr) throw TVELException(kErrorClassNotFound, "no class " + name);
  return *found;
}

const PropertySchema& requireProperty(const ClassSchema& cimClass, const std::string& name) {
  const PropertySchema* found = findProperty(cimClass, name);
  if (found == nullptr) {
    throw TVELException(kErrorPropertyNotFound,
                        std::string(cimClass.name) + " has no property " + name);
  }
  return *found;
}

void requireConcrete(const ClassSchema& cimClass) {
  if (!cimClass.isAbstract) return;
  throw TVELException(kErrorNotSupported,
                      std::string(cimClass.name) + " is abstract: it has no instances of its own");
}

auto findValue(PropertyList& properties, const std::string& name) {
  return std::ranges::find(properties, name, &PropertyList::value_type::first);
}

void setValue(InstanceData& instance, const std::string& name, const TCIMValue& value) {
  const PropertySchema& property = requireProperty(*instance.cimClass, name);
  if (value.GetType() != property.type) {
    throw TVELException(kErrorTypeMismatch, std::string(instance.cimClass->name) + '.' + name +
                                                " is a " + std::string(typeName(property.type)));
  }
  const auto held = findValue(instance.properties, name);
  if (held == instance.properties.end()) {
    instance.properties.emplace_back(name, value);
  } else {
    held->second = value;
  }
}

constexpr std::size_t kMostRefusals = 1024;  // kinds of calls, of which names are free

// The faults, in the order of their list. A call looks up those that it concerns, as there may be
// thousands of either.
class FaultList {
 public:
  explicit FaultList(std::vector<Fault> faults) : faults_(std::move(faults)) {
    for (std::size_t i = 0; i < faults_.size(); ++i) {
      const Fault& fault = faults_[i];
      Watch& watch = watches_[{fault.operation, fault.className, fault.propertyName}];
      watch.due.try_emplace(fault.nth.value_or(kEach), i);  // of equal faults the first throws
    }
  }

  // Every fault that matches counts the call; the first of the list that is due, or null.
  const Fault* meet(CimOperation operation, std::string_view className,
                    std::string_view propertyName) {
    if (faults_.empty()) return nullptr;
    std::size_t first = faults_.size();
    for (const Key& key : std::set<Key>{{operation, className, propertyName},
                                        {operation, className, {}},
                                        {operation, {}, propertyName},
                                        {operation, {}, {}}}) {
      const auto watch = watches_.find(key);
      if (watch != watches_.end()) first = std::min(first, watch->second.count(first));
    }
    return first < faults_.size() ? &faults_[first] : nullptr;
  }

 private:
  using Key = std::tuple<CimOperation, std::string_view, std::string_view>;
  static constexpr unsigned kEach = 0;  // calls are counted from 1

  // Faults of one operation, class and property have all met the same calls.
  struct Watch {
    unsigned calls = 0;
    std::map<unsigned, std::size_t> due;  // place in the list, by the call that fails

    // Counts a call; the place of the first fault that is due, or `none`.
    std::size_t count(std::size_t none) {
      ++calls;
      for (const unsigned nth : {kEach, calls}) {
        const auto found = due.find(nth);
        if (found != due.end()) none = std::min(none, found->second);
      }
      return none;
    }
  };

  std::vector<Fault> faults_;
  std::map<Key, Watch> watches_;  // its texts are those of faults_
};

[[noreturn]] void raise(const Fault& fault) {
  constexpr const char* kText = "a failure that the host asked for";
  if (fault.throwsRuntimeError) throw std::runtime_error(kText);
  throw TVELException(kErrorAssertion, kText);
}

}  // namespace

struct CimNamespace::State {
  SchemaPtr schema;
  std::vector<std::string> missingClasses;
  FaultList faults;
  std::map<const ClassSchema*, InstanceList> instances;  // by class, in the order added
  std::vector<PublishedInstance> published;
  OnEnumeration onEnumeration;
  std::vector<RefusedCall> refusedCalls;

  void noteRefusal(CimOperation operation, std::string_view className,
                   std::string_view propertyName) {
    const auto known = std::ranges::find_if(refusedCalls, [&](const RefusedCall& call) {
      return call.operation == operation && call.className == className &&
             call.propertyName == propertyName;
    });
    if (known != refusedCalls.end()) {
      ++known->count;
    } else if (refusedCalls.size() < kMostRefusals) {
      refusedCalls.push_back({operation, std::string(className), std::string(propertyName), 1});
    }
  }

  // To be called before anything else that a plug-in's call does.
  void meetFaults(CimOperation operation, std::string_view className,
                  std::string_view propertyName = {}) {
    if (const Fault* const due = faults.meet(operation, className, propertyName)) raise(*due);
  }

  bool isMissing(const ClassSchema& cimClass) const {
    return std::ranges::find(missingClasses, cimClass.name) != missingClasses.end();
  }

  void requirePresent(const ClassSchema& cimClass) const {
    if (isMissing(cimClass)) {
      throw TVELException(kErrorClassNotFound, "no class " + std::string(cimClass.name));
    }
  }

  // Its own instances, then those of the classes that derive from it, in the schema's order.
  InstanceList instancesOf(const ClassSchema& cimClass, bool deep) const {
    InstanceList all = ownInstances(cimClass);
    if (!deep) return all;
    for (const ClassSchema& other : schema->classes) {
      if (&other == &cimClass || isMissing(other)) continue;
      if (!derivesFrom(other, cimClass)) continue;  // NOLINT(readability-suspicious-call-argument)
      const InstanceList more = ownInstances(other);
      all.insert(all.end(), more.begin(), more.end());
    }
    return all;
  }

  void addToClass(const std::shared_ptr<InstanceData>& instance) {
    if (instance->inClass) return;
    instances[instance->cimClass].push_back(instance);
    instance->inClass = true;
  }

 private:
  // A copy: who enumerates may add to the class.
  InstanceList ownInstances(const ClassSchema& cimClass) const {
    if (onEnumeration && !onEnumeration(std::string(cimClass.name))) return {};
    const auto found = instances.find(&cimClass);
    return found == instances.end() ? InstanceList() : found->second;
  }
};

namespace {

using StatePtr = std::shared_ptr<CimNamespace::State>;

// A plug-in's call: meets its faults, then does what it is for. Keeps note of one that is refused.
template <class Deed>
auto called(CimNamespace::State& state, CimOperation operation, std::string_view className,
            std::string_view propertyName, Deed deed) {
  try {
    state.meetFaults(operation, className, propertyName);
    return deed();
  } catch (...) {
    state.noteRefusal(operation, className, propertyName);
    throw;
  }
}

class Property : public ICIMProperty {
 public:
  Property(std::string name, TCIMValue value) : name_(std::move(name)), value_(std::move(value)) {}

  const std::string& GetName() const override { return name_; }
  const TCIMValue& GetValue() const override { return value_; }
  std::string GetValueAsString() const override { return value_.ToString(); }

 private:
  std::string name_;
  TCIMValue value_;
};

class Instance : public ICIMInstance {
 public:
  Instance(StatePtr state, std::shared_ptr<InstanceData> data)
      : state_(std::move(state)), data_(std::move(data)) {}

  boost::shared_ptr<ICIMProperty> GetProperty(const std::string& name,
                                              const TCIMValueMap& /*qualifiers*/) override {
    return called(*state_, CimOperation::kGetProperty, data_->cimClass->name, name, [&] {
      requireProperty(*data_->cimClass, name);
      const auto held = findValue(data_->properties, name);
      return boost::make_shared<Property>(
          name, held == data_->properties.end() ? TCIMValue() : held->second);
    });
  }

  void SetProperty(const std::string& name, const TCIMValue& value,
                   const TCIMValueMap& /*qualifiers*/) override {
    called(*state_, CimOperation::kSetProperty, data_->cimClass->name, name,
           [&] { setValue(*data_, name, value); });
  }

  void AddToClass(TCIMValueMap /*context*/) override {
    called(*state_, CimOperation::kAddToClass, data_->cimClass->name, {}, [&] {
      state_->addToClass(data_);
      state_->published.push_back({std::string(data_->cimClass->name), data_->properties});
    });
  }

 private:
  StatePtr state_;
  std::shared_ptr<InstanceData> data_;
};

class Class : public ICIMClass {
 public:
  Class(StatePtr state, const ClassSchema& schema)
      : state_(std::move(state)), schema_(&schema), name_(schema.name) {}

  const std::string& GetName(const TCIMValueMap& /*qualifiers*/) const override { return name_; }

  void GetInstances(const boost::function<bool(boost::shared_ptr<ICIMInstance>)>& callback,
                    bool deep, const TCIMValueMap& /*context*/) override {
    called(*state_, CimOperation::kEnumerateInstances, name_, {},
           [&] { state_->requirePresent(*schema_); });
    // A list of its own, as the callback may add to the class.
    for (const auto& data : state_->instancesOf(*schema_, deep)) {
      if (!callback(boost::make_shared<Instance>(state_, data))) return;
    }
  }

  boost::shared_ptr<ICIMInstance> CreateInstance() override {
    return called(*state_, CimOperation::kCreateInstance, name_, {}, [&] {
      state_->requirePresent(*schema_);
      requireConcrete(*schema_);
      return boost::make_shared<Instance>(state_, std::make_shared<InstanceData>(*schema_));
    });
  }

 private:
  StatePtr state_;
  const ClassSchema* schema_;
  std::string name_;
};

}  // namespace

CimNamespace::CimNamespace(std::vector<std::string> missingClasses, std::vector<Fault> faults)
    : state_(std::make_shared<State>(State{currentSchema(),
                                           std::move(missingClasses),
                                           FaultList(std::move(faults)),
                                           {},
                                           {},
                                           {},
                                           {}})) {}

CimNamespace::~CimNamespace() = default;

boost::shared_ptr<ICIMClass> CimNamespace::GetClass(const std::string& name,
                                                    TCIMValueMap /*context*/) {
  return called(*state_, CimOperation::kGetClass, name, {}, [&] {
    const ClassSchema& found = requireClass(*state_->schema, name);
    state_->requirePresent(found);
    return boost::make_shared<Class>(state_, found);
  });
}

boost::shared_ptr<ICIMClass> CimNamespace::requestClass(const std::string& name) {
  return boost::make_shared<Class>(state_, requireClass(*state_->schema, name));
}

void CimNamespace::addCompanion(const std::string& className, const PropertyList& properties) {
  const ClassSchema& cimClass = requireClass(*state_->schema, className);
  requireConcrete(cimClass);
  const auto instance = std::make_shared<InstanceData>(cimClass);
  for (const auto& [name, value] : properties) setValue(*instance, name, value);
  state_->addToClass(instance);
}

void CimNamespace::forget(const std::string& className) {
  InstanceList& instances = state_->instances[&requireClass(*state_->schema, className)];
  for (const auto& instance : instances) instance->inClass = false;
  instances.clear();
}

void CimNamespace::setOnEnumeration(OnEnumeration onEnumeration) {
  state_->onEnumeration = std::move(onEnumeration);
}

std::vector<PublishedInstance> CimNamespace::takePublished(std::size_t from) {
  auto& published = state_->published;
  const auto first = published.begin() + static_cast<std::ptrdiff_t>(from);
  std::vector<PublishedInstance> taken(std::make_move_iterator(first),
                                       std::make_move_iterator(published.end()));
  published.erase(first, published.end());
  return taken;
}

std::vector<RefusedCall> CimNamespace::takeRefusedCalls() {
  return std::exchange(state_->refusedCalls, {});
}

std::vector<PublishedInstance> CimNamespace::instancesOf(const std::string& className) const {
  std::vector<PublishedInstance> rows;
  const auto held = state_->instances.find(&requireClass(*state_->schema, className));
  if (held == state_->instances.end()) return rows;
  for (const auto& instance : held->second) rows.push_back({className, instance->properties});
  return rows;
}

std::size_t CimNamespace::publishedCount() const { return state_->published.size(); }

}  // namespace NKRXVEL20::host
