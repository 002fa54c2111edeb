// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <csignal>

namespace velhost {

// No signal comes to this thread while it lives, nor to one that is started meanwhile; what arrives is
// answered afterwards. It is the only thread that signals go to.
class SignalsHeld {
 public:
  SignalsHeld() {
    sigset_t all{};
    sigfillset(&all);
    ::pthread_sigmask(SIG_BLOCK, &all, &before_);
  }
  ~SignalsHeld() { ::pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  SignalsHeld(const SignalsHeld&) = delete;
  SignalsHeld& operator=(const SignalsHeld&) = delete;

 private:
  sigset_t before_{};
};

}  // namespace velhost
