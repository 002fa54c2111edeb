// SPDX-License-Identifier: Apache-2.0
//
// The CIM objects that the framework and its plug-ins share. All are handled through
// boost::shared_ptr; a null handle dereferenced ends in the assertion handler, which raises
// TVELException with kErrorAssertion.
#pragma once

#include <boost/function.hpp>
#include <boost/shared_ptr.hpp>
#include <string>
#include <vector>

#include "vel/cimvalue.h"
#include "vel/export.h"

namespace NKRXVEL20 {

class VEL_API ICIMProperty {
 public:
  virtual ~ICIMProperty();
  virtual const std::string& GetName() const = 0;
  virtual const TCIMValue& GetValue() const = 0;
  virtual std::string GetValueAsString() const = 0;
};

class VEL_API ICIMInstance {
 public:
  virtual ~ICIMInstance();

  // Raises kErrorPropertyNotFound for a name that the class does not have. A property that was
  // never set has an empty value.
  virtual boost::shared_ptr<ICIMProperty> GetProperty(const std::string& name,
                                                      const TCIMValueMap& qualifiers) = 0;

  // Raises kErrorPropertyNotFound, or kErrorTypeMismatch for a value of another type than the
  // schema's.
  virtual void SetProperty(const std::string& name, const TCIMValue& value,
                           const TCIMValueMap& qualifiers) = 0;

  // Adds the instance to its class in the namespace: publishes it.
  virtual void AddToClass(TCIMValueMap context) = 0;
};

class VEL_API ICIMClass {
 public:
  virtual ~ICIMClass();
  virtual const std::string& GetName(const TCIMValueMap& qualifiers) const = 0;

  // Hands every instance to the callback until it returns false. `deep` takes the instances of
  // derived classes in as well.
  virtual void GetInstances(const boost::function<bool(boost::shared_ptr<ICIMInstance>)>& callback,
                            bool deep, const TCIMValueMap& context) = 0;

  // A new instance that holds every property of the class, empty, and is not published. Raises
  // kErrorNotSupported for an abstract class.
  virtual boost::shared_ptr<ICIMInstance> CreateInstance() = 0;
};

class VEL_API ICIMNamespace {
 public:
  virtual ~ICIMNamespace();

  // Raises kErrorClassNotFound.
  virtual boost::shared_ptr<ICIMClass> GetClass(const std::string& name, TCIMValueMap context) = 0;
};

struct VEL_API TCIMSchemaHelper {
  static const char* const kContextName;    // key of the entry that says who asks
  static const char* const kPluginNSPName;  // its value for a plug-in
};

// An enumeration callback that appends each object to a vector, which must outlive it.
template <typename T>
class TAddToVectorCallback {
 public:
  explicit TAddToVectorCallback(std::vector<boost::shared_ptr<T>>& objects) : objects_(&objects) {}

  bool operator()(boost::shared_ptr<T> object) const {
    objects_->push_back(std::move(object));
    return true;
  }

 private:
  std::vector<boost::shared_ptr<T>>* objects_;
};

}  // namespace NKRXVEL20
