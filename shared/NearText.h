#pragma once

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <numeric>
#include <ranges>
#include <vector>

namespace orvane {

/// How many letters must be put in, taken out, changed, or change places with their neighbour, to
/// make one text of another, none of them twice: optimal string alignment, after Damerau. Of
/// `std::string` or `QString`; a letter is one unit of either, so that one beyond ASCII may count
/// more than once. Safe on any thread.
template <typename Text>
std::size_t lettersApart(const Text& a, const Text& b) {
  const auto width = static_cast<std::size_t>(b.size()) + 1;
  // The distances from what begins `a` to all that begins `b`: of two letters less, one less, now.
  std::vector<std::size_t> before(width), last(width), row(width);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (auto i = a.begin(); i != a.end(); ++i) {
    before.swap(last);
    last.swap(row);
    row.front() = last.front() + 1;
    std::size_t at = 1;
    for (auto j = b.begin(); j != b.end(); ++j, ++at) {
      row[at] = std::min({last[at] + 1, row[at - 1] + 1, last[at - 1] + (*i == *j ? 0 : 1)});
      if (i != a.begin() && j != b.begin() && *i == *std::prev(j) && *std::prev(i) == *j)
        row[at] = std::min(row[at], before[at - 2] + 1);
    }
  }
  return row.back();
}

/// Of the texts that are known, the one that somebody probably meant who wrote another: the nearest
/// one, the first of several, if at most two letters and at most half of all that were written tell
/// them apart. Null where none is that near. It points into `known`. Safe on any thread.
template <std::ranges::forward_range Texts>
auto textMeant(const Texts& known, const std::ranges::range_value_t<Texts>& written)
    -> const std::ranges::range_value_t<Texts>* {
  const auto distance = [&](const auto& text) { return lettersApart(text, written); };
  const auto nearest = std::ranges::min_element(known, {}, distance);
  const auto most = std::min<std::size_t>(2, static_cast<std::size_t>(written.size()) / 2);
  if (nearest == std::ranges::end(known) || distance(*nearest) > most) return nullptr;
  return &*nearest;
}

}  // namespace orvane
