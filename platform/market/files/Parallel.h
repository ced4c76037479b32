#pragma once

#include <cstddef>
#include <functional>

namespace orvane::detail {

/// How many threads read files where nothing else is said: one a core, within reason.
int usualReadThreads();

/// Calls `work` with each number below `count`, on this thread and up to `threads - 1` others; the
/// numbers are begun in order. Returns when all are done. Throws what the lowest number threw;
/// numbers above it may then be left out.
void forEachOf(std::size_t count, int threads, const std::function<void(std::size_t)>& work);

}  // namespace orvane::detail
