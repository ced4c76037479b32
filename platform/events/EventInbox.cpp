#include "platform/events/EventInbox.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace orvane::detail {

std::vector<EventNotice> EventInbox::takeAll(bool lockstep) {
  std::vector<Waiting> all = std::exchange(waiting_, {});
  if (lockstep)
    std::stable_sort(all.begin(), all.end(), [](const Waiting& a, const Waiting& b) {
      return std::tie(a.origin.root, a.origin.depth) < std::tie(b.origin.root, b.origin.depth);
    });
  std::vector<std::vector<EventNotice>> trees;
  const Waiting* before = nullptr;
  for (Waiting& each : all) {
    if (before == nullptr || (lockstep && each.origin.root != before->origin.root))
      trees.emplace_back();
    trees.back().push_back(std::move(each.notice));
    before = &each;
  }
  // The roots are numbered as the runners were called, and that order is not the same each time.
  const bool hostFirst = !all.empty() && all.front().origin.root == 0;
  if (lockstep) std::sort(trees.begin() + (hostFirst ? 1 : 0), trees.end());
  std::vector<EventNotice> ordered;
  for (std::vector<EventNotice>& tree : trees)
    std::move(tree.begin(), tree.end(), std::back_inserter(ordered));
  return ordered;
}

}  // namespace orvane::detail
