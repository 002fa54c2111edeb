// SPDX-License-Identifier: Apache-2.0
#include "host/formats/inventory.h"

#include <gtest/gtest.h>

#include "tests/host/formats/formatsample.h"

namespace velhost {
namespace {

TEST(Inventory, HasTheMachineTheCollectorsAndEachClassWithItsState) {
  QueryResult result = sampleResult();
  result.instances.push_back(unasked());
  EXPECT_EQ(R"({
  "format": "vel-inventory/1",
  "machine": {
    "source": "file",
    "name": "a server"
  },
  "collectors": [
    {
      "name": "SPFirmwareVPD",
      "version": "1.0",
      "state": "answered",
      "reason": null
    },
    {
      "name": "IPMIInventory",
      "version": "",
      "state": "failed",
      "reason": "cannot be loaded"
    }
  ],
  "classes": [
    {
      "class": "KRXSG_SystemBIOSElement",
      "collector": "SPFirmwareVPD",
      "state": "present",
      "reason": null,
      "instances": [
        {
          "SourceNode": 1,
          "Name": "Node 1 : UEFI",
          "Version": "104",
          "BuildNumber": "KRE104C",
          "PrimaryBIOS": true
        },
        {
          "SourceNode": 2,
          "Name": "Node 2 : UEFI",
          "Version": "104",
          "BuildNumber": "KRE104C",
          "PrimaryBIOS": true
        }
      ]
    },
    {
      "class": "KRXSG_Vpd",
      "collector": "SPFirmwareVPD",
      "state": "partial",
      "reason": "slot 2 is empty, as its \"type\" says",
      "instances": [
        {
          "Name": "Node 2: DIMM 1",
          "PartNumber": "R4G72"
        }
      ]
    },
    {
      "class": "KRXSG_cKVM",
      "collector": "SPFirmwareVPD",
      "state": "absent",
      "reason": "no cKVM device, by the machine type",
      "instances": []
    },
    {
      "class": "KRXSG_DeviceDriver",
      "collector": null,
      "state": "unused",
      "reason": null,
      "instances": []
    }
  ]
}
)",
            inventoryText(sampleContext(), result));
}

TEST(Inventory, TextsOfAnyBytesAreUtf8ThatATerminalShows) {
  QueryResult result = resultOf(
      "KRXSG_Vpd", {{{"Name", TCIMValue("\xFF<b>\"\n\x1B[31m\xE2\x80\xA8\xC2\x9B\xC3\xBC")}}});
  result.states[0].reason = "not \xFF\xFE\n told";
  result.collectors = {{"own\xFF", "\x80", false, "\xE2\x80\xAE"}};
  const QueryContext context{"live", "host\xFF\t\"", {}};
  EXPECT_EQ(R"({
  "format": "vel-inventory/1",
  "machine": {
    "source": "live",
    "name": "host)"
            "\xEF\xBF\xBD\\t\\\""
            R"("
  },
  "collectors": [
    {
      "name": "own)"
            "\xEF\xBF\xBD"
            R"(",
      "version": ")"
            "\xEF\xBF\xBD"
            R"(",
      "state": "failed",
      "reason": "\u202E"
    }
  ],
  "classes": [
    {
      "class": "KRXSG_Vpd",
      "collector": "SPFirmwareVPD",
      "state": "present",
      "reason": "not )"
            "\xEF\xBF\xBD\xEF\xBF\xBD\\n told"
            R"(",
      "instances": [
        {
          "Name": ")"
            "\xEF\xBF\xBD<b>\\\"\\n\\u001b[31m\\u2028\\u009B\xC3\xBC"
            R"("
        }
      ]
    }
  ]
}
)",
            inventoryText(context, result));
}

TEST(Inventory, NothingRequestedHasEmptyLists) {
  EXPECT_EQ(R"({
  "format": "vel-inventory/1",
  "machine": {
    "source": "file",
    "name": "a server"
  },
  "collectors": [],
  "classes": []
}
)",
            inventoryText(sampleContext(), {}));
}

}  // namespace
}  // namespace velhost
