// SPDX-License-Identifier: Apache-2.0
#include "host/report/machinesection.h"

#include <gtest/gtest.h>

namespace velhost {
namespace {

Item element(const char* title, const char* version) {
  Item item;
  item.title = title;
  item.version = version;
  return item;
}

Item missing(const char* title, Filling filling, const char* reason) {
  Item item = element(title, "");
  item.filling = filling;
  item.reason = reason;
  return item;
}

MachineView viewWith(Place place, const std::vector<Item>& items) {
  MachineView view;
  view.name = "a server";
  view.file = "a.json";
  view.boxes.resize(1);
  view.boxes[0].items[place] = items;
  return view;
}

std::string sectionOf(const MachineView& view) { return machineSection(view, Anchor(1)).markup(); }

bool has(const std::string& text, const std::string& piece) {
  return text.find(piece) != std::string::npos;
}

TEST(MachineSection, AnElementIsARowWithItsLevel) {
  const std::string section = sectionOf(viewWith(Place::kFirmware, {element("BIOS", "1<2")}));
  EXPECT_TRUE(has(section,
                  "<tr><th scope=\"row\">BIOS</th><td><bdi>1&lt;2</bdi></td>"
                  "<td><bdi></bdi></td><td><bdi></bdi></td></tr>"))
      << section;
}

TEST(MachineSection, EachStateHasASignAndAWordOfItsOwn) {
  const struct {
    Filling filling;
    const char* sign;
  } cases[] = {
      {Filling::kEmpty, "empty"},           {Filling::kUntold, "untold"},
      {Filling::kAbsent, "absent"},         {Filling::kElsewhere, "elsewhere"},
      {Filling::kUnanswered, "unanswered"}, {Filling::kUnreadable, "unreadable"},
      {Filling::kForbidden, "forbidden"},   {Filling::kFailed, "failed"},
  };
  for (const auto& c : cases) {
    const std::string badge = std::string("<span class=\"badge is-") + c.sign +
                              "\"><svg class=\"sign\" aria-hidden=\"true\"><use href=\"#sign-" +
                              c.sign + "\"></use></svg>" + std::string(fillingName(c.filling)) +
                              "</span>";
    const std::string row =
        sectionOf(viewWith(Place::kFirmware, {missing("BIOS", c.filling, "why & how")}));
    EXPECT_TRUE(has(row, "<tr class=\"missing\"><th scope=\"row\">BIOS</th><td colspan=\"3\">" +
                             badge + " why &amp; how</td></tr>"))
        << row;
    const std::string tile =
        sectionOf(viewWith(Place::kMemory, {missing("DIMM 1", c.filling, "why")}));
    EXPECT_TRUE(has(tile, "<bdi>DIMM 1</bdi></span>" + badge + "<span class=\"line\">why</span>"))
        << tile;
    EXPECT_TRUE(has(signDrawings().markup(), std::string("id=\"sign-") + c.sign + '"')) << c.sign;
  }
}

TEST(MachineSection, APartWithPropertiesOpens) {
  Item part = element("DIMM 1", "");
  part.lines = {{"Maker", "<KRX>"}, {"", "32 GiB"}};
  part.properties = {{"Vendor", "<KRX>"}};
  const std::string section = sectionOf(viewWith(Place::kMemory, {part}));
  EXPECT_TRUE(has(section,
                  "<li class=\"part\"><details><summary class=\"face\"><span class=\"title\"><bdi>"
                  "DIMM 1</bdi></span><span class=\"line\"><span class=\"what\">Maker</span> <bdi>"
                  "&lt;KRX&gt;</bdi></span><span class=\"line\"><bdi>32 GiB</bdi></span></summary>"
                  "<dl><dt>Vendor</dt><dd><bdi>&lt;KRX&gt;</bdi></dd></dl></details></li>"))
      << section;
}

TEST(MachineSection, StandsWhole) {
  Item bios = element("BIOS", "1");
  bios.name = "UEFI";
  bios.filling = Filling::kPartial;
  bios.build = "B";
  bios.date = "2020-01-02";
  bios.properties = {{"Vendor", "KRX"}};
  MachineView view = viewWith(Place::kFirmware, {bios});
  view.isLive = true;
  view.product = "KRX 1";
  view.facts = {{"Model", "M<1>"}};
  view.classes = {{{"KRXSG_Vpd", "SPFirmwareVPD", State::kPresent, "", {}}, 2}};
  const std::string sign =
      "<span class=\"badge is-partial\"><svg class=\"sign\" aria-hidden=\"true\">"
      "<use href=\"#sign-partial\"></use></svg>";
  EXPECT_EQ(
      "<section class=\"machine\"><h2 id=\"m1\"><bdi>a server</bdi></h2>"
      "<p class=\"facts\">a.json, live machine, KRX 1</p><p class=\"tally\">" +
          sign +
          "1 partial</span> </p>"
          "<details class=\"more\"><summary>What the machine says of itself</summary>"
          "<dl><dt>Model</dt><dd><bdi>M&lt;1&gt;</bdi></dd></dl></details>"
          "<div class=\"box\"><div class=\"places\"><div class=\"place\"><h3>Firmware</h3>"
          "<table class=\"levels\"><thead><tr><th scope=\"col\">Element</th>"
          "<th scope=\"col\">Version</th><th scope=\"col\">Build</th><th "
          "scope=\"col\">Date</th></tr>"
          "</thead><tbody><tr><th scope=\"row\">BIOS<span class=\"name\"><bdi>UEFI</bdi></span>" +
          sign +
          "partial</span></th><td><bdi>1</bdi></td><td><bdi>B</bdi></td>"
          "<td><bdi>2020-01-02</bdi></td></tr></tbody></table>"
          "<details class=\"more\"><summary>All properties</summary>"
          "<p class=\"of\">BIOS<span class=\"name\"><bdi>UEFI</bdi></span></p>"
          "<dl><dt>Vendor</dt><dd><bdi>KRX</bdi></dd></dl></details></div></div></div>"
          "<details class=\"more\"><summary>How each class ended</summary>"
          "<div class=\"wide\" role=\"region\" tabindex=\"0\" aria-label=\"How each class ended\">"
          "<table class=\"classes\"><thead><tr><th scope=\"col\">Class</th><th "
          "scope=\"col\">State</th>"
          "<th scope=\"col\">Instances</th><th scope=\"col\">Collector</th>"
          "<th scope=\"col\">Reason</th></tr></thead><tbody><tr><th scope=\"row\">KRXSG_Vpd</th>"
          "<td><span class=\"badge is-present\"><svg class=\"sign\" aria-hidden=\"true\">"
          "<use href=\"#sign-present\"></use></svg>present</span></td><td>2</td>"
          "<td>SPFirmwareVPD</td><td></td></tr></tbody></table></div></details></section>",
      sectionOf(view));
}

TEST(MachineSection, AReasonWhySomethingIsPartialIsToldOnce) {
  MachineView view = viewWith(Place::kFirmware, {});
  for (const char* const name : {"MINE_B", "MINE_A"}) {
    view.classes.push_back({{name, "C", State::kPartial, "the SP is silent"}, 1});
  }
  view.classes.push_back({{"MINE_C", "C", State::kAbsent, "none"}, 0});
  EXPECT_TRUE(has(sectionOf(view),
                  "</span> the SP is silent <span class=\"name\">MINE_B; "
                  "MINE_A</span></li></ul>"))
      << sectionOf(view);
}

TEST(MachineSection, NodesHaveHeadingsAndLinksToThem) {
  MachineView view = viewWith(Place::kMemory, {missing("DIMM 1", Filling::kEmpty, "")});
  view.boxes[0].node = 2;
  view.boxes.push_back({});
  view.nodes = 2;
  const std::string section = sectionOf(view);
  for (const char* const piece :
       {"a.json, machine file, 2 nodes", "<a href=\"#m1-b1\">Node 2</a>",
        "<a href=\"#m1-b2\">The whole machine</a>", "<h2 id=\"m1\"><bdi>a server</bdi></h2>",
        "<h3 id=\"m1-b1\">Node 2</h3>", "<h4>Memory</h4>",
        "<h3 id=\"m1-b2\">The whole machine</h3>"}) {
    EXPECT_TRUE(has(section, piece)) << piece;
  }
}

TEST(MachineSection, HowEachClassEndedIsTold) {
  MachineView view = viewWith(Place::kMemory, {});
  view.classes = {{{"MINE_Fan", "", State::kUnused, "nobody & never"}, 0}};
  EXPECT_TRUE(
      has(sectionOf(view), "unused</span></td><td>0</td><td></td><td>nobody &amp; never</td>"))
      << sectionOf(view);
}

TEST(MachineSection, WhatIsFilledIsCountedByItsState) {
  const Tally tally = tallyOf(
      viewWith(Place::kMemory, {element("DIMM 1", ""), missing("DIMM 2", Filling::kEmpty, ""),
                                missing("DIMM 3", Filling::kEmpty, "")}));
  EXPECT_EQ((Tally{{Filling::kFilled, 1}, {Filling::kEmpty, 2}}), tally);
}

}  // namespace
}  // namespace velhost
