// SPDX-License-Identifier: Apache-2.0
#include "host/explanation/matching.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <tuple>
#include <utility>

namespace velhost {
namespace {

using NKRXVEL20::host::ClassSchema;
using NKRXVEL20::host::PropertyList;
using NKRXVEL20::host::PublishedInstance;
using LineList = std::vector<PropertyLines>;

constexpr std::size_t kMostCandidates = 4096;  // that are tried for an instance
constexpr std::size_t kStringSetRead = 1024;   // bytes of a string set that "string with" looks at
constexpr std::size_t kLongestString = 99;
constexpr std::size_t kLengthOffset = 1;

constexpr std::pair<Source, Part> kParts[] = {
    {Source::kDotCommand, Part::kReply},  {Source::kTamberCommand, Part::kReply},
    {Source::kIpmi, Part::kReply},        {Source::kIpmiRepository, Part::kFru},
    {Source::kIpmiFru, Part::kFru},       {Source::kSmbios, Part::kStructure},
    {Source::kInstance, Part::kInstance},
};

// What a template's numbers are those of.
constexpr std::pair<std::string_view, Part> kNumbers[] = {
    {"sp", Part::kReply}, {"node", Part::kReply},          {"label", Part::kReply},
    {"n", Part::kReply},  {"structure", Part::kStructure},
};

Part partOfTemplate(std::string_view shape) {
  for (const std::string_view name : placeholdersOf(shape)) {
    for (const auto& [number, part] : kNumbers) {
      if (name == number) return part;
    }
  }
  return Part::kNone;
}

template <class Use>
void forEachLine(const LineList& lists, Use use) {
  for (const PropertyLines& list : lists) {
    for (const Origin& line : list.lines) use(line);
  }
}

using Replies = std::vector<const Reply*>;

// What may have made an instance of the class. What a BMC says of itself, asked without data, are
// several replies of one component.
struct Candidates {
  std::vector<Replies> replies;
  std::map<int, std::vector<const Structure*>> structures;
  std::vector<StringPlace> strings;
  std::vector<std::pair<const PublishedInstance*, unsigned>> instances;
  std::vector<const FruDevice*> frus;
};

bool isNamed(const Reply& reply, const LineList& lines) {
  bool isAny = false;
  forEachLine(lines, [&](const Origin& line) { isAny = isAny || isReplyTo(line, reply); });
  return isAny;
}

std::vector<Replies> repliesFor(const LineList& lines, const Evidence& evidence) {
  std::vector<Replies> found;
  Replies ofBmc;
  for (const Reply& reply : evidence.replies) {
    if (!isNamed(reply, lines)) continue;
    if (reply.source == Source::kIpmi && reply.data.empty()) {
      ofBmc.push_back(&reply);
    } else {
      found.push_back({&reply});
    }
  }
  if (!ofBmc.empty()) found.push_back(std::move(ofBmc));
  return found;
}

void addStrings(const Structure& structure, std::vector<StringPlace>& strings) {
  const Bytes& bytes = structure.bytes;
  if (bytes.size() <= kLengthOffset) return;
  const std::size_t end = std::min(bytes.size(), bytes[kLengthOffset] + kStringSetRead);
  std::size_t at = bytes[kLengthOffset];
  while (at < end) {
    const auto from = bytes.begin() + static_cast<std::ptrdiff_t>(at);
    const auto to = std::find(from, bytes.begin() + static_cast<std::ptrdiff_t>(end), 0);
    const std::string text(from, to);
    if (!text.empty()) strings.push_back({&structure, at, text.substr(0, kLongestString)});
    at += text.size() + 1;
  }
}

void addSmbios(const Origin& line, const Evidence& evidence, Candidates& found) {
  if (line.source != Source::kSmbios || !line.contained.empty()) return;
  auto& list = found.structures[line.structureType];
  if (!list.empty()) return;
  for (const Structure& structure : evidence.structures) {
    if (structure.type == line.structureType) list.push_back(&structure);
  }
}

void addInstances(std::string_view className, const Evidence& evidence, Candidates& found) {
  const auto list = evidence.instances.find(className);
  if (list == evidence.instances.end()) return;
  unsigned number = 0;
  for (const PublishedInstance& instance : list->second) {
    found.instances.emplace_back(&instance, ++number);
  }
}

Candidates candidatesFor(const LineList& lines, const Evidence& evidence) {
  Candidates found;
  found.replies = repliesFor(lines, evidence);
  std::set<int> stringTypes;
  std::set<std::string_view> classes;
  bool isFru = false;
  forEachLine(lines, [&](const Origin& line) {
    addSmbios(line, evidence, found);
    if (!line.contained.empty()) stringTypes.insert(line.structureType);
    if (line.source == Source::kInstance) classes.insert(line.className);
    isFru = isFru || partOf(line) == Part::kFru;
  });
  for (const Structure& structure : evidence.structures) {
    if (stringTypes.contains(structure.type)) addStrings(structure, found.strings);
  }
  for (const std::string_view name : classes) addInstances(name, evidence, found);
  if (!isFru) return found;
  for (const FruDevice& fru : evidence.frus) found.frus.push_back(&fru);
  return found;
}

// How much of an instance a view explains.
struct Score {
  unsigned given = 0;
  unsigned open = 0;
  bool isWhole = true;  // nothing of the part that is being chosen stays unexplained

  bool isBetterThan(const Score& other) const {
    return std::pair(given, open) > std::pair(other.given, other.open);
  }
};

Fit bestFit(const PropertyLines& lines, const Subject& subject, const View& view) {
  Fit best = Fit::kNothing;
  for (const Origin& line : lines.lines) {
    best = std::max(best, fitOf(line, lines.property->name, subject, view));
    if (best == Fit::kGives) break;
  }
  return best;
}

bool readsPart(const PropertyLines& lines, Part part) {
  return std::ranges::any_of(lines.lines, [&](const Origin& line) { return partOf(line) == part; });
}

Score scoreOf(const LineList& holding, const Subject& subject, const View& view, Part part) {
  Score score;
  for (const PropertyLines& lines : holding) {
    const Fit fit = bestFit(lines, subject, view);
    score.given += fit == Fit::kGives ? 1 : 0;
    score.open += fit == Fit::kOpen ? 1 : 0;
    if (fit < Fit::kOpen && readsPart(lines, part)) score.isWhole = false;
  }
  return score;
}

// Looks for what made one instance after the other.
class Matcher {
 public:
  Matcher(const ClassSchema& cimClass, const Evidence& evidence)
      : cimClass_(cimClass), lines_(linesOf(cimClass)), found_(candidatesFor(lines_, evidence)) {}

  Match matchOf(const PropertyList& instance) {
    const Subject subject{cimClass_, instance};
    holding_.clear();
    for (const PropertyLines& lines : lines_) {
      if (isSet(instance, lines.property->name)) holding_.push_back(holdingFor(lines, instance));
    }
    Match match{&instance, {}, {}};
    chooseParts(subject, match.view);
    match.confirmed = confirmedParts(subject, match.view);
    return match;
  }

 private:
  // Puts the candidate into the view that explains most, from the one behind the last on.
  template <class List, class Put>
  void choose(const List& list, std::size_t& next, Part part, const Subject& subject, View& view,
              Put put) {
    View best = view;
    Score most = scoreOf(holding_, subject, view, part);
    std::size_t chosen = list.size();
    for (std::size_t tried = 0; tried < std::min(list.size(), kMostCandidates); ++tried) {
      const std::size_t i = (next + tried) % list.size();
      View candidate = view;
      put(candidate, list[i]);
      const Score score = scoreOf(holding_, subject, candidate, part);
      if (!score.isBetterThan(most)) continue;
      most = score;
      best = std::move(candidate);
      chosen = i;
      if (score.isWhole) break;
    }
    if (chosen == list.size()) return;
    next = chosen + 1;
    view = std::move(best);
  }

  void chooseParts(const Subject& subject, View& view) {
    choose(found_.replies, nextReply_, Part::kReply, subject, view,
           [](View& v, const Replies& replies) { v.replies = replies; });
    for (const auto& [type, list] : found_.structures) {
      choose(list, nextStructure_[type], Part::kStructure, subject, view,
             [type = type](View& v, const Structure* s) { v.structures[type] = s; });
    }
    choose(found_.strings, nextString_, Part::kString, subject, view,
           [](View& v, const StringPlace& place) { v.string = place; });
    choose(found_.instances, nextInstance_, Part::kInstance, subject, view,
           [](View& v, const auto& one) { std::tie(v.instance, v.instanceNumber) = one; });
    choose(found_.frus, nextFru_, Part::kFru, subject, view,
           [](View& v, const FruDevice* fru) { v.fru = fru; });
  }

  std::vector<Part> confirmedParts(const Subject& subject, const View& view) const {
    std::vector<Part> parts;
    for (const PropertyLines& lines : holding_) {
      const std::string value = valueText(subject.instance, lines.property->name);
      if (value.find_first_not_of(' ') == std::string::npos) continue;
      for (const Origin& line : lines.lines) {
        const bool gives = fitOf(line, lines.property->name, subject, view) == Fit::kGives;
        if (gives) parts.push_back(partOf(line));
      }
    }
    return parts;
  }

  const ClassSchema& cimClass_;
  LineList lines_;
  LineList holding_;  // for the instance that is looked at
  Candidates found_;
  std::size_t nextReply_ = 0;
  std::map<int, std::size_t> nextStructure_;
  std::size_t nextString_ = 0;
  std::size_t nextInstance_ = 0;
  std::size_t nextFru_ = 0;
};

bool isConfirmed(const Match& match, Part part) {
  return std::ranges::find(match.confirmed, part) != match.confirmed.end();
}

}  // namespace

Part partOf(const Origin& origin) {
  if (origin.source == Source::kDerived) return partOfTemplate(origin.text);
  if (!origin.contained.empty()) return Part::kString;
  const auto* const found =
      std::ranges::find(kParts, origin.source, &std::pair<Source, Part>::first);
  return found == std::end(kParts) ? Part::kNone : found->second;
}

std::vector<PropertyLines> linesOf(const ClassSchema& cimClass) {
  LineList lists;
  for (const auto& property : cimClass.properties)
    lists.push_back({&property, originsOf(property)});
  return lists;
}

PropertyLines holdingFor(const PropertyLines& lines, const PropertyList& instance) {
  PropertyLines holding{lines.property, {}};
  std::ranges::copy_if(lines.lines, std::back_inserter(holding.lines),
                       [&](const Origin& line) { return holdsFor(line, instance); });
  return holding;
}

std::vector<Match> matchesOf(const ClassSchema& cimClass,
                             std::span<const PropertyList* const> instances,
                             const Evidence& evidence) {
  Matcher matcher(cimClass, evidence);
  std::vector<Match> matches;
  matches.reserve(instances.size());
  for (const PropertyList* const instance : instances) {
    matches.push_back(matcher.matchOf(*instance));
  }
  return matches;
}

Explained explainedBy(const PropertyLines& holding, const Match& match,
                      const ClassSchema& cimClass) {
  const Subject subject{cimClass, *match.instance};
  const bool hasValue = isSet(*match.instance, holding.property->name);
  Explained open;
  for (const Origin& line : holding.lines) {
    if (!hasValue && !placeOf(line, match.view)) continue;
    const Fit fit = fitOf(line, holding.property->name, subject, match.view);
    if (fit == Fit::kGives) return {&line, fit};
    const bool isOpen = hasValue && fit == Fit::kOpen && isConfirmed(match, partOf(line));
    if (isOpen && open.line == nullptr) open = {&line, fit};
  }
  return open;
}

}  // namespace velhost
