// SPDX-License-Identifier: Apache-2.0
//
// Stands before a namespace and notes each call that a collector makes, with the context that it
// gives: "get KRXSG_USBDevice as a plug-in" and so on.
#pragma once

#include <boost/make_shared.hpp>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "vel/cim.h"

namespace spfirmwarevpd::test {

using Calls = std::vector<std::string>;

class NamespaceSpy : public NKRXVEL20::ICIMNamespace {
 public:
  explicit NamespaceSpy(boost::shared_ptr<ICIMNamespace> target)
      : target_(std::move(target)), calls_(std::make_shared<Calls>()) {}

  boost::shared_ptr<NKRXVEL20::ICIMClass> GetClass(const std::string& name,
                                                   NKRXVEL20::TCIMValueMap context) override {
    calls_->push_back("get " + name + asked(context));
    return boost::make_shared<Class>(target_->GetClass(name, context), name, calls_);
  }

  Calls takeCalls() { return std::exchange(*calls_, {}); }

 private:
  using CallsPtr = std::shared_ptr<Calls>;
  using Callback = boost::function<bool(boost::shared_ptr<NKRXVEL20::ICIMInstance>)>;

  static std::string asked(const NKRXVEL20::TCIMValueMap& context) {
    using NKRXVEL20::TCIMSchemaHelper;
    if (context.empty()) return "";
    const bool isPlugin = context.size() == 1 && context.contains(TCIMSchemaHelper::kContextName) &&
                          context.at(TCIMSchemaHelper::kContextName) ==
                              NKRXVEL20::TCIMValue(TCIMSchemaHelper::kPluginNSPName);
    return isPlugin ? " as a plug-in" : " in another context";
  }

  class Instance : public NKRXVEL20::ICIMInstance {
   public:
    Instance(boost::shared_ptr<ICIMInstance> target, std::string name, CallsPtr calls)
        : target_(std::move(target)), name_(std::move(name)), calls_(std::move(calls)) {}

    boost::shared_ptr<NKRXVEL20::ICIMProperty> GetProperty(
        const std::string& name, const NKRXVEL20::TCIMValueMap& qualifiers) override {
      calls_->push_back("read " + name_ + "." + name + asked(qualifiers));
      return target_->GetProperty(name, qualifiers);
    }

    void SetProperty(const std::string& name, const NKRXVEL20::TCIMValue& value,
                     const NKRXVEL20::TCIMValueMap& qualifiers) override {
      calls_->push_back("set " + name_ + "." + name + asked(qualifiers));
      target_->SetProperty(name, value, qualifiers);
    }

    void AddToClass(NKRXVEL20::TCIMValueMap context) override {
      calls_->push_back("add " + name_ + asked(context));
      target_->AddToClass(context);
    }

   private:
    boost::shared_ptr<ICIMInstance> target_;
    std::string name_;
    CallsPtr calls_;
  };

  class Class : public NKRXVEL20::ICIMClass {
   public:
    Class(boost::shared_ptr<ICIMClass> target, std::string name, CallsPtr calls)
        : target_(std::move(target)), name_(std::move(name)), calls_(std::move(calls)) {}

    const std::string& GetName(const NKRXVEL20::TCIMValueMap& /*qualifiers*/) const override {
      return name_;
    }

    void GetInstances(const Callback& callback, bool deep,
                      const NKRXVEL20::TCIMValueMap& context) override {
      calls_->push_back("enumerate " + name_ + (deep ? "" : " shallowly") + asked(context));
      target_->GetInstances(
          [&](const boost::shared_ptr<NKRXVEL20::ICIMInstance>& instance) {
            return callback(boost::make_shared<Instance>(instance, name_, calls_));
          },
          deep, context);
    }

    boost::shared_ptr<NKRXVEL20::ICIMInstance> CreateInstance() override {
      calls_->push_back("create " + name_);
      return boost::make_shared<Instance>(target_->CreateInstance(), name_, calls_);
    }

   private:
    boost::shared_ptr<ICIMClass> target_;
    std::string name_;
    CallsPtr calls_;
  };

  boost::shared_ptr<ICIMNamespace> target_;
  CallsPtr calls_;
};

}  // namespace spfirmwarevpd::test
