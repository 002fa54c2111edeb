// SPDX-License-Identifier: Apache-2.0
#include "host/report/reportpage.h"

#include <gtest/gtest.h>

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
    EXPECT_EQ(c.hasChanges, has(page, "<h2 id=\"changes\">")) << c.title;
    for (std::size_t i = 0; i < c.names.size(); ++i) {
      EXPECT_TRUE(has(page, "<h2 id=\"m" + std::to_string(i + 1) + "\"><bdi>" + c.names[i])) << i;
    }
  }
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
