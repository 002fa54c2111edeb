// SPDX-License-Identifier: Apache-2.0
//
// Pieces of an HTML page. Texts from elsewhere get into one through asText alone: markup is made of
// literals of this program, and of numbers.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

namespace velhost {

class Anchor;

class Html {
 public:
  Html() = default;

  Html& operator+=(const Html& other) {
    markup_ += other.markup_;
    return *this;
  }
  friend Html operator+(Html first, const Html& second) { return first += second; }

  const std::string& markup() const { return markup_; }
  bool isEmpty() const { return markup_.empty(); }

 private:
  explicit Html(std::string markup) : markup_(std::move(markup)) {}

  friend Html operator""_html(const char* markup, std::size_t size);
  friend Html asText(std::string_view text, std::size_t most);
  friend Html linkTo(const Anchor& anchor, const Html& content);
  friend class Tag;

  std::string markup_;
};

Html operator""_html(const char* markup, std::size_t size);

inline constexpr std::size_t kLongestText = 2000;  // characters; of a longer one its ends are shown

// The text as one line to be seen: what a terminal obeys or does not show as escapes, no character
// of it markup, also inside quotes.
Html asText(std::string_view text, std::size_t most = kLongestText);

// What a part of the page is called, to be linked to: "m3", "m3-n12".
class Anchor {
 public:
  explicit Anchor(std::size_t machine) : name_("m" + std::to_string(machine)) {}

  Anchor part(char kind, std::size_t number) const {
    Anchor anchor(*this);
    anchor.name_ += std::string("-") + kind + std::to_string(number);
    return anchor;
  }
  const std::string& name() const { return name_; }

 private:
  std::string name_;
};

// A tag with its attributes, as a literal: "td class=\"level\"".
class Tag {
 public:
  template <std::size_t kSize>
  consteval Tag(const char (&literal)[kSize])  // NOLINT(google-explicit-constructor): reads well
      : text_(literal, kSize - 1) {}

  Html around(const Html& content) const;
  Html around(const Anchor& anchor, const Html& content) const;

 private:
  Html wrapped(const std::string& more, const Html& content) const;

  std::string_view text_;
};

inline Html element(Tag tag, const Html& content) { return tag.around(content); }
inline Html element(Tag tag, const Anchor& anchor, const Html& content) {
  return tag.around(anchor, content);
}

// A link to that part of the page.
Html linkTo(const Anchor& anchor, const Html& content);

}  // namespace velhost
