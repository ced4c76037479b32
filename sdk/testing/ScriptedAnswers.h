#pragma once

#include <deque>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "shared/ResultStatus.h"

namespace orvane {

/// Statuses that a test puts into a context's mouth, by the name of the operation, such as
/// "sendOrder". What is not scripted is answered as the context would.
class ScriptedAnswers {
 public:
  /// The next call of the operation is answered so; several queue up.
  void next(const std::string& operation, ResultStatus status) {
    next_[operation].push_back(std::move(status));
  }
  /// Every call that has no answer of its own is answered so, until `clear`.
  void always(const std::string& operation, ResultStatus status) {
    always_[operation] = std::move(status);
  }
  /// Forgets all that was said.
  void clear() {
    next_.clear();
    always_.clear();
  }

  /// Takes the answer of a call. False if there is none, and the context is to answer itself.
  bool take(const std::string& operation, ResultStatus& status) {
    if (const auto queue = next_.find(operation); queue != next_.end() && !queue->second.empty()) {
      status = std::move(queue->second.front());
      queue->second.pop_front();
      return true;
    }
    const auto every = always_.find(operation);
    if (every == always_.end()) return false;
    status = every->second;
    return true;
  }

  /// The operations that still have answers queued: a test that ends with some scripted what never
  /// happened, or misspelt it.
  std::vector<std::string> unused() const {
    std::vector<std::string> names;
    for (const auto& [operation, queue] : next_)
      if (!queue.empty()) names.push_back(operation);
    return names;
  }

 private:
  std::map<std::string, std::deque<ResultStatus>> next_;
  std::map<std::string, ResultStatus> always_;
};

}  // namespace orvane
