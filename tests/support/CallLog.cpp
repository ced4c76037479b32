#include "tests/support/CallLog.h"

#include <algorithm>
#include <iterator>

namespace orvane::support {

ResultStatus CallLog::record(const std::string& operation, const std::string& arguments) {
  Hook hook;
  ResultStatus status;
  {
    const std::lock_guard lock(mutex_);
    entries_.push_back(arguments.empty() ? operation : operation + " " + arguments);
    if (const auto it = hooks_.find(operation); it != hooks_.end()) hook = it->second;
    if (const auto it = answers_.find(operation); it != answers_.end()) status = it->second;
  }
  if (hook) hook();
  return status;
}

void CallLog::answer(const std::string& operation, const ResultStatus& status) {
  const std::lock_guard lock(mutex_);
  answers_[operation] = status;
}

void CallLog::onCall(const std::string& operation, Hook hook) {
  const std::lock_guard lock(mutex_);
  hooks_[operation] = std::move(hook);
}

std::vector<std::string> CallLog::entries() const {
  const std::lock_guard lock(mutex_);
  return entries_;
}

std::vector<std::string> CallLog::entries(const std::string& prefix) const {
  const std::lock_guard lock(mutex_);
  std::vector<std::string> found;
  std::copy_if(entries_.begin(), entries_.end(), std::back_inserter(found),
               [&](const std::string& entry) { return entry.starts_with(prefix); });
  return found;
}

int CallLog::count(const std::string& prefix) const {
  return static_cast<int>(entries(prefix).size());
}

void CallLog::clear() {
  const std::lock_guard lock(mutex_);
  entries_.clear();
}

}  // namespace orvane::support
