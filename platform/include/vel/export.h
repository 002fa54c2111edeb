// SPDX-License-Identifier: Apache-2.0
//
// Symbols that the platform libraries offer to plug-ins and hosts.
#pragma once

#define VEL_API __attribute__((visibility("default")))
