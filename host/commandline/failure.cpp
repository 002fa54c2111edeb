// SPDX-License-Identifier: Apache-2.0
#include "host/commandline/failure.h"

#include "host/collectors/requesterror.h"
#include "host/commandline/complaint.h"
#include "host/text/inputerror.h"
#include "velhost/pluginloader.h"

namespace velhost {
namespace {

ExitStatus tellCurrentException() {
  try {
    throw;
  } catch (const InputError& error) {
    complain(error.what());
    return kBadInput;
  } catch (const NKRXVEL20::host::PluginLoadError& error) {
    complain(error.what());
    return kBadInput;
  } catch (const std::exception& error) {
    complain(error.what());
    return kRefused;
  } catch (...) {
    complain("unexpected exception: " + errorText(describeCurrentException()));
    return kRefused;
  }
}

}  // namespace

ExitStatus tellFailure() noexcept {
  try {
    return tellCurrentException();
  } catch (...) {  // no memory for the line, say
    return kRefused;
  }
}

}  // namespace velhost
