// SPDX-License-Identifier: Apache-2.0
//
// Namespaces that hand out null handles where they should hand out objects.
#pragma once

#include <boost/make_shared.hpp>
#include <string>

#include "vel/cim.h"

namespace collector::test {

class NullClassNamespace : public NKRXVEL20::ICIMNamespace {
 public:
  boost::shared_ptr<NKRXVEL20::ICIMClass> GetClass(const std::string& /*name*/,
                                                   NKRXVEL20::TCIMValueMap /*context*/) override {
    return {};
  }
};

// Its classes create null instances.
class NullInstanceNamespace : public NKRXVEL20::ICIMNamespace {
 public:
  boost::shared_ptr<NKRXVEL20::ICIMClass> GetClass(const std::string& /*name*/,
                                                   NKRXVEL20::TCIMValueMap /*context*/) override {
    return boost::make_shared<Class>();
  }

 private:
  class Class : public NKRXVEL20::ICIMClass {
   public:
    const std::string& GetName(const NKRXVEL20::TCIMValueMap& /*qualifiers*/) const override {
      static const std::string none;
      return none;
    }
    void GetInstances(
        const boost::function<bool(boost::shared_ptr<NKRXVEL20::ICIMInstance>)>& /*callback*/,
        bool /*deep*/, const NKRXVEL20::TCIMValueMap& /*context*/) override {}
    boost::shared_ptr<NKRXVEL20::ICIMInstance> CreateInstance() override { return {}; }
  };
};

}  // namespace collector::test
