// SPDX-License-Identifier: Apache-2.0
#include "host/comparison/difftable.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "host/comparison/instancelabel.h"
#include "host/formats/shownvalue.h"
#include "host/text/utf8.h"
#include "host/text/wrappedtext.h"
#include "velhost/schema.h"

namespace velhost {
namespace {

using NKRXVEL20::TCIMValue;
using NKRXVEL20::host::ClassSchema;
using NKRXVEL20::host::PublishedInstance;

constexpr char kArrow[] = " -> ";
constexpr std::size_t kLongestValue = 160;
constexpr std::size_t kLongestName = 40;

std::string counted(std::size_t count, const std::string& what) {
  return std::to_string(count) + ' ' + what + (count == 1 ? "" : "s");
}

// Of a long text what stands around its first difference from the other.
std::string around(std::string_view text, std::string_view other) {
  constexpr std::size_t kBefore = 40;
  const auto apart = std::ranges::mismatch(text, other).in1;
  auto begin = static_cast<std::size_t>(apart - text.begin());
  if (characterCount(text) <= kLongestValue || begin <= kBefore) {
    return shortened(text, kLongestValue);
  }
  begin -= kBefore;
  const auto isInside = [](char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
  };
  while (isInside(text[begin])) --begin;
  return "..." + shortened(text.substr(begin), kLongestValue - 3);
}

// A value, or that there is none. Blanks that make a difference are seen.
std::string valueText(const ClassSchema* cimClass, const PropertyChange& change,
                      const TCIMValue* value) {
  if (value == nullptr) return "(not set)";
  const std::string shown = shownValue(cimClass, change.name, *value);
  const TCIMValue* const other = value == change.before ? change.after : change.before;
  if (other != nullptr && shownValue(cimClass, change.name, *other) != shown) {
    return shown.empty() ? "(blank)" : shown;
  }
  return shown.empty() && other == nullptr ? "(blank)" : '"' + visible(value->ToString()) + '"';
}

class DifferenceText {
 public:
  explicit DifferenceText(std::size_t width) : width_(width) {}

  void head(const char* which, const ComparedFile& file) {
    line(std::string(which) + "  ",
         labelText(file.findings.context.machineName) + " (" + labelText(file.name) + ')');
  }

  void differences(const ClassComparison& compared, bool bothTell) {
    text_ += '\n';
    line("", labelText(compared.className));
    if (needsStates(compared, bothTell)) states(compared);
    for (const InstanceChange& change : compared.changed) {
      line("  changed  ", instanceLabel(*change.after));
      properties(change);
    }
    for (const InstanceChange& move : compared.moved) {
      line("  moved    ", instanceLabel(*move.before) + kArrow + instanceLabel(*move.after));
      properties(move);
    }
    for (const PublishedInstance* const one : compared.went) whole("  went     ", *one);
    for (const PublishedInstance* const one : compared.came) whole("  came     ", *one);
  }

  // Classes that are alike in both, as far as can be told.
  void untold(const Comparison& comparison) {
    std::string lines;
    std::swap(lines, text_);
    for (const ClassComparison& compared : comparison.classes) {
      if (compared.isDifferent() || compared.isCompared) continue;
      text_ += '\n';
      line("", labelText(compared.className));
      states(compared);
    }
    if (!text_.empty()) text_ = "\nCannot be compared:\n" + text_.substr(1);
    text_ = lines + text_;
  }

  void total(const Comparison& comparison);

  std::string take() { return std::move(text_); }

 private:
  // Where they say why something is there or not.
  static bool needsStates(const ClassComparison& compared, bool bothTell) {
    const auto isPartial = [](const ClassState* state) {
      return state == nullptr || state->state == State::kPartial;
    };
    const bool isAnyMissing = !compared.went.empty() || !compared.came.empty();
    return compared.hasOtherState ||
           (isAnyMissing && (isPartial(compared.before) || isPartial(compared.after) || !bothTell));
  }

  void states(const ClassComparison& compared) {
    state("  old  ", compared.before, compared.countBefore);
    state("  new  ", compared.after, compared.countAfter);
  }

  void state(std::string_view lead, const ClassState* state, std::size_t count) {
    if (state == nullptr) return line(lead, "not asked for, or none");
    std::string text(stateName(state->state));
    if (count > 0) text += ", " + counted(count, "instance");
    if (!state->reason.empty()) text += ": " + visible(state->reason);
    line(lead, text);
  }

  void properties(const InstanceChange& change) {
    const ClassSchema* const cimClass = NKRXVEL20::host::findClass(change.after->className);
    for (const PropertyChange& property : change.properties) {
      const std::string old = valueText(cimClass, property, property.before);
      const std::string now = valueText(cimClass, property, property.after);
      line("    " + shortened(visible(property.name), mostOfAName()) + "  ",
           around(old, now) + kArrow + around(now, old));
    }
  }

  // Half of a narrow screen is left to the values behind it.
  std::size_t mostOfAName() const { return std::min(kLongestName, width_ / 2); }

  void whole(std::string_view lead, const PublishedInstance& instance) {
    const std::string detail = instanceDetail(instance);
    line(lead, instanceLabel(instance) + (detail.empty() ? "" : ": " + detail));
  }

  void line(std::string_view lead, std::string_view text) {
    text_ += wrappedText(lead, text, width_);
  }

  std::size_t width_;
  std::string text_;
};

void DifferenceText::total(const Comparison& comparison) {
  std::array<std::pair<const char*, std::size_t>, 4> counts{
      {{"changed", 0}, {"moved", 0}, {"went", 0}, {"came", 0}}};
  std::size_t states = 0;
  for (const ClassComparison& compared : comparison.classes) {
    counts[0].second += compared.changed.size();
    counts[1].second += compared.moved.size();
    counts[2].second += compared.went.size();
    counts[3].second += compared.came.size();
    states += compared.hasOtherState ? 1 : 0;
  }
  std::string text;
  for (const auto& [what, count] : counts) {
    if (count > 0) text += (text.empty() ? "" : ", ") + std::to_string(count) + ' ' + what;
  }
  if (states > 0) {
    text += (text.empty() ? "" : "; ") + std::to_string(states) +
            (states == 1 ? " class in another state" : " classes in another state");
  }
  text_ += '\n' + (text.empty() ? "No differences." : text + '.') + '\n';
}

}  // namespace

std::string differenceTable(const ComparedFile& before, const ComparedFile& after,
                            const Comparison& comparison, std::size_t width) {
  const bool bothTell = before.findings.tellsStates && after.findings.tellsStates;
  DifferenceText text(width);
  text.head("Old", before);
  text.head("New", after);
  for (const ClassComparison& compared : comparison.classes) {
    if (compared.isDifferent()) text.differences(compared, bothTell);
  }
  text.untold(comparison);
  text.total(comparison);
  return text.take();
}

}  // namespace velhost
