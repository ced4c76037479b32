#pragma once

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "EventStrategy/AbstractEventStrategy.h"
#include "EventStrategy/IEvent.h"
#include "EventStrategy/IQuoteSrc.h"
#include "shared/CodeTables.h"

namespace orvane {

/// Bars as a plain return value: a call blocks until they are there. For what a strategy wants to
/// look up now and then; for a stream of bars, subscribe.
///
/// It may be used inside a call-back. In a playback it sees what a subscription made at that moment
/// would be given as history, and nothing of what is to come; the market stands still meanwhile, so
/// the answer is the same on every run. A member of the strategy, for one thread at a time.
class BarFetcher {
 public:
  /// How long an answer may take, of real time. One that is later counts as none, and what depends
  /// on that is not repeatable: so it is long.
  static constexpr int64 kTimeoutMs = 60'000;

  /// Code 0 with the bars, oldest first, of which there may be none. Code 17 for a bad frequency; 4
  /// if the platform refuses the request or does not answer in time.
  struct Answer {
    ResultStatus status;       ///< Whether there was an answer.
    std::vector<IKLine> bars;  ///< Oldest first.
  };

  /// The newest `count` complete bars of a code.
  Answer newest(const ICodeID& code, const std::string& frequency, int count,
                int64 timeoutMs = kTimeoutMs) {
    OVDataRange range;
    range.mode = kNewest;
    range.beginTime = count;
    return fetch(code, frequency, range, timeoutMs);
  }

  /// The complete bars that begin at or after `beginTime` and before `endTime`, UTC milliseconds.
  Answer between(const ICodeID& code, const std::string& frequency, int64 beginTime, int64 endTime,
                 int64 timeoutMs = kTimeoutMs) {
    OVDataRange range;
    range.beginTime = beginTime;
    range.endTime = endTime;
    return fetch(code, frequency, range, timeoutMs);
  }

 private:
  static constexpr int64 kNewest = 1;  ///< `OVDataRange::mode`: a number of the newest bars.
  static constexpr int64 kOneBatchFlag = 1 << 21;
  static constexpr int64 kExtraTermFlag = 256;

  /// Only its quote source is used; never attached, it is given no events.
  class Source final : public AbstractEventStrategy {
   public:
    void pushEvent(IEvent* event) override { std::unique_ptr<IEvent>{event}.reset(); }
  };

  Answer fetch(const ICodeID& code, const std::string& frequency, OVDataRange range,
               int64 timeoutMs) {
    if (source_ == nullptr) source_ = std::make_unique<Source>();
    const std::shared_ptr<IQuoteSrc> quotes = source_->quoteSrc();
    bool extraTerm = false;
    Answer answer;
    answer.status = quotes->freqToTerm(frequency, range.term, extraTerm);
    if (answer.status.code != 0) return answer;
    range.code = code;
    range.flags = kOneBatchFlag | (extraTerm ? kExtraTermFlag : 0);
    auto bars = quotes->fetchBarsSync({range}, timeoutMs);
    if (const auto found = bars.find(code); found != bars.end())
      answer.bars = std::move(found->second);
    else
      answer.status = {4, statusMessage(4)};
    return answer;
  }

  std::unique_ptr<Source> source_;  ///< Made at the first use, when there is a platform.
};

}  // namespace orvane
