// SPDX-License-Identifier: Apache-2.0
#include "host/report/html.h"

#include <utility>

#include "host/text/utf8.h"

namespace velhost {
namespace {

constexpr std::pair<char, std::string_view> kEntities[] = {
    {'&', "&amp;"}, {'<', "&lt;"}, {'>', "&gt;"}, {'"', "&quot;"}, {'\'', "&#39;"},
};

void addCharacter(std::string& markup, char character) {
  for (const auto& [special, entity] : kEntities) {
    if (character == special) {
      markup += entity;
      return;
    }
  }
  markup += character;
}

// What of it can be shown, as what is cut away need not be looked at: a character has no more than four
// bytes, and one that is cut in two is cut away then.
std::string endsOf(std::string_view text, std::size_t most) {
  const std::size_t size = 4 * most;
  if (text.size() <= 2 * size) return std::string(text);
  return std::string(text.substr(0, size)) + std::string(text.substr(text.size() - size));
}

}  // namespace

Html operator""_html(const char* markup, std::size_t size) {
  return Html(std::string(markup, size));
}

Html asText(std::string_view text, std::size_t most) {
  std::string markup;
  for (const char character : shortened(visible(endsOf(text, most)), most)) {
    addCharacter(markup, character);
  }
  return Html(std::move(markup));
}

Html Tag::wrapped(const std::string& more, const Html& content) const {
  const std::string name(text_.substr(0, text_.find(' ')));
  return Html("<" + std::string(text_) + more + ">" + content.markup() + "</" + name + ">");
}

Html Tag::around(const Html& content) const { return wrapped("", content); }

Html Tag::around(const Anchor& anchor, const Html& content) const {
  return wrapped(" id=\"" + anchor.name() + "\"", content);
}

Html linkTo(const Anchor& anchor, const Html& content) {
  return Html("<a href=\"#" + anchor.name() + "\">" + content.markup() + "</a>");
}

}  // namespace velhost
