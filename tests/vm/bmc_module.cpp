// SPDX-License-Identifier: Apache-2.0
//
// A module for OpenIPMI's ipmi_sim: answers Master Write-Read (IPMI 2.0, 22.11) with the bytes that
// its options name, completion code first, and prints each request's data on standard error. Without
// bytes the whole BMC stands still from that request on.

extern "C" {
#include <OpenIPMI/ipmi_msgbits.h>
#include <OpenIPMI/mcserv.h>
}

#include <algorithm>
#include <csignal>
#include <iomanip>
#include <iostream>
#include <sstream>
#include <vector>

namespace {

constexpr unsigned kMaxReply = 64;

std::vector<unsigned char> reply;

void answerMasterWriteRead(lmc_data_t* /*mc*/, msg_t* request, unsigned char* data, unsigned* size,
                           void* /*context*/) {
  std::ostringstream line;
  line << "master write-read:" << std::hex << std::uppercase << std::setfill('0');
  for (unsigned i = 0; i < request->len; ++i) line << ' ' << std::setw(2) << +request->data[i];
  std::cerr << line.str() << std::endl;
  if (reply.empty()) static_cast<void>(std::raise(SIGSTOP));
  *size = static_cast<unsigned>(std::copy(reply.begin(), reply.end(), data) - data);
}

}  // namespace

// The two operations that ipmi_sim calls by name.
extern "C" int ipmi_sim_module_print_version(sys_data_t* /*system*/, const char* /*options*/) {
  return 0;
}

extern "C" int ipmi_sim_module_init(sys_data_t* /*system*/, const char* options) {
  std::istringstream pairs(options);
  for (unsigned byte = 0; reply.size() < kMaxReply && pairs >> std::hex >> byte;) {
    reply.push_back(static_cast<unsigned char>(byte));
  }
  return ipmi_emu_register_cmd_handler(IPMI_APP_NETFN, IPMI_MASTER_READ_WRITE_CMD,
                                       answerMasterWriteRead, nullptr);
}
