#pragma once

#include <exception>
#include <utility>

namespace orvane::detail {

/// Steps of which none keeps the next from being taken: what a release is made of, since each step
/// ends a subscription that the others know nothing of.
class Attempts {
 public:
  /// Takes a step. What it throws is kept if it is the first.
  template <typename Step>
  void take(Step&& step) {
    try {
      std::forward<Step>(step)();
    } catch (...) {
      if (!first_) first_ = std::current_exception();
    }
  }

  /// After the last step: throws what the first failing one threw.
  void finish() const {
    if (first_) std::rethrow_exception(first_);
  }

 private:
  std::exception_ptr first_;
};

}  // namespace orvane::detail
