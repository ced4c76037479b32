#pragma once

#include <algorithm>
#include <functional>
#include <mutex>
#include <vector>

#include "platform/core/CallRounds.h"
#include "platform/market/MarketStore.h"
#include "platform/market/RequestBook.h"
#include "platform/market/TimeShift.h"
#include "services/Common/IRealtimeQuoteService.h"

namespace orvane {
class ICodeService;
}

namespace orvane::detail {

/// The realtime quote service over a store of market data.
///
/// Its public operations only take down what is wanted; any thread may call them, with locks held.
/// Requests are served, and records delivered, by whoever has the turn, a lock that no operation
/// takes: the playback's driver, the service loop, or the thread that answers blocking requests.
///
/// In lockstep no receiver is called twice without quiet between the two calls; see `CallRounds`.
class QuoteService final : public IRealtimeQuoteService {
 public:
  /// Records of one batch of history.
  static constexpr std::size_t kBarsPerBatch = 10'000;
  static constexpr std::size_t kTicksPerBatch = 1'000;
  /// Flag of a request that wants its history in one batch, however long it is.
  static constexpr int kOneBatchFlag = 1 << 21;

  QuoteService(MarketStore& store, ICodeService& codes, std::function<void()> onRequest);

  ResultStatus subscribeQuote(const ICodeID& code, const std::shared_ptr<QuoteSpi>& spi,
                              int flags) override;
  ResultStatus unsubscribeQuote(const ICodeID& code, const std::shared_ptr<QuoteSpi>& spi,
                                int flags) override;
  ResultStatus subscribeBars(const IMDQuery& query, const TermPair& term,
                             const std::shared_ptr<QuoteSpi>& spi, int requestId) override;
  ResultStatus cancelRequest(int requestId) override;
  ResultStatus unsubscribeSpi(const std::shared_ptr<QuoteSpi>& spi) override;
  ResultStatus getQuote(const ICodeID& code, IDepthMarketData& quote, int flags) override;

  RequestBook& book() { return book_; }
  std::mutex& turn() { return turn_; }

  // For whoever has the turn.

  /// Serves all waiting requests, and those that come meanwhile. Returns whether there was
  /// anything to do.
  bool serve();
  /// Serves, without waiting for quiet, the requests that somebody blocks for and those that have
  /// waited too long. Returns whether there were any.
  bool serveOverdue(const Overdue& overdue);

  /// Makes the next row of a stream known and delivers it, with the bars that it completes.
  void deliverNext(MarketStream& stream);
  /// Rows of a stream became known that are told to nobody.
  void passOver(MarketStream& stream);
  /// The earliest end of an open derived bar; it may name one that is closed already.
  int64 nextClose() const { return nextClose_; }
  /// Everything that lies before `time` is over; bars are not delivered by this.
  void passedUntil(int64 time) { closedThrough_ = std::max(closedThrough_, time - 1); }
  /// Completes and delivers the derived bars that end at or before `time`.
  void closeThrough(int64 time);

  /// Waits until every receiver has digested what it was given; null where nobody waits.
  void setQuietWait(std::function<void()> wait) { rounds_.setQuietWait(std::move(wait)); }
  /// How many receivers are called at once; null where they are called one after the other.
  void setManyCalls(CallRounds::ManyCalls make) { rounds_.setManyCalls(std::move(make)); }
  void setTimeShift(const TimeShift& shift) {
    const std::lock_guard lock(shiftMutex_);
    shift_ = shift;
  }
  void startAt(int64 time) { closedThrough_ = time - 1; }
  void rewind();

 private:
  class Delivering;

  void serveOne(const std::shared_ptr<MarketRequest>& request, bool lockstep);
  void serveBars(const std::shared_ptr<MarketRequest>& request, bool lockstep);
  void serveTicks(const std::shared_ptr<MarketRequest>& request, bool lockstep);
  void sweep();
  bool goesOn(const MarketRequest& request) const;
  template <typename Record, typename Fill, typename Send>
  void sendHistory(const MarketRequest& request, std::size_t total, std::size_t perBatch,
                   bool lockstep, std::vector<Record>& batch, Fill fill, Send send);
  template <typename Call>
  void callSpi(Subscriber& who, bool lockstep, Call call);
  template <typename IsOver>
  void collectDue(const RequestList& live, std::size_t count, IsOver isOver);
  template <typename Send>
  void callDue(Send send);
  void deliverBar(const RequestList& live, std::size_t count, const IKLine& bar);
  void deliverTick(MarketStream& stream, std::size_t row);
  void makeKnown(DerivedSeries& series);
  void deliverKnown();
  void noteOpenEnd(const DerivedSeries& series);

  MarketStore& store_;
  ICodeService& codes_;
  RequestBook book_;
  std::mutex turn_;

  // For whoever has the turn.
  CallRounds rounds_;
  TimeShift shift_;
  mutable std::mutex shiftMutex_;  ///< Guards `shift_` against `getQuote` alone.
  int delivering_ = 0;             ///< Above 0 while lists of requests are being walked.
  /// Complete bars that are known already, but not delivered: of a series, for so many of its
  /// requests, those that stood when the bars became known.
  struct KnownBars {
    DerivedSeries* series;
    std::size_t first, last, receivers;
  };
  std::vector<KnownBars> known_;
  int64 closedThrough_ = -kUnsetTime;
  int64 nextClose_ = kUnsetTime;
  std::vector<MarketRequest*> due_;  ///< Who gets a record. Nothing is swept meanwhile.
  std::vector<IKLine> oneBar_{1};
  std::vector<IDepthMarketData> oneTick_{1};
};

}  // namespace orvane::detail
