// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "host/reasons/observations.h"

namespace velhost {

// "none: REASON", of trouble "unanswered: REASON (HINT)".
inline std::string told(const Verdict& verdict) {
  switch (verdict.kind) {
    case Verdict::Kind::kNotLooked:
      return "not looked" + verdict.reason;
    case Verdict::Kind::kLooked:
      return "looked: " + verdict.reason;
    case Verdict::Kind::kNone:
      return "none: " + verdict.reason;
    case Verdict::Kind::kTrouble:
      return std::string(stateName(verdict.state)) + ": " + verdict.reason +
             (verdict.hint.empty() ? "" : " (" + verdict.hint + ")");
  }
  return "";
}

}  // namespace velhost
