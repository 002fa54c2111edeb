// SPDX-License-Identifier: Apache-2.0
#include "host/report/reportpage.h"

#include <gtest/gtest.h>

#include "host/report/machinesection.h"
#include "host/report/pagefiles.h"
#include "tests/host/formats/formatsample.h"

namespace velhost {
namespace {

Findings machine(const std::string& name) {
  QueryContext context = sampleContext();
  context.machineName = name;
  return {context, sampleResult()};
}

std::string pageOf(const std::vector<std::string>& names) {
  ReportPage page;
  for (const std::string& name : names) page.add(machine(name), name + ".json");
  return page.text();
}

bool has(const std::string& text, const std::string& piece) {
  return text.find(piece) != std::string::npos;
}

TEST(ReportPage, IsADocumentThatFetchesNothing) {
  const std::string page = pageOf({"a"});
  EXPECT_TRUE(
      page.starts_with("<!DOCTYPE html>\n<html lang=\"en\">\n<head><meta charset=\"utf-8\">"));
  EXPECT_TRUE(page.ends_with("</main>\n</body>\n</html>\n"));
  EXPECT_TRUE(has(page, "content=\"default-src 'none'; style-src 'unsafe-inline'; "));
  EXPECT_TRUE(has(page, "<title>Firmware and parts: a</title>"));
  for (const char* const piece :
       {"<script", "<link", "<img", "@import", "url(", "http:", "https:"}) {
    EXPECT_FALSE(has(page, piece)) << piece;
  }
}

TEST(ReportPage, WhatIsToldDependsOnHowManyMachinesThereAre) {
  const struct {
    std::vector<std::string> names;
    const char* title;
    bool hasOverview, hasChanges;
  } cases[] = {
      {{}, "<title>Firmware and parts: 0 machines</title>", false, false},
      {{"a"}, "<title>Firmware and parts: a</title>", false, false},
      {{"a", "b"}, "<title>Firmware and parts: 2 machines</title>", true, true},
      {{"a", "b", "c"}, "<title>Firmware and parts: 3 machines</title>", true, false},
  };
  for (const auto& c : cases) {
    const std::string page = pageOf(c.names);
    EXPECT_TRUE(has(page, c.title)) << c.title;
    EXPECT_EQ(c.hasOverview, has(page, "<h2 id=\"machines\">")) << c.title;
    EXPECT_EQ(c.hasOverview, has(page, "<h2 id=\"levels\">")) << c.title;
    EXPECT_EQ(c.hasChanges, has(page, "<h2 id=\"changes\">")) << c.title;
    for (std::size_t i = 0; i < c.names.size(); ++i) {
      EXPECT_TRUE(has(page, "<h2 id=\"m" + std::to_string(i + 1) + "\"><bdi>" + c.names[i])) << i;
    }
  }
}

Findings bareMachine(const std::string& name) {
  Findings findings;
  findings.context.machineName = name;
  return findings;
}

std::string sectionOf(const std::string& name, std::size_t number) {
  return machineSection(machineView(bareMachine(name), name + ".json"), Anchor(number)).markup() +
         "\n";
}

TEST(ReportPage, StandsWhole) {
  ReportPage page;
  page.add(bareMachine("a"), "a.json");
  page.add(bareMachine("b"), "b.json");
  page.addUnread("c.json", "no file");
  EXPECT_EQ(
      "<!DOCTYPE html>\n<html lang=\"en\">\n<head><meta charset=\"utf-8\">\n"
      "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; "
      "style-src 'unsafe-inline'; base-uri 'none'; form-action 'none'\">\n"
      "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
      "<meta name=\"color-scheme\" content=\"light dark\">\n"
      "<meta name=\"referrer\" content=\"no-referrer\">\n"
      "<title>Firmware and parts: 2 machines</title>\n<style>" +
          pageStyle().markup() +
          "</style></head>\n<body><a class=\"skip\" href=\"#content\">To the machines</a>" +
          pageSigns().markup() +
          "<header><h1>Firmware and parts: 2 machines</h1></header>"
          "<nav aria-labelledby=\"machines\"><h2 id=\"machines\">Machines</h2>"
          "<table class=\"overview\"><thead><tr><th scope=\"col\">Machine</th>"
          "<th scope=\"col\">What it is</th><th scope=\"col\">To look at</th></tr></thead><tbody>"
          "<tr><th scope=\"row\"><a href=\"#m1\"><bdi>a</bdi></a></th>"
          "<td>a.json, machine file</td><td>nothing</td></tr>\n"
          "<tr><th scope=\"row\"><a href=\"#m2\"><bdi>b</bdi></a></th>"
          "<td>b.json, machine file</td><td>nothing</td></tr>\n"
          "<tr><th scope=\"row\">c.json</th><td colspan=\"2\"><span class=\"badge "
          "is-unreadable\"><svg class=\"sign\" aria-hidden=\"true\">"
          "<use href=\"#sign-unreadable\"></use></svg>unreadable</span> no file</td></tr>\n"
          "</tbody></table></nav>\n<main id=\"content\"><section aria-labelledby=\"changes\">"
          "<h2 id=\"changes\">What changed</h2><p>Nothing is different.</p></section>\n" +
          sectionOf("a", 1) + sectionOf("b", 2) + "</main>\n</body>\n</html>\n",
      page.text());
}

TEST(ReportPage, TheSameMachinesGiveTheSameBytes) {
  EXPECT_EQ(pageOf({"a", "b", "a"}), pageOf({"a", "b", "a"}));
}

TEST(ReportPage, ANameIsNoMarkup) {
  const std::string page = pageOf({"</title><script>", "b"});
  EXPECT_FALSE(has(page, "<script"));
  EXPECT_TRUE(has(page, "<bdi>&lt;/title&gt;&lt;script&gt;</bdi></a>"));
}

// The names that the page gives to signs and colours are those of the files beside it.
TEST(ReportPage, ItsStyleAndSignsStandInFiles) {
  EXPECT_TRUE(has(pageStyle().markup(), "prefers-color-scheme: dark"));
  EXPECT_TRUE(has(pageSigns().markup(), "<symbol id=\"sign-present\""));
}

}  // namespace
}  // namespace velhost
