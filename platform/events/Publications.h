#pragma once

#include <atomic>
#include <deque>
#include <functional>
#include <list>
#include <map>
#include <mutex>
#include <string>
#include <tuple>
#include <vector>

#include "platform/market/MarketStore.h"
#include "platform/market/TimeShift.h"
#include "shared/ResultStatus.h"

namespace orvane {
class ICodeService;
}

namespace orvane::detail {

/// Market data that runners publish. A publication is checked when it is made, and waits until
/// whoever drives the platform takes it in: by the number of its publisher, which no race changes,
/// and then as that publisher made them.
///
/// A code is fed by files or by publications, never by both. The rows of a series follow one
/// another in time. Any thread may publish; the rest is for whoever has the turn.
class Publications {
 public:
  /// Flag of a publication that is told to those who subscribed. One without it is history: it is
  /// found by requests that come later, and told to nobody.
  static constexpr int kLiveFlag = 1;

  struct Parts {
    MarketStore& store;
    ICodeService& codes;
    std::function<int64()> now;
    /// Called, with no lock held, when something waits.
    std::function<void()> onWaiting;
    bool isPlayback = true;
  };
  explicit Publications(Parts parts) : parts_(std::move(parts)), isOpen_(parts_.isPlayback) {}

  /// The number of a new publisher.
  int addPublisher() { return publishers_.fetch_add(1) + 1; }

  /// Ticks of any codes, or of `code` if it is given.
  ResultStatus publishTicks(int publisher, const std::list<IDepthMarketData>& ticks,
                            const ICodeID* code, int flags);
  /// Bars of a period; with 0 the period is how long they last.
  ResultStatus publishBars(int publisher, const ICodeID& code, const std::list<IKLine>& bars,
                           int64 periodMs, int flags);
  /// Makes a series known before it has a row, so that it can be subscribed. A period of 0 means
  /// ticks.
  ResultStatus announce(int publisher, const ICodeID& code, int64 periodMs);

  /// Whether something waits that can be taken in. Any thread may ask.
  bool anyWaiting() const { return waitingCount_.load() != 0 && isOpen_.load(); }

  // For whoever has the turn.

  /// Whether `takeNext` has nothing to do.
  bool isIdle() const { return !anyWaiting() && admitted_.empty(); }
  /// As `announce`, at once.
  ResultStatus makeKnown(const ICodeID& code, int64 periodMs);
  /// Takes in what waits, up to a row that is to be told, and returns the stream whose next row
  /// that is; null when nothing is left. `onHistory` is told which stream knows more by now.
  MarketStream* takeNext(const std::function<void(MarketStream&)>& onHistory);
  void dropWaiting();
  /// The feed is about to be played: from now on the times of data mean something in live mode.
  void beginRun(const TimeShift& shift);

 private:
  struct Publication {
    int publisher = 0;
    ICodeID code;
    std::string timeZone;
    int64 periodMs = 0;  ///< 0: ticks.
    bool isLive = false;
    std::vector<IKLine> bars;
    std::vector<IDepthMarketData> ticks;
  };
  using Line = std::tuple<int, int64, int64>;  ///< Publisher, code and period.

  ResultStatus begin(int publisher, const ICodeID& code, int64 periodMs, int flags,
                     Publication& publication) const;
  int64 lastTimeOf(int publisher, int64 codeId, int64 periodMs) const;
  void put(std::vector<Publication> publications, const std::map<Line, int64>& lastTimes);
  void takeIn();
  void forgetLastTimes();
  bool dropIfFedByFiles(const Publication& publication);
  bool appendRow(MarketStream& stream, Publication& publication, std::size_t row);

  const Parts parts_;
  std::atomic<int> publishers_{0};
  std::atomic<std::size_t> waitingCount_{0};
  std::atomic<bool> isOpen_;

  mutable std::mutex mutex_;  ///< Guards what follows up to the blank line; a leaf lock.
  std::vector<Publication> waiting_;
  std::map<Line, int64> lastTimes_;  ///< The last row not told yet, as times are shown.
  TimeShift shift_;                  ///< Written by whoever has the turn alone.

  std::deque<Publication> admitted_;
  std::size_t nextRow_ = 0;  ///< Of the first one admitted.
  bool hasTakenIn_ = false;  ///< Since nothing was left to tell.
};

}  // namespace orvane::detail
