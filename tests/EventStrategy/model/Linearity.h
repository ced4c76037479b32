#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

namespace orvane::support {

/// One operation as the thread saw it that did it: `begin` and `end` are moments of all threads'
/// common count.
struct Witnessed {
  int kind = 0;
  int key = 0;
  std::string result;
  int begin = 0, end = 0;
};

/// What each thread did, in its order.
using History = std::vector<std::vector<Witnessed>>;

/// Whether what several threads did at once can be told as one thing after the other: in an order
/// in which each operation gives what its thread saw, and none comes before one that was over when
/// it began. `apply` gives what an operation does to a model, as a text.
template <typename Model, typename Apply>
bool isLinear(const History& history, const Model& model, const Apply& apply,
              std::vector<std::size_t> done = {}) {
  done.resize(history.size());
  int firstEnd = 0;
  bool isAnyLeft = false;
  for (std::size_t i = 0; i < history.size(); ++i) {
    if (done[i] == history[i].size()) continue;
    const int end = history[i][done[i]].end;
    firstEnd = isAnyLeft ? std::min(firstEnd, end) : end;
    isAnyLeft = true;
  }
  if (!isAnyLeft) return true;
  for (std::size_t i = 0; i < history.size(); ++i) {
    if (done[i] == history[i].size()) continue;
    const Witnessed& next = history[i][done[i]];
    if (next.begin > firstEnd) continue;
    Model after = model;
    if (apply(after, next) != next.result) continue;
    std::vector<std::size_t> further = done;
    ++further[i];
    if (isLinear(history, after, apply, further)) return true;
  }
  return false;
}

inline std::string textOf(const History& history) {
  std::string text;
  for (std::size_t i = 0; i < history.size(); ++i)
    for (const Witnessed& each : history[i])
      text += "thread " + std::to_string(i) + " [" + std::to_string(each.begin) + ", " +
              std::to_string(each.end) + "] kind " + std::to_string(each.kind) + " of " +
              std::to_string(each.key) + ": " + each.result + "\n";
  return text;
}

}  // namespace orvane::support
