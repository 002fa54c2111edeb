// SPDX-License-Identifier: Apache-2.0
#include "host/explanation/fit.h"

#include <algorithm>
#include <optional>

#include "host/explanation/rules.h"

namespace velhost {
namespace {

using NKRXVEL20::host::PropertyList;

constexpr std::string_view kInWords = " in words";

// A template is held against the text piece by piece, as some placeholders stand for any number.
struct Filling {
  const Subject& subject;
  const View& view;
  const std::string* value;  // for {}; null: it is not worked out
  std::string_view rest;     // of the text

  bool take(std::string_view piece) {
    if (!rest.starts_with(piece)) return false;
    rest.remove_prefix(piece.size());
    return true;
  }
};

// From 1; the first digit is no zero.
bool takeNumber(Filling& filling) {
  const std::size_t end = filling.rest.find_first_not_of("0123456789");
  const std::size_t size = std::min(end, filling.rest.size());
  if (size == 0 || filling.rest.front() == '0') return false;
  filling.rest.remove_prefix(size);
  return true;
}

const Reply* dotReply(const View& view) {
  const auto found = std::ranges::find(view.replies, Source::kDotCommand, &Reply::source);
  return found == view.replies.end() ? nullptr : *found;
}

// The number of the SP that was asked, and of the node; any where nobody was.
bool takeNode(Filling& filling) {
  const Reply* const reply = dotReply(filling.view);
  return reply == nullptr ? takeNumber(filling) : filling.take(std::to_string(reply->sp + 1));
}

// "Node 2: ", or nothing on a machine with one SP.
bool takeLabel(Filling& filling) {
  const Filling before = filling;
  if (filling.take("Node ") && takeNode(filling) && filling.take(": ")) return true;
  filling.rest = before.rest;
  return true;
}

bool takeCommandNumber(Filling& filling) {
  const Reply* const reply = dotReply(filling.view);
  return reply != nullptr && !reply->command.empty() &&
         filling.take(std::to_string(reply->command.back()));
}

bool takeStructureNumber(Filling& filling) {
  const auto& structures = filling.view.structures;
  return !structures.empty() && filling.take(std::to_string(structures.rbegin()->second->number));
}

struct Placeholder {
  std::string_view name;
  bool (*take)(Filling&);
};

constexpr Placeholder kPlaceholders[] = {
    {"sp", takeNode},
    {"node", takeNode},
    {"label", takeLabel},
    {"n", takeCommandNumber},
    {"structure", takeStructureNumber},
};

bool takeProperty(std::string_view name, Filling& filling) {
  const Subject& subject = filling.subject;
  if (!name.ends_with(kInWords)) return filling.take(valueText(subject.instance, name));
  name.remove_suffix(kInWords.size());
  return filling.take(wordFor(subject.cimClass, name, valueText(subject.instance, name)));
}

bool takePlaceholder(std::string_view name, Filling& filling) {
  const auto* const known = std::ranges::find(kPlaceholders, name, &Placeholder::name);
  return known == std::end(kPlaceholders) ? takeProperty(name, filling) : known->take(filling);
}

// A template's first piece: a text, or a placeholder in braces.
struct Piece {
  std::string_view text;
  bool isPlaceholder = false;
};

Piece takePiece(std::string_view& shape) {
  const std::size_t open = shape.find('{');
  const std::size_t close = shape.find('}');
  const bool isPlaceholder = open == 0 && close != std::string_view::npos;
  const std::size_t next = open == 0 ? shape.find('{', 1) : open;
  const std::size_t size = isPlaceholder ? close + 1 : std::min(next, shape.size());
  const std::string_view piece = shape.substr(0, size);
  shape.remove_prefix(size);
  return isPlaceholder ? Piece{piece.substr(1, size - 2), true} : Piece{piece, false};
}

Fit fitOfShape(std::string_view shape, Filling filling) {
  while (!shape.empty()) {
    const Piece piece = takePiece(shape);
    if (piece.isPlaceholder && piece.text.empty()) {
      if (filling.value == nullptr) return Fit::kOpen;
      if (!filling.take(*filling.value)) return Fit::kOther;
    } else if (piece.isPlaceholder ? !takePlaceholder(piece.text, filling)
                                   : !filling.take(piece.text)) {
      return Fit::kOther;
    }
  }
  return filling.rest.empty() ? Fit::kGives : Fit::kOther;
}

// A boolean's text is in lower case.
std::string comparable(std::string text, std::string_view property, const Subject& subject) {
  const auto* const schema = NKRXVEL20::host::findProperty(subject.cimClass, property);
  if (schema == nullptr || schema->type != NKRXVEL20::ECIMType::kBoolean) return text;
  for (char& c : text) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  return text;
}

// Lines that read nothing outside.
Fit fitOfText(const Origin& origin, const std::string& value, std::string_view property,
              const Subject& subject, const View& view) {
  if (origin.source == Source::kDerived) {
    return fitOfShape(origin.text, {subject, view, nullptr, value});
  }
  if (origin.source != Source::kConstant) return Fit::kNothing;
  const std::string text = comparable(std::string(origin.text), property, subject);
  return text == value ? Fit::kGives : Fit::kOther;
}

}  // namespace

bool isSet(const PropertyList& instance, std::string_view property) {
  return std::ranges::find(instance, property, &PropertyList::value_type::first) != instance.end();
}

std::string wordFor(const NKRXVEL20::host::ClassSchema& cimClass, std::string_view property,
                    std::string_view value) {
  const auto* const schema = NKRXVEL20::host::findProperty(cimClass, property);
  if (schema == nullptr) return "";
  const auto found = std::ranges::find(schema->valueMap, value);
  if (found == schema->valueMap.end()) return "";
  return std::string(schema->values[static_cast<std::size_t>(found - schema->valueMap.begin())]);
}

std::vector<std::string_view> placeholdersOf(std::string_view shape) {
  std::vector<std::string_view> names;
  while (!shape.empty()) {
    const Piece piece = takePiece(shape);
    if (piece.isPlaceholder) names.push_back(piece.text);
  }
  return names;
}

Fit fitOf(const Origin& origin, std::string_view property, const Subject& subject,
          const View& view) {
  const std::string value = valueText(subject.instance, property);
  const auto place = placeOf(origin, view);
  if (!place) return fitOfText(origin, value, property, subject, view);
  if (place->isOpen) return Fit::kOpen;
  std::optional<std::string> given = appliedRule(origin.rule, place->bytes);
  if (given) given = comparable(*std::move(given), property, subject);
  if (!origin.shape.empty() && isSet(subject.instance, property)) {
    return fitOfShape(origin.shape, {subject, view, given ? &*given : nullptr, value});
  }
  if (!given) return Fit::kOpen;
  return *given == value ? Fit::kGives : Fit::kOther;
}

}  // namespace velhost
