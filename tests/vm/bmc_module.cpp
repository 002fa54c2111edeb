// SPDX-License-Identifier: Apache-2.0
//
// A module for OpenIPMI's ipmi_sim. Its options are hexadecimal bytes, and behind a bar a number and
// a file's name.
//
// - Master Write-Read (IPMI 2.0, 22.11) is answered with the bytes, completion code first, and each
//   request's data printed on standard error. Without bytes the whole BMC stands still from that request on.
// - Where there is a file, it is FRU device 0 (IPMI 2.0, 34), of which no more bytes than the number are
//   given in one reply; a request for more is refused, and printed too.

extern "C" {
#include <OpenIPMI/ipmi_msgbits.h>
#include <OpenIPMI/mcserv.h>
}

#include <algorithm>
#include <csignal>
#include <cstddef>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

namespace {

constexpr unsigned kMaxReply = 64;
constexpr unsigned char kTooMuchAsked = 0xCA;  // IPMI 2.0, table 5-2

std::vector<unsigned char> reply;
std::vector<unsigned char> fruDevice;
unsigned mostOfARead = 0;

void print(const char* what, const msg_t& request) {
  std::ostringstream line;
  line << what << ':' << std::hex << std::uppercase << std::setfill('0');
  for (unsigned i = 0; i < request.len; ++i) line << ' ' << std::setw(2) << +request.data[i];
  std::cerr << line.str() << std::endl;
}

void answerMasterWriteRead(lmc_data_t* /*mc*/, msg_t* request, unsigned char* data, unsigned* size,
                           void* /*context*/) {
  print("master write-read", *request);
  if (reply.empty()) static_cast<void>(std::raise(SIGSTOP));
  *size = static_cast<unsigned>(std::copy(reply.begin(), reply.end(), data) - data);
}

// Completion code, size with its lowest byte first, byte access.
void answerFruInfo(lmc_data_t* /*mc*/, msg_t* /*request*/, unsigned char* data, unsigned* size,
                   void* /*context*/) {
  const unsigned char info[] = {0, static_cast<unsigned char>(fruDevice.size()),
                                static_cast<unsigned char>(fruDevice.size() >> 8U), 0};
  *size = static_cast<unsigned>(std::copy(std::begin(info), std::end(info), data) - data);
}

// The request: device, offset with its lowest byte first, count.
void answerFruRead(lmc_data_t* /*mc*/, msg_t* request, unsigned char* data, unsigned* size,
                   void* /*context*/) {
  const std::size_t offset =
      request->len < 4 ? fruDevice.size() : request->data[1] + request->data[2] * std::size_t{256};
  const std::size_t count = request->len < 4 ? 0 : request->data[3];
  data[0] = kTooMuchAsked;
  *size = 1;
  if (count > mostOfARead || offset + count > fruDevice.size()) {
    return print("refused read", *request);
  }
  data[0] = 0;
  data[1] = static_cast<unsigned char>(count);
  std::copy_n(fruDevice.begin() + static_cast<std::ptrdiff_t>(offset), count, data + 2);
  *size = static_cast<unsigned>(count + 2);
}

void readReply(const std::string& text) {
  std::istringstream pairs(text);
  for (unsigned byte = 0; reply.size() < kMaxReply && pairs >> std::hex >> byte;) {
    reply.push_back(static_cast<unsigned char>(byte));
  }
}

void readFruDevice(const std::string& text) {
  std::istringstream words(text);
  std::string name;
  words >> mostOfARead >> name;
  std::ifstream file(name, std::ios::binary);
  fruDevice.assign(std::istreambuf_iterator<char>(file), {});
}

int answer(unsigned char networkFunction, unsigned char command, cmd_handler_f handler) {
  return ipmi_emu_register_cmd_handler(networkFunction, command, handler, nullptr);
}

}  // namespace

// The two operations that ipmi_sim calls by name.
extern "C" int ipmi_sim_module_print_version(sys_data_t* /*system*/, const char* /*options*/) {
  return 0;
}

extern "C" int ipmi_sim_module_init(sys_data_t* /*system*/, const char* options) {
  const std::string text(options);
  const std::size_t bar = text.find('|');
  readReply(text.substr(0, bar));
  int failed = answer(IPMI_APP_NETFN, IPMI_MASTER_READ_WRITE_CMD, answerMasterWriteRead);
  if (failed != 0 || bar == std::string::npos) return failed;
  readFruDevice(text.substr(bar + 1));
  failed = answer(IPMI_STORAGE_NETFN, IPMI_GET_FRU_INVENTORY_AREA_INFO_CMD, answerFruInfo);
  return failed != 0 ? failed : answer(IPMI_STORAGE_NETFN, IPMI_READ_FRU_DATA_CMD, answerFruRead);
}
