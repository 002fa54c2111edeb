// SPDX-License-Identifier: Apache-2.0
#include "host/report/reportpage.h"

#include <utility>

#include "host/report/changes.h"
#include "host/report/machinesection.h"
#include "host/report/pagefiles.h"

namespace velhost {
namespace {

constexpr std::size_t kLongestName = 120;
constexpr std::size_t kLongestReason = 400;

// What the page may fetch or run: nothing, but for its own style.
Html pageHead(const Html& title) {
  return R"(<meta charset="utf-8">
<meta http-equiv="Content-Security-Policy" content="default-src 'none'; style-src 'unsafe-inline'; )"
         R"(base-uri 'none'; form-action 'none'">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta name="color-scheme" content="light dark">
<meta name="referrer" content="no-referrer">
)"_html + element("title", title) +
         "\n"_html + element("style", pageStyle());
}

Html overviewRow(const MachineView& machine, const Anchor& anchor) {
  const Html name = linkTo(anchor, element("bdi", asText(machine.name, kLongestName)));
  Tally tally = tallyOf(machine);
  for (const Filling quiet : {Filling::kEmpty, Filling::kAbsent, Filling::kElsewhere}) {
    tally.erase(quiet);
  }
  const Html toLookAt = tallyText(tally);
  return element("tr", element(R"(th scope="row")", name) + element("td", machineFacts(machine)) +
                           element("td", toLookAt.isEmpty() ? "nothing"_html : toLookAt)) +
         "\n"_html;
}

}  // namespace

void ReportPage::add(Findings findings, const std::string& file) {
  const MachineView machine = machineView(findings, file);
  const Anchor anchor(++count_);
  if (count_ == 1) firstName_ = machine.name;
  rows_ += overviewRow(machine, anchor);
  matrix_.add(findings, machine, anchor);
  sections_ += machineSection(machine, anchor) + "\n"_html;
  if (count_ <= 2) {
    compared_.push_back({std::move(findings), file});
  } else {
    compared_.clear();
  }
}

void ReportPage::addUnread(const std::string& file, const std::string& reason) {
  ++unread_;
  rows_ += element("tr", element(R"(th scope="row")", asText(file, kLongestName)) +
                             element(R"(td colspan="2")", badge(Filling::kUnreadable) + " "_html +
                                                              asText(reason, kLongestReason))) +
           "\n"_html;
}

Html ReportPage::title() const {
  const std::string what = count_ == 1 ? firstName_ : std::to_string(count_) + " machines";
  return "Firmware and parts: "_html + asText(what, kLongestName);
}

Html ReportPage::changes() const {
  return compared_.size() == 2 ? changesSection(compared_[0], compared_[1]) : Html();
}

Html ReportPage::overview() const {
  if (count_ + unread_ <= 1) return {};
  const Html columns = R"(<thead><tr><th scope="col">Machine</th><th scope="col">What it is</th>)"
                       R"(<th scope="col">To look at</th></tr></thead>)"_html;
  return R"(<nav aria-labelledby="machines"><h2 id="machines">Machines</h2>)"_html +
         element(R"(table class="overview")", columns + element("tbody", rows_)) + "</nav>\n"_html;
}

Html ReportPage::levels() const { return count_ > 1 ? matrix_.section() : Html(); }

std::string ReportPage::text() const {
  const Html header = element("header", element("h1", title()));
  const Html body = R"(<a class="skip" href="#content">To the machines</a>)"_html + signDrawings() +
                    header + overview() + R"(<main id="content">)"_html + changes() + levels() +
                    sections_ + "</main>\n"_html;
  const Html page = "<!DOCTYPE html>\n<html lang=\"en\">\n"_html +
                    element("head", pageHead(title())) + "\n"_html + element("body", body) +
                    "\n</html>\n"_html;
  return page.markup();
}

}  // namespace velhost
