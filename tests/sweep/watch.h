// SPDX-License-Identifier: Apache-2.0
//
// A platform that stands before the real one, writes down what the plug-in calls, and has calls
// fail. This program defines the entries of the SP driver and SMBIOS libraries that are no virtual
// operations; they take the place of the real ones and pass on to them.
#pragma once

#include <boost/shared_ptr.hpp>
#include <memory>
#include <string>

#include "tests/sweep/fault.h"
#include "tests/sweep/trace.h"
#include "vel/cim.h"
#include "vel/splibrary.h"

namespace sweep {

// One request; there is one at a time.
class Watch {
 public:
  explicit Watch(Fault watchedFault = {});
  ~Watch();
  Watch(const Watch&) = delete;
  Watch& operator=(const Watch&) = delete;

  // The one that lives now; null: nobody asks the plug-in.
  static Watch* current();

  // Counts the call: it is to fail.
  bool isDue(Kind kind);

  // Writes the call down; throws when it is to fail by an exception.
  void call(Event event);

  Fault fault;
  Trace trace;
  int instances = 0;
  std::unique_ptr<NKRXVEL20::SPLibrary> driver;  // that the plug-in gets

 private:
  std::array<unsigned, kKinds> calls_{};
};

// What is set in an instance, as events show it.
std::string shown(const NKRXVEL20::TCIMValue& value);
std::string shownSetting(const std::string& property, const std::string& value);

boost::shared_ptr<NKRXVEL20::ICIMNamespace> watched(
    boost::shared_ptr<NKRXVEL20::ICIMNamespace> target);
boost::shared_ptr<NKRXVEL20::ICIMClass> watched(boost::shared_ptr<NKRXVEL20::ICIMClass> target);
std::unique_ptr<NKRXVEL20::SPLibrary> watched(std::unique_ptr<NKRXVEL20::SPLibrary> target);

}  // namespace sweep
