// SPDX-License-Identifier: Apache-2.0
#include "host/explanation/machineexplained.h"

#include <algorithm>
#include <utility>

#include "host/explanation/matching.h"
#include "host/explanation/originwords.h"
#include "host/explanation/rules.h"
#include "host/explanation/schemaexplained.h"
#include "host/formats/element.h"
#include "host/formats/shownvalue.h"
#include "host/text/hexdump.h"
#include "host/text/utf8.h"
#include "host/text/wrappedtext.h"

namespace velhost {
namespace {

using NKRXVEL20::host::PropertyList;
using NKRXVEL20::host::PropertySchema;
using NKRXVEL20::host::PublishedInstance;
using Instances = std::vector<const PublishedInstance*>;

constexpr std::size_t kIndent = 2;
constexpr std::size_t kDeeper = 4;
constexpr std::size_t kDumpColumn = 6;
constexpr std::size_t kMostBytes = 64;     // of a place that are shown
constexpr std::size_t kLongestText = 120;  // of a value or a name, in characters
constexpr std::size_t kMostSteps = 32;

std::string shown(std::string_view text) {
  // Four bytes a character at most, so the rest of an endless text need not be looked at.
  if (text.size() <= 16 * kLongestText) return shortened(visible(text), kLongestText);
  const std::string_view head = text.substr(0, 4 * kLongestText);
  return shortened(visible(head) + visible(text.substr(text.size() - head.size())), kLongestText);
}

std::string inQuotes(std::string_view text) { return '"' + shown(text) + '"'; }

std::string valueInWords(const PropertySchema& property, const PropertyList& instance,
                         const Inquiry& inquiry) {
  if (!isSet(instance, property.name)) return "not set";
  const auto held = std::ranges::find(instance, property.name, &PropertyList::value_type::first);
  const std::string value = held->second.ToString();
  if (property.type == NKRXVEL20::ECIMType::kString) return inQuotes(value);
  const std::string read = shownValue(&inquiry.cimClass, property.name, held->second);
  const bool isPlain = property.type == NKRXVEL20::ECIMType::kBoolean || read == value;
  return isPlain || read.empty() ? value : value + " (" + read + ")";
}

Instances instancesOf(const Inquiry& inquiry) {
  Instances instances;
  for (const PublishedInstance& instance : inquiry.result.instances) {
    if (instance.className != inquiry.cimClass.name) continue;
    if (!inquiry.node || nodeOf(instance) == inquiry.node) instances.push_back(&instance);
  }
  return instances;
}

std::vector<Match> matchesFor(const Inquiry& inquiry, const Instances& instances,
                              std::size_t most) {
  std::vector<const PropertyList*> lists;
  for (const PublishedInstance* const instance : instances) {
    if (lists.size() == most) break;
    lists.push_back(&instance->properties);
  }
  return matchesOf(inquiry.cimClass, lists, inquiry.evidence);
}

// The node is in many a name already.
std::string labelOf(const PublishedInstance& instance, std::size_t number) {
  std::string name = nameOf(instance);
  name.erase(name.find_last_not_of(" :") + 1);
  if (name.empty()) return "instance " + std::to_string(number);
  const auto node = nodeOf(instance);
  const bool isTold = !node || name.find("Node") != std::string::npos;
  return isTold ? shown(name) : "Node " + std::to_string(*node) + ": " + shown(name);
}

std::string stateText(const Inquiry& inquiry, std::size_t count) {
  const std::string machine = visible(inquiry.context.machineName);
  const std::string ofNode = inquiry.node ? " of node " + std::to_string(*inquiry.node) : "";
  std::string text = "On " + machine + ": " + std::to_string(count) +
                     (count == 1 ? " instance" : " instances") + ofNode;
  for (const ClassState& state : inquiry.result.states) {
    if (state.className != inquiry.cimClass.name) continue;
    text += "; " + std::string(stateName(state.state));
    if (!state.reason.empty()) text += ": " + state.reason;
  }
  return wrappedText(text, inquiry.width, 0, kIndent);
}

// What was asked and refused, in the words of `query --why`.
std::string stepsText(const Inquiry& inquiry) {
  std::string text;
  std::size_t count = 0;
  for (const ClassState& state : inquiry.result.states) {
    for (const std::string& step : state.steps) {
      if (count++ < kMostSteps) text += wrappedText(step, inquiry.width, kIndent, kDeeper);
    }
  }
  if (count == 0) return "";
  const std::string more = std::to_string(count - std::min(count, kMostSteps));
  return "\nSteps that failed:\n" + text +
         (count > kMostSteps ? "  and " + more + " more, which query --why tells\n" : "");
}

std::string moreText(const Inquiry& inquiry, std::size_t count) {
  if (count <= kMostExplained) return "";
  const std::string more = std::to_string(count - kMostExplained);
  return '\n' + wrappedText("and " + more + " instances more; --node N shows those of one node",
                            inquiry.width, 0, kIndent);
}

bool isPrintable(ByteView bytes) {
  return std::ranges::all_of(bytes, [](unsigned char byte) { return byte >= ' ' && byte <= '~'; });
}

// What a rule was given: a text, a few bytes, or those of the rows above.
std::string rawInWords(const NamedBytes& place) {
  constexpr std::size_t kFew = 8;
  ByteView bytes = place.bytes;
  while (!bytes.empty() && bytes.back() == 0) bytes = bytes.first(bytes.size() - 1);
  if (!bytes.empty() && isPrintable(bytes) && bytes.size() > 1) {
    return inQuotes(std::string(bytes.begin(), bytes.end()));
  }
  return place.bytes.size() <= kFew ? hexPairs(place.bytes) : "this";
}

// How the bytes became the value; empty for a text that stands as it is.
std::string ruleText(const Origin& origin, const NamedBytes& place, Fit fit) {
  const std::string rule = ruleInWords(origin.rule);
  if (origin.text == kWhatWasWrong) return "what its collector found wrong there";
  if (fit == Fit::kOpen) return "by a rule that is not worked out again here: " + rule;
  const std::string given = appliedRule(origin.rule, place.bytes).value_or("");
  if (given == textOf(place.bytes)) return given.empty() ? "gives nothing: " + rule : "";
  return rawInWords(place) + " becomes " + inQuotes(given) + ": " + rule;
}

std::string missingText(const NamedBytes& place) {
  if (place.missing == 0) return "";
  return "; the last " + std::to_string(place.missing) + " bytes are not there and count as zero";
}

// What was asked and read, and the bytes.
std::string bytesText(const Origin& origin, const Match& match, Fit fit, std::size_t width) {
  const auto place = placeOf(origin, match.view);
  if (!place) return "";
  std::string text = wrappedText(evidenceInWords(origin, match.view) + missingText(*place), width,
                                 kDeeper, kDumpColumn);
  text += hexDump(place->bytes, place->offset, kDumpColumn, width, kMostBytes);
  return text + wrappedText(ruleText(origin, *place, fit), width, kDeeper, kDumpColumn);
}

// What became of one instance's property.
struct Entry {
  std::string label;
  std::string value;
  const Match* match = nullptr;
  PropertyLines holding;
  Explained explained;
  bool isSet = false;
};

std::vector<Entry> entriesOf(const Inquiry& inquiry, const PropertySchema& property,
                             const Instances& instances, const std::vector<Match>& matches) {
  const PropertyLines lines{&property, originsOf(property)};
  std::vector<Entry> entries(matches.size());
  for (std::size_t i = 0; i < matches.size(); ++i) {
    Entry& entry = entries[i];
    const PropertyList& instance = instances[i]->properties;
    entry.label = labelOf(*instances[i], i + 1);
    entry.value = valueInWords(property, instance, inquiry);
    entry.match = &matches[i];
    entry.holding = holdingFor(lines, instance);
    entry.explained = explainedBy(entry.holding, matches[i], inquiry.cimClass);
    entry.isSet = isSet(instance, property.name);
  }
  return entries;
}

std::string entryHead(const Entry& entry, std::size_t width) {
  return wrappedText(entry.label + ": " + entry.value, width, kIndent, kDeeper);
}

// The instances that a line made, below it.
std::string lineText(std::string_view line, const std::vector<Entry>& entries, std::size_t width) {
  std::string text;
  for (const Entry& entry : entries) {
    const auto& [origin, fit] = entry.explained;
    if (origin == nullptr || origin->line != line) continue;
    text += '\n' + entryHead(entry, width) + bytesText(*origin, *entry.match, fit, width);
  }
  return text;
}

bool isUnseen(const Origin& origin) {
  return origin.source == Source::kSysfs || origin.source == Source::kOther;
}

// Why no line stands for an instance's value.
enum class Rest { kNotConfirmed, kUnseen, kNoLine, kNotSet };

Rest restOf(const Entry& entry) {
  if (!entry.isSet) return Rest::kNotSet;
  if (entry.holding.property->mappingStrings.empty()) return Rest::kNoLine;
  return std::ranges::any_of(entry.holding.lines, isUnseen) ? Rest::kUnseen : Rest::kNotConfirmed;
}

constexpr std::pair<Rest, const char*> kRests[] = {
    {Rest::kNotConfirmed, "Not confirmed: no line gives this value from what was seen"},
    {Rest::kUnseen, "From what the collector alone sees:"},
    {Rest::kNoLine, "The schema does not tell where these come from:"},
    {Rest::kNotSet, "Not set:"},
};

std::string restText(const std::vector<Entry>& entries, std::size_t width) {
  std::string whole;
  for (const auto& [rest, head] : kRests) {
    std::string text;
    for (const Entry& entry : entries) {
      if (entry.explained.line != nullptr || restOf(entry) != rest) continue;
      text +=
          entry.isSet ? entryHead(entry, width) : wrappedText(entry.label, width, kIndent, kDeeper);
    }
    if (!text.empty()) whole += '\n' + wrappedText(head, width, 0, kIndent) + text;
  }
  return whole;
}

// The lines that made something with what they made, then the others.
std::string linesText(const PropertySchema& property, const std::vector<Entry>& entries,
                      std::size_t width) {
  std::string text;
  std::string others;
  for (const std::string_view line : property.mappingStrings) {
    const std::string made = lineText(line, entries, width);
    if (made.empty()) {
      others += wrappedText(visible(line), width, kIndent, kDeeper);
    } else {
      text += '\n' + lineExplained(line, width) + made;
    }
  }
  return others.empty() ? text : text + "\nLines that gave no value here:\n" + others;
}

std::string summaryOf(const PropertyLines& lines, const PublishedInstance& instance,
                      const Match& match, const Inquiry& inquiry) {
  const PropertySchema& property = *lines.property;
  const PropertyLines holding = holdingFor(lines, instance.properties);
  const auto [origin, fit] = explainedBy(holding, match, inquiry.cimClass);
  const std::string head =
      std::string(property.name) + "  " + valueInWords(property, instance.properties, inquiry);
  const bool isHidden = std::ranges::any_of(holding.lines, isUnseen);
  std::string from = isHidden ? "what the collector alone sees" : "not confirmed by what was seen";
  if (origin != nullptr) {
    const auto place = placeOf(*origin, match.view);
    from = evidenceInWords(*origin, match.view);
    if (place) from += ", from byte " + std::to_string(place->offset) + " on";
    if (fit == Fit::kOpen) from += ", by a rule that is not worked out again here";
  }
  const bool isTold = origin != nullptr || isSet(instance.properties, property.name);
  return wrappedText(head, inquiry.width, kIndent, kDeeper) +
         (isTold ? wrappedText(from, inquiry.width, kDumpColumn, kDumpColumn + kIndent) : "");
}

std::string firstInstanceText(const Inquiry& inquiry, const Instances& instances) {
  const Match match = matchesFor(inquiry, instances, 1).front();
  const PublishedInstance& first = *instances.front();
  std::string text = '\n' + wrappedText((instances.size() == 1 ? "It is " : "The first is ") +
                                            labelOf(first, 1) + ':',
                                        inquiry.width, 0, kIndent);
  for (const PropertyLines& lines : linesOf(inquiry.cimClass)) {
    text += summaryOf(lines, first, match, inquiry);
  }
  return text + '\n' +
         wrappedText("With a property behind the class, " + std::string(inquiry.cimClass.name) +
                         ".PROPERTY, the bytes of each instance are shown.",
                     inquiry.width, 0, kIndent);
}

// Where the values would come from.
std::string propertyOfNone(const Inquiry& inquiry, const PropertySchema& property) {
  std::string text = propertyHead(inquiry.cimClass, property, inquiry.width) + '\n';
  text += stateText(inquiry, 0);
  for (const std::string_view line : property.mappingStrings) {
    text += '\n' + lineExplained(line, inquiry.width);
  }
  return text + stepsText(inquiry);
}

}  // namespace

std::string classOnMachine(const Inquiry& inquiry) {
  const Instances instances = instancesOf(inquiry);
  std::string text =
      classHead(inquiry.cimClass, inquiry.width) + '\n' + stateText(inquiry, instances.size());
  if (!instances.empty()) text += firstInstanceText(inquiry, instances);
  return text + stepsText(inquiry);
}

std::string propertyOnMachine(const Inquiry& inquiry, const PropertySchema& property) {
  const Instances instances = instancesOf(inquiry);
  if (instances.empty()) return propertyOfNone(inquiry, property);
  const auto matches = matchesFor(inquiry, instances, kMostExplained);
  const auto entries = entriesOf(inquiry, property, instances, matches);
  const std::size_t width = inquiry.width;
  return propertyHead(inquiry.cimClass, property, width) + '\n' +
         stateText(inquiry, instances.size()) + linesText(property, entries, width) +
         restText(entries, width) + moreText(inquiry, instances.size()) + stepsText(inquiry);
}

}  // namespace velhost
