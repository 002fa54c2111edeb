// SPDX-License-Identifier: Apache-2.0
//
// The request records, and the process-wide library object.
#include "vel/splibrary.h"

#include <memory>
#include <utility>

#include "trafficrecorder.h"
#include "velhost/spdriver.h"

namespace NKRXVEL20 {

namespace {

std::vector<unsigned char> copied(const unsigned char* bytes, int length) {
  if (length < 1) return {};
  return {bytes, bytes + length};
}

std::unique_ptr<host::TrafficRecorder>& current() {
  static std::unique_ptr<host::TrafficRecorder> recorder;
  return recorder;
}

}  // namespace

dotCmd::dotCmd(unsigned char commandType, int commandLength, int dataLength,
               const unsigned char* commandBytes, const unsigned char* dataBytes)
    : type(commandType),
      command(copied(commandBytes, commandLength)),
      data(copied(dataBytes, dataLength)) {}

dotCmd::~dotCmd() = default;

TamberCmd::TamberCmd(unsigned char byte0, unsigned char byte1, unsigned char byte2,
                     unsigned char byte3, unsigned char* dataBytes, int dataLength, bool flag0Value,
                     bool flag1Value)
    : command{byte0, byte1, byte2, byte3},
      data(copied(dataBytes, dataLength)),
      flag0(flag0Value),
      flag1(flag1Value) {}

SPLibrary::~SPLibrary() = default;

SPLibrary* SPLibrary::GetSplibraryInstance(int /*reserved*/) { return current().get(); }

namespace host {

void setSPLibrary(std::unique_ptr<SPLibrary> library, Traffic traffic) {
  current() = library ? std::make_unique<TrafficRecorder>(std::move(library), traffic) : nullptr;
}

std::vector<TrafficEntry> takeTraffic() {
  return current() ? current()->takeTraffic() : std::vector<TrafficEntry>{};
}

std::map<Bytes, std::int32_t> componentsAsked() {
  return current() ? current()->componentsAsked() : std::map<Bytes, std::int32_t>{};
}

DriverUse driverUse() { return current() ? current()->use() : DriverUse{}; }

void forgetDriverUse() {
  if (current()) current()->forgetUse();
}

}  // namespace host

}  // namespace NKRXVEL20
