// SPDX-License-Identifier: Apache-2.0
#include "plugin/spfirmwarevpd.h"

namespace {

// Which dot command reads which class, and how its reply is cut. A command line is
//   d|count|byte 1|...|byte count|class|
// and the lines up to the next one are the reply's fields, back to back from its first byte:
//   type|length|property|
// with the types a (text), b (number: the first byte), r (reserved, skipped), v (an empty Version).
constexpr const char* kDescriptorLines[] = {
    "d|5|4|3|5|6|1|KRXSG_SPROMFirmwareVPDMain|",
    "a|7|BuildNumber|",
    "r|3|Reserved|",
    "a|12|FileName|",
    "b|1|Checksum|",
    "a|8|BuildDate|",
    "b|1|Version|",
    "a|8|PartNumber|",
    "d|5|4|3|5|6|2|KRXSG_SPROMFirmwareVPDBootROM|",
    "a|7|BuildNumber|",
    "r|3|Reserved|",
    "a|12|FileName|",
    "b|1|Checksum|",
    "a|8|BuildDate|",
    "b|1|Version|",
    "a|8|PartNumber|",
    "d|4|4|3|5|7|KRXSG_HardwareRevisionLevel|",
    "b|1|Hardwarelevel|",
    "d|5|4|3|5|1|1|KRXSG_DiagnosticVPD|",
    "a|2|Header|",
    "a|3|Signature",  // no closing bar, on purpose: the bytes count, their text gets no name
    "b|1|Length|",
    "r|7|Reserved|",
    "a|9|BuildNumber|",
    "a|7|SerialNumber|",
    "a|11|UniqueID|",
    "a|7|MachineTypeModel|",
    "b|1|Checksum|",
    "a|8|BuildDate|",
    "a|12|FileName|",
    "b|1|Version|",
};
static_assert(std::size(kDescriptorLines) == 31);

}  // namespace

void SPFirmwareVpd::loadSPCommands() {
  spCommandTable.insert(spCommandTable.end(), std::begin(kDescriptorLines),
                        std::end(kDescriptorLines));
}
