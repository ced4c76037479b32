#pragma once

#include <algorithm>
#include <cstddef>
#include <functional>
#include <vector>

namespace orvane::support {

/// The steps of a failing schedule without those that it fails without: takes away ever smaller
/// pieces while the rest still fails, and tries `fails` at most `tries` times.
template <typename Step>
std::vector<Step> shrunken(std::vector<Step> steps,
                           const std::function<bool(const std::vector<Step>&)>& fails,
                           int tries = 2000) {
  for (std::size_t piece = std::max<std::size_t>(steps.size() / 2, 1); piece > 0;) {
    bool shorter = false;
    for (std::size_t at = 0; at < steps.size() && tries > 0;) {
      std::vector<Step> rest(steps.begin(), steps.begin() + static_cast<std::ptrdiff_t>(at));
      const std::size_t end = std::min(at + piece, steps.size());
      rest.insert(rest.end(), steps.begin() + static_cast<std::ptrdiff_t>(end), steps.end());
      --tries;
      if (fails(rest)) {
        steps = std::move(rest);
        shorter = true;
      } else {
        at += piece;
      }
    }
    if (tries == 0 || (piece == 1 && !shorter)) break;
    if (piece > 1) piece /= 2;
  }
  return steps;
}

}  // namespace orvane::support
