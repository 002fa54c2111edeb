// SPDX-License-Identifier: Apache-2.0
//
// What a test asks the firmware collector for that asks for everything: the classes of its class-name
// table, in that order, and the one that it serves beside them.
#pragma once

#include <array>

inline constexpr std::array<const char*, 11> kFirmwareClasses{
    "KRXSG_DiagnosticVPD",
    "KRXSG_PostBIOSVPD",
    "KRXSG_SystemBIOSElement",
    "KRXSG_HardwareRevisionLevel",
    "KRXSG_Vpd",
    "KRXSG_SPROMFirmwareVPDMain",
    "KRXSG_SPROMFirmwareVPDBootROM",
    "KRXSG_DeviceDriver",
    "KRXSG_SystemBIOS",
    "KRXSG_cKVM",
    "KRXSG_USBTapeFirmwareElement",
};
