// SPDX-License-Identifier: Apache-2.0
#include "host/report/machineview.h"

#include <gtest/gtest.h>

#include "tests/host/formats/formatsample.h"

namespace velhost {
namespace {

Findings findingsOfSample(QueryResult result) { return {sampleContext(), std::move(result)}; }

// Classes of one collector, each present or in the state given.
QueryResult resultWith(const std::vector<ClassState>& states,
                       const std::vector<PublishedInstance>& instances) {
  QueryResult result;
  for (const ClassState& state : states) result.requested.push_back(state.className);
  result.states = states;
  result.instances = instances;
  return result;
}

ClassState present(const char* className) { return {className, "C", State::kPresent, ""}; }

PublishedInstance level(const char* className, std::uint8_t node, const char* version) {
  return {className,
          {{"SourceNode", TCIMValue(node)},
           {"Name", TCIMValue("Node " + std::to_string(node) + " : X")},
           {"Version", TCIMValue(version)}}};
}

PublishedInstance vpd(const char* name) { return {"KRXSG_Vpd", {{"Name", TCIMValue(name)}}}; }

PublishedInstance device(const char* id) {
  return {"KRXSG_USBDevice", {{"DeviceID", TCIMValue(id)}}};
}

std::string itemText(const Item& item) {
  std::string text = item.title;
  for (const std::string* const more : {&item.name, &item.version, &item.build, &item.date}) {
    if (!more->empty()) text += ' ' + *more;
  }
  if (item.filling != Filling::kFilled) text += " (" + std::string(fillingName(item.filling)) + ')';
  return item.reason.empty() ? text : text + ": " + item.reason;
}

// A line a box's place.
std::string viewText(const MachineView& view) {
  std::string text;
  for (const Box& box : view.boxes) {
    for (const auto& [place, items] : box.items) {
      text += (box.node ? std::to_string(*box.node) : "-") + ' ' + std::string(placeName(place));
      const char* separator = " = ";
      for (const Item& item : items) {
        text += separator + itemText(item);
        separator = " | ";
      }
      text += '\n';
    }
  }
  return text;
}

std::string viewOf(const QueryResult& result, bool tellsStates = true) {
  Findings findings = findingsOfSample(result);
  findings.tellsStates = tellsStates;
  return viewText(machineView(findings, "a.json"));
}

constexpr char kBoot[] = "KRXSG_SPROMFirmwareVPDBootROM";

TEST(MachineView, PartsStandInTheirNodesAndPlaces) {
  const struct {
    const char* what;
    QueryResult result;
    const char* view;
  } cases[] = {
      {"nothing", resultWith({}, {}), ""},
      {"one node is the machine",
       resultWith({present(kBios), present("KRXSG_Vpd")},
                  {level(kBios, 1, "104"), vpd("Planar"), vpd("DIMM 1")}),
       "- Firmware = System BIOS or UEFI firmware, by node X 104\n"
       "- Memory = DIMM 1\n"
       "- Boards and cards = Planar\n"},
      {"nodes by their number, what is of none behind them",
       resultWith({present(kBios), present("KRXSG_Vpd"), present("KRXSG_USBDevice")},
                  {level(kBios, 10, "1"), level(kBios, 2, "2"), vpd("Node 2: Planar"), unasked()}),
       "2 Firmware = System BIOS or UEFI firmware, by node X 2\n"
       "2 Boards and cards = Planar\n"
       "10 Firmware = System BIOS or UEFI firmware, by node X 1\n"
       "- Devices = 1-1\n"},
      {"parts of a kind by their numbers",
       resultWith({present("KRXSG_Vpd"), present("KRXSG_USBDevice")},
                  {vpd("Power Supply 2"), vpd("Power Supply 1"), device("Port 10"), device("Hub"),
                   device("Port 9")}),
       "- Power = Power Supply 1 | Power Supply 2\n"
       "- Devices = Port 9 | Port 10 | Hub\n"},
      {"a slot between others is not told of",
       resultWith({present("KRXSG_Vpd")}, {vpd("DIMM 1"), vpd("DIMM 3")}),
       "- Memory = DIMM 1 | DIMM 2 (not told) | DIMM 3\n"},
      {"a slot without a module says so",
       resultWith({present("KRXSG_PhysicalMemory")},
                  {{"KRXSG_PhysicalMemory",
                    {{"DeviceLocator", TCIMValue("A1")}, {"Populated", TCIMValue(false)}}},
                   {"KRXSG_PhysicalMemory",
                    {{"DeviceLocator", TCIMValue("A2")}, {"Populated", TCIMValue(true)}}}}),
       "- Memory = A1 (empty) | A2\n"},
      {"a class of somebody else's",
       resultWith({present("MINE_Fan")}, {{"MINE_Fan", {{"Speed", TCIMValue("9")}}}}),
       "- Other parts = MINE_Fan\n"},
      {"level, build and date",
       resultWith({present("KRXSG_DiagnosticVPD")},
                  {{"KRXSG_DiagnosticVPD",
                    {{"Version", TCIMValue("210")},
                     {"BuildNumber", TCIMValue("DSYT83A")},
                     {"BuildDate", TCIMValue(TCIMDateTime("20090630000000.000000+000"))}}}}),
       "- Firmware = Diagnostics firmware 210 DSYT83A 2009-06-30\n"},
  };
  for (const auto& c : cases) EXPECT_EQ(c.view, viewOf(c.result)) << c.what;
}

TEST(MachineView, WhatIsMissingStandsInItsPlaceWithTheReason) {
  const auto missing = [](const char* className, State state) {
    return resultWith({{className, "C", state, "the reason"}}, {});
  };
  const struct {
    const char* what;
    QueryResult result;
    const char* view;
  } cases[] = {
      {"absent", missing("KRXSG_cKVM", State::kAbsent),
       "- Firmware = Firmware of the cKVM device (absent): the reason\n"},
      {"elsewhere", missing("KRXSG_Vpd", State::kElsewhere),
       "- Other parts = Vital product data of a component (elsewhere): the reason\n"},
      {"unanswered", missing(kBoot, State::kUnanswered),
       "- Service processor = Boot-ROM firmware of a service processor (unanswered): the reason\n"},
      {"unreadable", missing("KRXSG_PhysicalMemory", State::kUnreadable),
       "- Memory = Slot for a memory module, with the module that is in it (unreadable): the "
       "reason\n"},
      {"forbidden", missing("KRXSG_ComputerSystem", State::kForbidden),
       "- Other parts = The machine, with its chassis and its main board (forbidden): the "
       "reason\n"},
      {"failed", missing("KRXSG_USBDevice", State::kFailed),
       "- Devices = USB device (failed): the reason\n"},
      {"never filled, so nobody misses it", missing("KRXSG_DeviceDriver", State::kUnused), ""},
      {"on one node of two",
       resultWith({present(kBios), {kBoot, "C", State::kPartial, "SP 2 refused"}},
                  {level(kBios, 1, "1"), level(kBios, 2, "1"), level(kBoot, 1, "3")}),
       "1 Service processor = Boot-ROM firmware of a service processor X 3 (partial): SP 2 "
       "refused\n"
       "1 Firmware = System BIOS or UEFI firmware, by node X 1\n"
       "2 Service processor = Boot-ROM firmware of a service processor (not told): SP 2 refused\n"
       "2 Firmware = System BIOS or UEFI firmware, by node X 1\n"},
  };
  for (const auto& c : cases) EXPECT_EQ(c.view, viewOf(c.result)) << c.what;
}

TEST(MachineView, AFileWithoutStatesDoesNotTellWhatIsAbsent) {
  const auto result = resultWith({{"KRXSG_cKVM", "", State::kAbsent, "the file does not tell"},
                                  {kBoot, "", State::kFailed, "refused"}},
                                 {});
  EXPECT_EQ(
      "- Service processor = Boot-ROM firmware of a service processor (failed): refused\n"
      "- Firmware = Firmware of the cKVM device (not told): the file does not tell\n",
      viewOf(result, false));
}

TEST(MachineView, NodesThatWereAskedAndToldNothingAreNodes) {
  QueryResult result = resultWith({present("KRXSG_Vpd")}, {vpd("Node 1: DIMM 1")});
  for (const int sp : {0, 1}) {
    NKRXVEL20::host::TrafficEntry entry;
    entry.sp = sp;
    entry.command = {4, 3, 5, 0x0B, static_cast<unsigned char>(sp + 1)};
    entry.answered = sp == 0;
    entry.length = sp == 0 ? 10 : 0;
    result.traffic.push_back(entry);
  }
  EXPECT_EQ(
      "1 Memory = DIMM 1\n"
      "2 Memory = DIMM 2 (not told): command 04 03 05 0B 02 was not answered; an empty slot looks "
      "so\n",
      viewOf(result));
}

TEST(MachineView, TheMachineSaysWhatItIs) {
  const auto system = [](const PropertyList& properties) {
    return resultWith({present("KRXSG_ComputerSystem")}, {{"KRXSG_ComputerSystem", properties}});
  };
  const struct {
    const char* what;
    QueryResult result;
    const char* product;
  } cases[] = {
      {"nothing", resultWith({}, {}), ""},
      {"all of it",
       system({{"Manufacturer", TCIMValue("KRX")},
               {"ProductName", TCIMValue("R220")},
               {"SerialNumber", TCIMValue("S1")}}),
       "KRX R220, serial number S1"},
      {"no maker", system({{"ProductName", TCIMValue("R220")}}), "R220"},
      {"blanks", system({{"Manufacturer", TCIMValue("  ")}}), ""},
      {"type and model of an element",
       resultWith({present(kBios)}, {{kBios, {{"MachineTypeModel", TCIMValue("6120AC1")}}}}),
       "type 6120AC1"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.product, machineView(findingsOfSample(c.result), "").product) << c.what;
  }
}

TEST(MachineView, PropertiesAreShownAsPeopleReadThem) {
  const MachineView view = machineView(
      findingsOfSample(resultWith({present(kBios)},
                                  {{kBios,
                                    {{"PrimaryBIOS", TCIMValue(true)},
                                     {"FileName", TCIMValue("   ")},
                                     {"SoftwareElementState", TCIMValue(std::uint16_t{3})}}}})),
      "");
  const auto& properties = view.boxes.at(0).items.at(Place::kFirmware).at(0).properties;
  ASSERT_EQ(2U, properties.size());
  EXPECT_EQ("PrimaryBIOS", properties[0].name);
  EXPECT_EQ("yes", properties[0].value);
  EXPECT_EQ("Running", properties[1].value);
}

TEST(MachineView, AbsenceIsNotToldByAFileWithoutStates) {
  const struct {
    State state;
    const char* told;
    const char* untold;
  } cases[] = {
      {State::kPresent, "present", "present"},
      {State::kPartial, "partial", "partial"},
      {State::kAbsent, "absent", "not told"},
      {State::kElsewhere, "elsewhere", "elsewhere"},
      {State::kUnused, "unused", "unused"},
      {State::kUnanswered, "unanswered", "unanswered"},
      {State::kUnreadable, "unreadable", "unreadable"},
      {State::kForbidden, "forbidden", "forbidden"},
      {State::kFailed, "failed", "failed"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.told, fillingName(shownFilling(c.state, true)));
    EXPECT_EQ(c.untold, fillingName(shownFilling(c.state, false)));
  }
}

}  // namespace
}  // namespace velhost
