#pragma once

#include <array>
#include <cstddef>
#include <memory_resource>
#include <set>
#include <string>

#include "shared/Types.h"

namespace orvane {

/// What a trade source has seen. It only grows, until all of it is forgotten at once: so its memory
/// is taken in large pieces, and given back without a walk over what stands in it. Guarded by its
/// owner.
class SeenTrades {
 public:
  SeenTrades() { begin(); }
  SeenTrades(const SeenTrades&) = delete;
  SeenTrades& operator=(const SeenTrades&) = delete;

  /// Orders that were seen in a final status.
  std::pmr::set<int64>& finishedOrderIds() { return *finishedOrderIds_; }
  const std::pmr::set<int64>& finishedOrderIds() const { return *finishedOrderIds_; }
  /// `fillKey` of every fill that was seen.
  std::pmr::set<std::pmr::string>& deliveredFillKeys() { return *deliveredFillKeys_; }
  const std::pmr::set<std::pmr::string>& deliveredFillKeys() const { return *deliveredFillKeys_; }

  void clear() noexcept {
    memory_.release();
    begin();
  }

 private:
  /// Makes empty sets. Nobody destroys them: all that they have is that memory.
  void begin() {
    std::pmr::polymorphic_allocator<> memory(&memory_);
    finishedOrderIds_ = memory.new_object<std::pmr::set<int64>>();
    deliveredFillKeys_ = memory.new_object<std::pmr::set<std::pmr::string>>();
  }

  /// The sets themselves, so that to forget cannot fail.
  alignas(std::max_align_t) std::array<std::byte, 256> first_{};
  static_assert(sizeof(std::pmr::set<int64>) + sizeof(std::pmr::set<std::pmr::string>) <=
                sizeof(first_) - alignof(std::max_align_t));
  std::pmr::monotonic_buffer_resource memory_{first_.data(), first_.size()};
  std::pmr::set<int64>* finishedOrderIds_ = nullptr;
  std::pmr::set<std::pmr::string>* deliveredFillKeys_ = nullptr;
};

}  // namespace orvane
