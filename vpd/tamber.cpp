// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <array>

#include "collectors/support/ciminstance.h"
#include "collectors/support/corelog.h"
#include "plugin/classnames.h"
#include "plugin/softwareelement.h"
#include "plugin/spfirmwarevpd.h"
#include "plugin/textfields.h"

using namespace NKRXVEL20;
using namespace collector;
using namespace spfirmwarevpd;

namespace {

constexpr char kTamberName[] = "KRX Ambrel Management Processor";

constexpr std::size_t kTamberReplySize = 255;
constexpr std::size_t kBuildOffset = 3;  // behind the reply's header
constexpr int kBuildLimit = kTamberReplySize - kBuildOffset;

using TamberReply = std::array<unsigned char, kTamberReplySize>;

std::string buildText(const TamberReply& reply, int replyLength) {
  const int length = std::clamp(replyLength, 0, kBuildLimit);
  return cutText(reply, kBuildOffset, static_cast<std::size_t>(length));
}

}  // namespace

TVELStatusCode SPFirmwareVpd::gettamberFirmware(SPLibrary* spLibrary, NamespaceHandle ns) {
  TamberReply reply{};
  int replyLength = 0;
  TamberCmd command(0x01, 0xF1, 0xF1, 0x0F, nullptr, 0, false, true);
  if (!spLibrary->sendTamberCommand(&command, &replyLength, reply.data())) {
    logFailure("Command Failed..while getting SP Firmware data");
    return {kStatusFailure};
  }
  const auto instance = createInstance(ns, kMainFirmwareClass, "Error adding SP Firmware VPD data");
  if (!instance) return {kStatusFailure};
  const TCIMValue build(buildText(reply, replyLength));
  const PropertyRow rows[] = {
      {"Name", TCIMValue(kTamberName), "Error adding Name"},
      {"SoftwareElementID", TCIMValue(kTamberName), "Error adding SoftwareElementID"},
      {"SoftwareElementState", TCIMValue(kStateRunning), "Error adding SoftwareElementState"},
      {"TargetOperatingSystem", TCIMValue(kSystemNotApplicable),
       "Error adding TargetOperatingSystem"},
      {"BuildNumber", build, "Error adding BuildNumber"},
      {"Version", build, "Error adding Version"},  // the family has one text for both
  };
  if (!setProperties(*instance, rows)) return {kStatusFailure};
  spromMainInstances.push_back(*instance);
  return {kStatusSuccess};
}

TVELStatusCode SPFirmwareVpd::gettamberVPD(SPLibrary* spLibrary, NamespaceHandle /*ns*/) {
  std::array<unsigned char, 3> data = {0x05, 0x00, 0x20};
  TamberReply reply{};
  int replyLength = 0;
  TamberCmd command(0x05, 0xA8, 0xA8, 0x56, data.data(), static_cast<int>(data.size()), true,
                    false);
  if (spLibrary->sendTamberCommand(&command, &replyLength, reply.data())) {
    // No length of the driver's makes the dump run past the reply.
    spLibrary->printMatrix(reply.data(), std::min(replyLength, static_cast<int>(reply.size())));
  }
  return {kStatusSuccess};
}
