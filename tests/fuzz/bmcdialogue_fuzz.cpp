// SPDX-License-Identifier: Apache-2.0
//
// A BMC that answers whatever is asked with the next bytes: how many, completion code, data; without
// bytes it is silent. Reading its repository and its FRU devices ends, and asks only what the
// definitions allow: no more of a FRU device than it told to have, no piece larger than a reply.
#include <algorithm>
#include <cstdint>
#include <map>

#include "collectors/ipmiinventory/fruinventory.h"
#include "collectors/ipmiinventory/sdrrepository.h"
#include "tests/fuzz/require.h"
#include "vel/utf8.h"

using namespace ipmiinventory;

namespace {

using fuzz::require;

constexpr std::size_t kMostInAReply = 250;

class AnyBmc : public Bmc {
 public:
  explicit AnyBmc(ByteSpan bytes) : bytes_(bytes) {}

  std::optional<Reply> ask(const Request& request) override {
    check(request);
    if (bytes_.size() < 2) return std::nullopt;
    Reply reply{bytes_[1], {}};
    const std::size_t size = std::min<std::size_t>(bytes_[0], bytes_.size() - 2);
    reply.data.assign(bytes_.begin() + 2, bytes_.begin() + 2 + static_cast<std::ptrdiff_t>(size));
    bytes_ = bytes_.subspan(2 + size);
    if (request.command == Command::kGetFruInventoryAreaInfo) learn(request, reply);
    return reply;
  }

 private:
  struct Size {
    std::size_t bytes = 0;
    std::size_t word = 1;
  };

  void learn(const Request& request, const Reply& reply) {
    if (reply.completionCode != kCompleted || reply.data.size() < 3) return;
    sizes_[request.data[0]] = {reply.data[0] + std::size_t{reply.data[1]} * 256,
                               (reply.data[2] & 1U) + std::size_t{1}};
  }

  void check(const Request& request) {
    require(request.lun < 4);
    if (request.command != Command::kReadFruData) return;
    const Size size = sizes_.at(request.data[0]);
    const std::size_t at = (request.data[1] + std::size_t{request.data[2]} * 256) * size.word;
    const std::size_t count = request.data[3] * size.word;
    require(count > 0 && count <= kMostInAReply && at + count <= size.bytes);
  }

  ByteSpan bytes_;
  std::map<std::uint8_t, Size> sizes_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  AnyBmc bmc({data, size});
  const FruLocators found = readFruLocators(bmc);
  require(std::ranges::is_sorted(found.locators, std::ranges::less(), &FruLocator::fruDeviceId));
  const auto frus = readFrus(bmc, found.locators);
  require(frus.size() == found.locators.size() || frus.size() == found.locators.size() + 1);
  for (const Fru& fru : frus) {
    for (const FruProperty& property : fru.properties) require(NKRXVEL20::isUtf8(property.text));
  }
  return 0;
}
