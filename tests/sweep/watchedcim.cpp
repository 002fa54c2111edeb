// SPDX-License-Identifier: Apache-2.0
//
// The namespace and what it hands out.
#include <boost/make_shared.hpp>
#include <utility>

#include "tests/sweep/allocations.h"
#include "tests/sweep/watch.h"

namespace sweep {

using namespace NKRXVEL20;

namespace {

// A call that the plug-in makes: written down, made to fail, or passed on to the real platform.
template <class Deed>
auto called(Event event, Deed deed) {
  Watch& watch = *Watch::current();
  watch.call(std::move(event));
  const std::size_t place = watch.trace.size() - 1;
  try {
    return deed();
  } catch (...) {
    watch.trace[place].fails = true;
    throw;
  }
}

class Property : public ICIMProperty {
 public:
  Property(boost::shared_ptr<ICIMProperty> target, std::string className)
      : target_(std::move(target)), className_(std::move(className)) {}

  const std::string& GetName() const override { return target_->GetName(); }
  const TCIMValue& GetValue() const override {
    const PlatformWork work;
    Watch::current()->call({Kind::kValueRead, className_, target_->GetName(), {}});
    return target_->GetValue();
  }
  std::string GetValueAsString() const override {
    const PlatformWork work;
    Watch::current()->call({Kind::kValueRead, className_, target_->GetName(), {}});
    return target_->GetValueAsString();
  }

 private:
  boost::shared_ptr<ICIMProperty> target_;
  std::string className_;
};

class Instance : public ICIMInstance {
 public:
  Instance(boost::shared_ptr<ICIMInstance> target, std::string className, int number)
      : target_(std::move(target)), className_(std::move(className)), number_(number) {}

  boost::shared_ptr<ICIMProperty> GetProperty(const std::string& name,
                                              const TCIMValueMap& qualifiers) override {
    const PlatformWork work;
    return called({Kind::kPropertyRead, className_, name, {}, false, number_}, [&] {
      return boost::make_shared<Property>(target_->GetProperty(name, qualifiers), className_);
    });
  }

  void SetProperty(const std::string& name, const TCIMValue& value,
                   const TCIMValueMap& qualifiers) override {
    const PlatformWork work;
    called({Kind::kPropertySet, className_, name, shown(value), false, number_}, [&] {
      target_->SetProperty(name, value, qualifiers);
      contents_ += shownSetting(name, shown(value));
    });
  }

  void AddToClass(TCIMValueMap context) override {
    const PlatformWork work;
    called({Kind::kAddToClass, className_, {}, contents_}, [&] { target_->AddToClass(context); });
  }

 private:
  boost::shared_ptr<ICIMInstance> target_;
  std::string className_;
  std::string contents_;  // what was set, in order
  int number_;
};

class Class : public ICIMClass {
 public:
  explicit Class(boost::shared_ptr<ICIMClass> target)
      : target_(std::move(target)), name_(target_->GetName({})) {}

  const std::string& GetName(const TCIMValueMap& /*qualifiers*/) const override {
    const PlatformWork work;
    Watch::current()->call({Kind::kClassName, name_, {}, {}});
    return name_;
  }

  void GetInstances(const boost::function<bool(boost::shared_ptr<ICIMInstance>)>& callback,
                    bool deep, const TCIMValueMap& context) override {
    std::vector<boost::shared_ptr<ICIMInstance>> instances;
    {
      const PlatformWork work;
      called({Kind::kEnumeration, name_, {}, {}}, [&] {
        target_->GetInstances(TAddToVectorCallback<ICIMInstance>(instances), deep, context);
      });
      for (auto& instance : instances) {
        instance = boost::make_shared<Instance>(std::move(instance), name_, -1);
      }
    }
    for (const auto& instance : instances) {
      if (!callback(instance)) return;
    }
  }

  boost::shared_ptr<ICIMInstance> CreateInstance() override {
    const PlatformWork work;
    const int number = Watch::current()->instances++;
    return called({Kind::kCreation, name_, {}, {}, false, number}, [&] {
      return boost::make_shared<Instance>(target_->CreateInstance(), name_, number);
    });
  }

 private:
  boost::shared_ptr<ICIMClass> target_;
  std::string name_;
};

class Namespace : public ICIMNamespace {
 public:
  explicit Namespace(boost::shared_ptr<ICIMNamespace> target) : target_(std::move(target)) {}

  boost::shared_ptr<ICIMClass> GetClass(const std::string& name, TCIMValueMap context) override {
    const PlatformWork work;
    return called({Kind::kClassLookup, name, {}, {}},
                  [&] { return boost::make_shared<Class>(target_->GetClass(name, context)); });
  }

 private:
  boost::shared_ptr<ICIMNamespace> target_;
};

}  // namespace

std::string shown(const TCIMValue& value) {
  return std::to_string(static_cast<int>(value.GetType())) + ' ' + value.ToString();
}

std::string shownSetting(const std::string& property, const std::string& value) {
  return property + '=' + value + '\n';
}

boost::shared_ptr<ICIMNamespace> watched(boost::shared_ptr<ICIMNamespace> target) {
  return boost::make_shared<Namespace>(std::move(target));
}

boost::shared_ptr<ICIMClass> watched(boost::shared_ptr<ICIMClass> target) {
  return boost::make_shared<Class>(std::move(target));
}

}  // namespace sweep
