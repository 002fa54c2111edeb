// SPDX-License-Identifier: Apache-2.0
//
// A BMC that expects certain questions in a certain order and gives the answers that stand beside
// them.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "collectors/ipmiinventory/bmc.h"
#include "ipmibytes.h"

namespace ipmiinventory {

// "0A 11 05 00 00 08": network function, command, data; a LUN stands before that, as in "1: 0A 11".
inline std::string requestText(const Request& request) {
  const auto code = static_cast<std::uint16_t>(request.command);
  const Bytes head{static_cast<std::uint8_t>(code >> 8U), static_cast<std::uint8_t>(code & 0xFFU)};
  const std::string text = hexText(head + request.data);
  return request.lun == 0 ? text : std::to_string(request.lun) + ": " + text;
}

struct Exchange {
  std::string request;
  std::string reply;  // completion code, data; empty: no answer
};

class ScriptedBmc : public Bmc {
 public:
  explicit ScriptedBmc(std::vector<Exchange> exchanges) : exchanges_(std::move(exchanges)) {}
  ScriptedBmc(const ScriptedBmc&) = delete;
  ScriptedBmc& operator=(const ScriptedBmc&) = delete;
  ~ScriptedBmc() override { EXPECT_EQ(next_, exchanges_.size()) << "not all was asked"; }

  std::optional<Reply> ask(const Request& request) override {
    const std::string text = requestText(request);
    if (next_ == exchanges_.size() || exchanges_[next_].request != text) {
      ADD_FAILURE() << "asked " << text << " as number " << next_;
      return std::nullopt;
    }
    const Bytes reply = hex(exchanges_[next_++].reply);
    if (reply.empty()) return std::nullopt;
    return Reply{reply.front(), {reply.begin() + 1, reply.end()}};
  }

 private:
  std::vector<Exchange> exchanges_;
  std::size_t next_ = 0;
};

}  // namespace ipmiinventory
