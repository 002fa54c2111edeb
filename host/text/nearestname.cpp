// SPDX-License-Identifier: Apache-2.0
#include "host/text/nearestname.h"

#include <algorithm>
#include <numeric>
#include <utility>
#include <vector>

namespace velhost {
namespace {

constexpr std::size_t kLongestWord = 64;  // a longer one is no slip of a name
constexpr std::size_t kShortestEnd = 3;   // of a name that a word may be

char lowerCase(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool isSameLetter(char a, char b) { return lowerCase(a) == lowerCase(b); }

using Distances = std::vector<std::size_t>;

// One row further in the table of distances between the beginnings of a word and of a name; two
// neighbouring letters in the wrong order count as one slip.
Distances nextRow(std::string_view word, std::string_view name, std::size_t i,
                  const Distances& before, const Distances& row) {
  Distances next(name.size() + 1, i + 1);
  for (std::size_t j = 0; j < name.size(); ++j) {
    const bool isSame = isSameLetter(word[i], name[j]);
    next[j + 1] = std::min({row[j] + (isSame ? 0 : 1), row[j + 1] + 1, next[j] + 1});
    const bool isSwapped =
        i > 0 && j > 0 && isSameLetter(word[i], name[j - 1]) && isSameLetter(word[i - 1], name[j]);
    if (isSwapped) next[j + 1] = std::min(next[j + 1], before[j - 1] + 1);
  }
  return next;
}

std::size_t distance(std::string_view word, std::string_view name) {
  Distances before;
  Distances row(name.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < word.size(); ++i) {
    Distances next = nextRow(word, name, i, before, row);
    before = std::exchange(row, std::move(next));
  }
  return row.back();
}

bool isEndOf(std::string_view word, std::string_view name) {
  return word.size() >= kShortestEnd && word.size() <= name.size() &&
         std::equal(word.rbegin(), word.rend(), name.rbegin(), isSameLetter);
}

std::size_t slips(std::string_view word, std::string_view name) {
  return isEndOf(word, name) ? 1 : distance(word, name);
}

}  // namespace

std::string_view nearestName(std::string_view word, std::span<const std::string_view> names) {
  if (word.size() > kLongestWord) return {};
  std::string_view nearest;
  std::size_t fewest = std::max<std::size_t>((word.size() + 1) / 3, 1) + 1;
  for (const std::string_view name : names) {
    const std::size_t count = slips(word, name);
    if (count >= fewest) continue;
    fewest = count;
    nearest = name;
  }
  return nearest;
}

std::string suggestion(std::string_view word, std::span<const std::string_view> names) {
  const std::string_view nearest = nearestName(word, names);
  return nearest.empty() ? "" : "; did you mean " + std::string(nearest) + "?";
}

}  // namespace velhost
