// SPDX-License-Identifier: Apache-2.0
//
// The namespace of libvelcore.so once more. A class takes any property of any type.
#include "vel/cim.h"

#include <boost/make_shared.hpp>

#include "tests/spyplatform/core.h"

using namespace NKRXVEL20;

namespace NKRXVEL20 {

ICIMProperty::~ICIMProperty() = default;
ICIMInstance::~ICIMInstance() = default;
ICIMClass::~ICIMClass() = default;
ICIMNamespace::~ICIMNamespace() = default;

const char* const TCIMSchemaHelper::kContextName = "asker";
const char* const TCIMSchemaHelper::kPluginNSPName = "plug-ins";

}  // namespace NKRXVEL20

namespace spyplatform {
namespace {

class SpyProperty : public ICIMProperty {
 public:
  SpyProperty(std::string owner, std::string name, TCIMValue value)
      : owner_(std::move(owner)), name_(std::move(name)), value_(std::move(value)) {}

  const std::string& GetName() const override {
    record("GetName()").writeDown();
    return name_;
  }

  const TCIMValue& GetValue() const override {
    record("GetValue()").writeDown();
    return value_;
  }

  std::string GetValueAsString() const override {
    const Call call = record("GetValueAsString()");
    std::string text = textOf(value_);
    call.writeDown(" -> " + quoted(text));
    return text;
  }

 private:
  static std::string textOf(const TCIMValue& value) {
    const Muted muted;
    return value.ToString(10);
  }

  Call record(const std::string& operation) const {
    return begin(operation.substr(0, operation.find('(')), owner_ + "." + name_ + "." + operation);
  }

  std::string owner_;
  std::string name_;
  TCIMValue value_;
};

class SpyInstance : public ICIMInstance {
 public:
  SpyInstance(std::string name, PropertyValues values, bool isCounted)
      : name_(std::move(name)), values_(std::move(values)), isCounted_(isCounted) {}

  ~SpyInstance() override {
    if (isCounted_) Call("~instance", "~" + name_).writeDown();
  }

  SpyInstance(const SpyInstance&) = delete;
  SpyInstance& operator=(const SpyInstance&) = delete;

  boost::shared_ptr<ICIMProperty> GetProperty(const std::string& name,
                                              const TCIMValueMap& qualifiers) override {
    const Call call = begin(
        "GetProperty", name_ + ".GetProperty(" + quoted(name) + ", " + describe(qualifiers) + ")");
    call.writeDown(call.isNull() ? " -> null" : "");
    if (call.isNull()) return {};
    return boost::make_shared<SpyProperty>(name_, name, values_[name]);
  }

  void SetProperty(const std::string& name, const TCIMValue& value,
                   const TCIMValueMap& qualifiers) override {
    begin("SetProperty", name_ + ".SetProperty(" + quoted(name) + ", " + describe(value) + ", " +
                             describe(qualifiers) + ")")
        .writeDown();
    values_[name] = value;
  }

  void AddToClass(TCIMValueMap context) override {
    begin("AddToClass", name_ + ".AddToClass(" + describe(context) + ")").writeDown();
  }

 private:
  std::string name_;
  PropertyValues values_;
  bool isCounted_;
};

class SpyClass : public ICIMClass {
 public:
  explicit SpyClass(std::string name) : name_(std::move(name)) {}

  const std::string& GetName(const TCIMValueMap& qualifiers) const override {
    begin("GetName", name_ + ".GetName(" + describe(qualifiers) + ")").writeDown();
    return name_;
  }

  // The instances of other collectors; those of the plug-in are not taken in.
  void GetInstances(const boost::function<bool(boost::shared_ptr<ICIMInstance>)>& callback,
                    bool deep, const TCIMValueMap& context) override {
    const auto& instances = state().published[name_];
    const Call call = begin("GetInstances", name_ + ".GetInstances(deep " + describeBool(deep) +
                                                ", " + describe(context) + ")");
    call.writeDown(" -> " + std::to_string(instances.size()));
    for (std::size_t i = 0; i < instances.size(); ++i) {
      boost::shared_ptr<ICIMInstance> instance;
      if (!call.isNull()) {
        instance = boost::make_shared<SpyInstance>(name_ + "[" + std::to_string(i) + "]",
                                                   instances[i], false);
      }
      if (!callback(instance)) break;
    }
  }

  boost::shared_ptr<ICIMInstance> CreateInstance() override {
    const Call call = begin("CreateInstance", name_ + ".CreateInstance()");
    if (call.isNull()) {
      call.writeDown(" -> null");
      return {};
    }
    const std::string instance = nextName("instance");
    call.writeDown(" -> " + instance);
    return boost::make_shared<SpyInstance>(instance, PropertyValues{}, true);
  }

 private:
  std::string name_;
};

class SpyNamespace : public ICIMNamespace {
 public:
  boost::shared_ptr<ICIMClass> GetClass(const std::string& name, TCIMValueMap context) override {
    const Call call =
        begin("GetClass", "namespace.GetClass(" + quoted(name) + ", " + describe(context) + ")");
    call.writeDown(call.isNull() ? " -> null" : "");
    if (call.isNull()) return {};
    return makeClass(name);
  }
};

}  // namespace

boost::shared_ptr<ICIMNamespace> makeNamespace() { return boost::make_shared<SpyNamespace>(); }

boost::shared_ptr<ICIMClass> makeClass(const std::string& name) {
  return boost::make_shared<SpyClass>(name);
}

}  // namespace spyplatform
