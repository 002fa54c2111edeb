// SPDX-License-Identifier: Apache-2.0
#include "host/report/badge.h"

#include "host/report/pagefiles.h"

namespace velhost {
namespace {

struct BadgeTags {
  Tag badge;
  Tag sign;  // refers to one of signs.svg
};

// In the order of Filling.
constexpr BadgeTags kBadges[] = {
    {"span class=\"badge is-present\"", "use href=\"#sign-present\""},
    {"span class=\"badge is-partial\"", "use href=\"#sign-partial\""},
    {"span class=\"badge is-empty\"", "use href=\"#sign-empty\""},
    {"span class=\"badge is-untold\"", "use href=\"#sign-untold\""},
    {"span class=\"badge is-absent\"", "use href=\"#sign-absent\""},
    {"span class=\"badge is-elsewhere\"", "use href=\"#sign-elsewhere\""},
    {"span class=\"badge is-unused\"", "use href=\"#sign-unused\""},
    {"span class=\"badge is-unanswered\"", "use href=\"#sign-unanswered\""},
    {"span class=\"badge is-unreadable\"", "use href=\"#sign-unreadable\""},
    {"span class=\"badge is-forbidden\"", "use href=\"#sign-forbidden\""},
    {"span class=\"badge is-failed\"", "use href=\"#sign-failed\""},
};

Html badgeWith(Filling filling, const Html& before) {
  const BadgeTags& tags = kBadges[static_cast<std::size_t>(filling)];
  const Html sign = element("svg class=\"sign\" aria-hidden=\"true\"", element(tags.sign, {}));
  return element(tags.badge, sign + before + asText(fillingName(filling)));
}

}  // namespace

Html signDrawings() { return pageSigns(); }

Html badge(Filling filling) { return badgeWith(filling, {}); }

Html tallyText(const Tally& tally) {
  Html text;
  for (const auto& [filling, count] : tally) {
    const bool isQuiet = filling == Filling::kFilled || filling == Filling::kUnused;
    if (isQuiet || count == 0) continue;
    text += badgeWith(filling, asText(std::to_string(count)) + " "_html) + " "_html;
  }
  return text;
}

}  // namespace velhost
