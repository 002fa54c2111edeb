// SPDX-License-Identifier: Apache-2.0
//
// The IPMI collector: KRXSG_ManagementController and KRXSG_IPMIFRU from what the BMC says.
#pragma once

#include <memory>

#include "collectors/ipmiinventory/bmcsession.h"
#include "collectors/support/companion.h"

namespace ipmiinventory {

inline constexpr char kName[] = "IPMIInventory";
inline constexpr char kVersion[] = "1.0";

class IpmiInventory : public collector::Companion {
 public:
  explicit IpmiInventory(std::unique_ptr<Bmc> bmc);

  void Init() override;  // lets the next request ask the BMC anew

 private:
  explicit IpmiInventory(const std::shared_ptr<BmcSession>& session);

  std::shared_ptr<BmcSession> session_;  // shared with the functions that collect
};

}  // namespace ipmiinventory
