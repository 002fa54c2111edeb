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
    {R"(span class="badge is-present")", R"(use href="#sign-present")"},
    {R"(span class="badge is-partial")", R"(use href="#sign-partial")"},
    {R"(span class="badge is-empty")", R"(use href="#sign-empty")"},
    {R"(span class="badge is-untold")", R"(use href="#sign-untold")"},
    {R"(span class="badge is-absent")", R"(use href="#sign-absent")"},
    {R"(span class="badge is-elsewhere")", R"(use href="#sign-elsewhere")"},
    {R"(span class="badge is-unused")", R"(use href="#sign-unused")"},
    {R"(span class="badge is-unanswered")", R"(use href="#sign-unanswered")"},
    {R"(span class="badge is-unreadable")", R"(use href="#sign-unreadable")"},
    {R"(span class="badge is-forbidden")", R"(use href="#sign-forbidden")"},
    {R"(span class="badge is-failed")", R"(use href="#sign-failed")"},
};

Html badgeWith(Filling filling, const Html& before) {
  const BadgeTags& tags = kBadges[static_cast<std::size_t>(filling)];
  const Html sign = element(R"(svg class="sign" aria-hidden="true")", element(tags.sign, {}));
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
