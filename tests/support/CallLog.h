#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "shared/ResultStatus.h"

namespace orvane::support {

/// What all fakes of one platform share: every call that reached one of them, in order, and the
/// script of what each operation answers and does.
///
/// An entry is the operation's name, such as "quote.subscribeQuote", and after a blank its
/// arguments. Any thread may use it; a hook runs on the thread of the call, with no lock held, so
/// it may call back into anything.
class CallLog {
 public:
  using Hook = std::function<void()>;

  /// Notes a call, runs the operation's hook and returns its scripted status (code 0 if none).
  ResultStatus record(const std::string& operation, const std::string& arguments = {});

  /// What `operation` answers from now on.
  void answer(const std::string& operation, const ResultStatus& status);

  /// What runs inside every call of `operation` from now on; an empty hook takes it away.
  void onCall(const std::string& operation, Hook hook);

  std::vector<std::string> entries() const;

  /// The entries whose operation begins with `prefix`, such as "quote.".
  std::vector<std::string> entries(const std::string& prefix) const;

  int count(const std::string& prefix) const;
  void clear();

 private:
  mutable std::mutex mutex_;
  std::vector<std::string> entries_;
  std::map<std::string, ResultStatus> answers_;
  std::map<std::string, Hook> hooks_;
};

}  // namespace orvane::support
