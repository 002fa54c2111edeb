// SPDX-License-Identifier: Apache-2.0
#include "host/report/html.h"

#include <gtest/gtest.h>

namespace velhost {
namespace {

TEST(Html, ATextIsNoMarkupWhateverItHolds) {
  const struct {
    const char* what;
    std::string text;
    const char* markup;
  } cases[] = {
      {"nothing", "", ""},
      {"plain", "DIMM 1", "DIMM 1"},
      {"tag", "<script>alert(1)</script>", "&lt;script&gt;alert(1)&lt;/script&gt;"},
      {"end of a style sheet", "</style>", "&lt;/style&gt;"},
      {"end of an attribute", "\" onclick='x'", "&quot; onclick=&#39;x&#39;"},
      {"entity", "&lt;", "&amp;lt;"},
      {"comment", "<!-- -->", "&lt;!-- --&gt;"},
      {"controls", std::string("a\0b\x1b\n", 5), "a\\x00b\\x1b\\n"},
      {"direction override", "a\u202Eb", "a\\u202Eb"},
      {"zero width", "a\u200Bb", "a\\u200Bb"},
      {"no UTF-8", "a\xFF<", "a\\xff&lt;"},
      {"umlaut", "R\u00FCckwand", "R\u00FCckwand"},
      {"wide characters", "\U0001F600", "\U0001F600"},
  };
  for (const auto& c : cases) EXPECT_EQ(c.markup, asText(c.text).markup()) << c.what;
}

TEST(Html, OfALongTextTheEndsAreShown) {
  EXPECT_EQ("&lt;&lt;&lt;&lt;&lt;", asText("<<<<<", 5).markup());
  EXPECT_EQ("&lt;...&gt;", asText("<" + std::string(100, 'x') + ">", 5).markup());
  const std::string ten = std::string(10'000'000, '<');
  EXPECT_EQ(2000U * 4 - 3 * 3, asText(ten).markup().size()) << "three of them are points";
}

TEST(Html, ElementsStandInEachOther) {
  const struct {
    const char* what;
    Html html;
    const char* markup;
  } cases[] = {
      {"empty", element("p", {}), "<p></p>"},
      {"attributes", element("td class=\"x\" colspan=\"2\"", asText("<")),
       "<td class=\"x\" colspan=\"2\">&lt;</td>"},
      {"in each other", element("tr", element("td", asText("a")) + element("td", asText("b"))),
       "<tr><td>a</td><td>b</td></tr>"},
      {"anchor", element("h2", Anchor(3), asText("a")), "<h2 id=\"m3\">a</h2>"},
      {"anchor of a part", element("h3", Anchor(3).part('b', 12), {}), "<h3 id=\"m3-b12\"></h3>"},
      {"anchor beside attributes", element("h3 class=\"x\"", Anchor(1), {}),
       "<h3 class=\"x\" id=\"m1\"></h3>"},
      {"link", linkTo(Anchor(3).part('b', 1), asText("a&b")), "<a href=\"#m3-b1\">a&amp;b</a>"},
  };
  for (const auto& c : cases) EXPECT_EQ(c.markup, c.html.markup()) << c.what;
}

}  // namespace
}  // namespace velhost
