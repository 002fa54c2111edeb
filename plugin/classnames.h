// SPDX-License-Identifier: Apache-2.0
//
// The CIM classes that the plug-in fills, reads or knows.
#pragma once

namespace spfirmwarevpd {

inline constexpr char kDiagnosticClass[] = "KRXSG_DiagnosticVPD";
inline constexpr char kPostBiosClass[] = "KRXSG_PostBIOSVPD";
inline constexpr char kSystemBiosElementClass[] = "KRXSG_SystemBIOSElement";
inline constexpr char kHardwareRevisionClass[] = "KRXSG_HardwareRevisionLevel";
inline constexpr char kVpdClass[] = "KRXSG_Vpd";
inline constexpr char kMainFirmwareClass[] = "KRXSG_SPROMFirmwareVPDMain";
inline constexpr char kBootRomFirmwareClass[] = "KRXSG_SPROMFirmwareVPDBootROM";
inline constexpr char kDeviceDriverClass[] = "KRXSG_DeviceDriver";
inline constexpr char kSystemBiosClass[] = "KRXSG_SystemBIOS";
inline constexpr char kcKVMClass[] = "KRXSG_cKVM";
inline constexpr char kUsbTapeClass[] = "KRXSG_USBTapeFirmwareElement";

// Filled by other collectors.
inline constexpr char kSPComputerSystemClass[] = "KRXSG_QLA_ComputerSystem";
inline constexpr char kIpmiFruClass[] = "KRXSG_IPMIFRU";
inline constexpr char kUsbDeviceClass[] = "KRXSG_USBDevice";
inline constexpr char kTapeDriveClass[] = "KRXSG_TapeDrive";

}  // namespace spfirmwarevpd
