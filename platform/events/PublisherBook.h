#pragma once

#include <memory>
#include <mutex>
#include <set>

#include "services/ov.publisher/IPublisher.h"

namespace orvane::detail {

/// The publishers that a platform made and that still live. Some callers delete theirs, and one
/// kind never does: what is left when the platform goes is freed with it. A platform outlives
/// every runner, so nobody uses a publisher by then. Any thread may call it.
class PublisherBook {
 public:
  PublisherBook() = default;
  PublisherBook(const PublisherBook&) = delete;
  PublisherBook& operator=(const PublisherBook&) = delete;

  void add(IPublisher* publisher) {
    const std::lock_guard lock(mutex_);
    living_.insert(publisher);
  }

  /// Called by a publisher that is being destroyed.
  void remove(IPublisher* publisher) {
    const std::lock_guard lock(mutex_);
    living_.erase(publisher);
  }

  std::size_t size() const {
    const std::lock_guard lock(mutex_);
    return living_.size();
  }

  /// Frees what is left. Outside the lock, since each one removes itself.
  void freeAll() {
    std::set<IPublisher*> left;
    {
      const std::lock_guard lock(mutex_);
      left.swap(living_);
    }
    for (IPublisher* publisher : left) delete publisher;
  }

 private:
  mutable std::mutex mutex_;
  std::set<IPublisher*> living_;
};

}  // namespace orvane::detail
