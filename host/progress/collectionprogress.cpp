// SPDX-License-Identifier: Apache-2.0
#include "host/progress/collectionprogress.h"

#include <algorithm>
#include <chrono>

namespace velhost {
namespace {

using NKRXVEL20::host::TimePoint;
using NKRXVEL20::host::TrafficEntry;
using Kind = TrafficEntry::Kind;

// Letters beyond ASCII may take two columns.
std::size_t columnsOf(const std::string& text) {
  const auto wide = std::ranges::count_if(
      text, [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0xC0U; });
  const auto further = std::ranges::count_if(
      text, [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; });
  return text.size() - static_cast<std::size_t>(further) + static_cast<std::size_t>(wide);
}

std::string behind(const char* separator, const std::string& text) {
  return text.empty() ? "" : separator + text;
}

}  // namespace

std::string timeLeftText(std::chrono::milliseconds left) {
  using std::chrono::hours;
  using std::chrono::minutes;
  using std::chrono::seconds;
  const auto text = [](auto count, const char* unit) {
    return "about " + std::to_string(count) + ' ' + unit + " left";
  };
  if (left <= seconds(100)) return text(std::chrono::ceil<seconds>(left).count(), "s");
  if (left <= minutes(100)) return text(std::chrono::ceil<minutes>(left).count(), "min");
  return text(std::chrono::ceil<hours>(left).count(), "h");
}

void CollectionProgress::begin(bool isLast) {
  *this = CollectionProgress(std::move(known_));
  isLast_ = isLast;
}

void CollectionProgress::sends(const TrafficEntry& command, TimePoint now) {
  if (!current_) begin_ = now;
  current_ = command;
  if (const KnownCommand* const known = findCommand(known_, command)) {
    providers_.insert(known->providers.begin(), known->providers.end());
  }
}

void CollectionProgress::got(const TrafficEntry& command, TimePoint now) {
  last_ = now;
  ++sent_;
  const bool isPlanned =
      command.kind == Kind::kDotCommand && findCommand(known_, command) != nullptr;
  if (isPlanned) planned_.emplace(command.sp, command.command);
}

// Its collector has begun to send what it has to.
bool CollectionProgress::isAsked(const KnownCommand& known) const {
  return known.kind == Kind::kDotCommand &&
         std::ranges::any_of(known.providers,
                             [&](const std::string& name) { return providers_.contains(name); });
}

// Known when the driver was asked for the number of each component.
std::optional<std::size_t> CollectionProgress::commandsOfAnSP() const {
  std::size_t count = 0;
  for (const KnownCommand& known : known_) {
    if (!isAsked(known)) continue;
    const auto components = counts_.find(known.command);
    if (known.isNumbered && components == counts_.end()) return std::nullopt;
    const std::int32_t number = known.isNumbered ? components->second : 1;
    count += static_cast<std::size_t>(std::max(number, 0));
  }
  return count;
}

std::optional<CollectionProgress::Plan> CollectionProgress::plan() const {
  const bool isOfDotCommands = current_ && current_->kind == Kind::kDotCommand;
  const auto each = commandsOfAnSP();
  if (!isOfDotCommands || spCount_ < 1 || !each) return std::nullopt;
  const Plan plan{planned_.size(), *each * static_cast<std::size_t>(spCount_)};
  // Otherwise more is asked than the schema tells.
  if (plan.all == 0 || plan.done > plan.all) return std::nullopt;
  return plan;
}

std::string CollectionProgress::where() const {
  if (current_->kind == Kind::kIpmiCommand) return "BMC";
  if (current_->kind == Kind::kTamberCommand || spCount_ < 2) return "SP";
  return "SP " + std::to_string(current_->sp + 1) + " of " + std::to_string(spCount_);
}

std::string CollectionProgress::component() const {
  const KnownCommand* const known = findCommand(known_, *current_);
  if (known == nullptr) return "";
  return known->words + (known->isNumbered ? " " + std::to_string(componentNumber(*current_)) : "");
}

std::string CollectionProgress::count(const std::optional<Plan>& plan) const {
  if (plan) return std::to_string(plan->done) + " of " + std::to_string(plan->all) + " commands";
  if (sent_ == 0) return "";
  return std::to_string(sent_) + (sent_ == 1 ? " command" : " commands");
}

// As long as the commands took that came to an end, for each of those that are to come.
std::string CollectionProgress::timeLeft(const std::optional<Plan>& plan) const {
  if (!plan || !isLast_ || plan->done == 0 || plan->done == plan->all) return "";
  const auto each = (last_ - begin_) / plan->done;
  return timeLeftText(
      std::chrono::duration_cast<std::chrono::milliseconds>(each * (plan->all - plan->done)));
}

std::string CollectionProgress::text(std::size_t columns) const {
  if (!current_) return "";
  const auto known = plan();
  const std::string asked = where() + behind(", ", component());
  const std::string counted = behind(": ", count(known));
  for (const std::string& text : {asked + counted + behind(", ", timeLeft(known)), asked + counted,
                                  where() + counted, where()}) {
    if (columnsOf(text) <= columns) return text;
  }
  return "";
}

}  // namespace velhost
