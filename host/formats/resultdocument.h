// SPDX-License-Identifier: Apache-2.0
//
// The result document ("vel-result/1"): all that happened in a query, for programs.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "host/collectors/queryresult.h"

namespace velhost {

// Whether each command of the traffic has the bytes of its reply.
enum class Replies { kLeftOut, kShown };

class ResultDocument {
 public:
  explicit ResultDocument(const QueryContext& context, Replies replies = Replies::kLeftOut);

  void add(const QueryResult& result);
  std::string text() const;

 private:
  nlohmann::ordered_json document_;
  Replies replies_;
};

}  // namespace velhost
