// Random schedules of blocking fetches and maintenances and of what a hostile service makes of
// them, against a model of their requests.

#include <cstdlib>

#include "EventStrategy/QuoteGetSyncSpi.h"
#include "EventStrategy/QuoteSrc.h"
#include "tests/EventStrategy/model/FetchModel.h"
#include "tests/EventStrategy/model/HostileSchedule.h"
#include "tests/EventStrategy/model/ScheduleTest.h"

namespace orvane::support {
namespace {

using Spi = std::shared_ptr<detail::QuoteGetSyncSpi>;

constexpr int kFetchedCodes = 3;
const std::vector<std::pair<int64, const char*>> kTerms = {
    {0, "(8,0)"}, {250, "(5,1)"}, {60000, "(3,1)"}, {120000, "(3,2)"}};

/// The service keeps the spi of every request for ever. The wall clock moves when it is looked at.
class FetchSchedule final : public HostileSchedule {
 public:
  FetchSchedule(FakePlatform& platform, std::uint64_t seed, HostileSeen& seen)
      : HostileSchedule(platform, seed, seen, "quote.",
                        {"quote.subscribeBars", "quote.cancelRequest", "maintain.maintain"}) {
    platform_.calls.onCall("quote.subscribeBars", [this] { askInside(); });
    platform_.calls.onCall("quote.cancelRequest", [this] { cancelInside(); });
    platform_.calls.onCall("maintain.maintain", [this] { maintainInside(); });
    platform_.onSysNow = [this] { readClock(); };
  }
  ~FetchSchedule() override {
    platform_.onSysNow = nullptr;
    platform_.routes.hasRealtime = true;
  }

 private:
  void takeStep() override {
    platform_.routes.hasRealtime = true;
    model_.begin();
    asked_.clear();
    reads_ = ends_ = 0;
    wasLate_ = false;
    timeout_ = oneIn(2) ? 1000 : -1;
    // A turn of real waiting takes a tenth of a second, so there are few.
    patience_ = oneIn(400) ? 1 : 0;
    switch (below(8)) {
      case 0:
      case 1:
        return maintain();
      case 2:
        callBack();
        return callBack();
      default:
        return fetch();
    }
  }

  // What the owner does.

  void fetch() {
    std::list<OVDataRange> ranges;
    for (int count = below(5); count > 0; --count) {
      const auto& [term, pair] = oneOf(kTerms);
      OVDataRange range;
      range.code = codeOf(1 + below(kFetchedCodes));
      range.term = term;
      range.beginTime = below(100);
      range.flags = below(8);
      ranges.push_back(range);
      asked_.push_back({range, pair});
    }
    tell("fetch of " + std::to_string(ranges.size()) + " within " + std::to_string(timeout_));
    platform_.routes.hasRealtime = !oneIn(20);
    const auto bars = source_->fetchBarsSync(ranges, timeout_);
    std::map<int64, FetchModel::Marks> marks;
    for (const auto& [code, rows] : bars)
      for (FetchModel::Marks& of = marks[code.id]; const IKLine& row : rows)
        of.push_back(row.words[0]);
    EXPECT_EQ(marks, model_.bars);
    EXPECT_EQ(model_.pending().size(), platform_.routes.hasRealtime ? ranges.size() : 0);
  }

  void maintain() {
    const bool isBad = oneIn(4);
    const int code = 1 + below(kFetchedCodes), value = below(100);
    maintenance_ = platform_.routes.lastRequestId() + 1;
    model_.ask(maintenance_, {code, true});
    tell("maintain " + std::to_string(code) + (isBad ? " of a bad period" : ""));
    const ResultStatus status =
        source_->maintainDataSync(codeOf(code), isBad ? "7x" : "1m", value, timeout_);
    if (isBad) {
      EXPECT_EQ(status.code, 17);
      EXPECT_EQ(platform_.calls.count("maintain.maintain"), 0);
      return;
    }
    EXPECT_EQ(status, mood() == Mood::Refuses ? answer() : model_.status);
    EXPECT_EQ(platform_.calls.entries("maintain.maintain"),
              Lines{"maintain.maintain " + std::to_string(maintenance_) +
                    " code=" + std::to_string(code) + " type=3 value=" + std::to_string(value)});
  }

  // What the service does inside.

  void askInside() {
    const int id = platform_.routes.lastRequestId();
    const auto& [range, pair] = asked_.at(model_.pending().size());
    model_.ask(id, {range.code.id});
    spis_[id] =
        std::dynamic_pointer_cast<detail::QuoteGetSyncSpi>(platform_.quotes().requestSpi(id));
    expectCalls({"quote.subscribeBars " + std::to_string(id) +
                 " code=" + std::to_string(range.code.id) + " term=" + pair +
                 " begin=" + std::to_string(range.beginTime) +
                 " end=0 count=2147483647 flags=" + std::to_string(range.flags)});
    if (oneIn(2)) endInside(id);
    act();
    if (mood() != Mood::Refuses) return;
    ++seen_.refused;
    model_.refuse(id);
  }

  void maintainInside() {
    spis_[maintenance_] =
        std::dynamic_pointer_cast<detail::QuoteGetSyncSpi>(platform_.maintenance.spi());
    if (oneIn(2)) tellMaintenance(maintenance_);
    act();
    if (mood() != Mood::Refuses) return;
    ++seen_.refused;
    model_.refuse(maintenance_);
  }

  /// The waiter lets each request go right before it cancels it, or all of them once something was
  /// thrown.
  void cancelInside() {
    if (ends_ == 0 && !expectedThrow) {
      EXPECT_TRUE(model_.isOver() || wasLate_) << "it gave up too early";
    }
    const int id = model_.pending().at(static_cast<std::size_t>(ends_++));
    expectCalls({"quote.cancelRequest " + std::to_string(id)});
    if (expectedThrow)
      model_.letAllGo();
    else
      model_.letGo(id);
    if (oneIn(4)) endInside(id);
    act();
  }

  /// The first look is the start. Each further one means that something is still awaited.
  void readClock() {
    if (++reads_ == 1) {
      start_ = platform_.sysClock.now();
    } else {
      EXPECT_FALSE(model_.isOver()) << "it waits for nothing";
      EXPECT_FALSE(wasLate_) << "it waits too long";
      const int64 most = timeout_, beyond = most + 1;
      const int64 moved = patience_-- > 0 ? most : beyond;
      platform_.sysClock.set(start_ + (oneIn(3) ? -moved : moved));
      wasLate_ = std::abs(platform_.sysClock.now() - start_) > timeout_;
    }
    if (mood() == Mood::Throws && oneIn(3)) throwNow();
    if (!oneIn(3))
      for (const int id : model_.pending())
        if (!oneIn(4)) endInside(id);
  }

  /// What was never asked, as of a bad period, has nobody to be answered to.
  void endInside(int id) {
    if (!spis_.contains(id)) return;
    ++seen_.inside;
    if (oneIn(2))
      onAnotherThread([this, id] { end(id); });
    else
      end(id);
  }

  /// What a service that answers does, now and then twice.
  void end(int id) {
    for (int times = oneIn(6) ? 2 : 1; times > 0; --times) {
      if (oneIn(3)) tellBars(id, below(16));
      if (model_.requests.at(id).isMaintenance)
        tellMaintenance(id);
      else
        tellBars(id, kLastBatchFlag | below(16));
    }
  }

  /// A call-back of any kind for one of the last requests, heard or not.
  void callBack() override {
    if (spis_.empty()) return;
    const int id =
        std::prev(spis_.end(), 1 + below(std::min(6, static_cast<int>(spis_.size()))))->first;
    switch (below(6)) {
      case 0:
        return tellTicks(id);
      case 1:
        return tellMaintenance(id);
      case 2:
        return tellOthers(*spis_.at(id), id);
      default:
        return tellBars(id, below(32));
    }
  }

  void tellBars(int id, int flags) {
    FetchModel::Marks marks;
    std::vector<IKLine> bars;
    for (int count = below(3); count > 0; --count) {
      marks.push_back(static_cast<Word>(any()));
      bars.push_back(barOf(marks.back()));
    }
    ++(model_.answerBars(id, marks, flags) ? seen_.delivered : seen_.dropped);
    spis_.at(id)->onKLine(oneIn(4) ? 0 : id, bars, {below(2), ""}, flags);
  }

  void tellTicks(int id) {
    const int flags = below(32);
    model_.answerTicks(id, flags);
    spis_.at(id)->onTick(id, {quoteOf(1)}, {}, flags);
  }

  void tellMaintenance(int id) {
    const ResultStatus status{below(3), std::to_string(below(10))};
    ++(model_.answerMaintenance(id, status) ? seen_.delivered : seen_.dropped);
    spis_.at(id)->onMaintained(0, codeOf(9), ITimeType::Minute, status);
  }

  /// These end nothing.
  static void tellOthers(detail::QuoteGetSyncSpi& spi, int id) {
    spi.onQuote(quoteOf(1));
    spi.onKLineProgress(id, {});
    spi.onRollover(id, {});
    spi.onTimesale(id);
  }

  // What is compared.

  Lines takeDeliveries() override { return {}; }

  void afterStep() override {
    if (platform_.routes.hasRealtime) {
      EXPECT_EQ(static_cast<std::size_t>(ends_), model_.pending().size())
          << "some were not cancelled";
    } else {
      EXPECT_LE(reads_, 1) << "it waited for nobody";
    }
    EXPECT_EQ(platform_.calls.count("maintain.release"), platform_.calls.count("maintain.create"));
    for (const int id : model_.pending()) EXPECT_FALSE(model_.requests.at(id).isHeard) << id;
  }

  void expectInside() override { expectEnds(); }

  void expectTables() override {
    expectEnds();
    for (const auto& [id, spi] : spis_) {
      EXPECT_FALSE(TestAccess::hasBarsCallback(*spi)) << id;
      EXPECT_FALSE(TestAccess::hasTicksCallback(*spi)) << id;
      EXPECT_FALSE(TestAccess::hasMaintainCallback(*spi)) << id;
    }
    EXPECT_TRUE(TestAccess::requests(*source_).empty());
  }
  void expectEnds() {
    for (const auto& [id, spi] : spis_)
      EXPECT_EQ(spi->isDone(), model_.requests.at(id).isEnded) << id;
  }

  struct Asked {
    OVDataRange range;
    std::string pair;
  };

  std::shared_ptr<QuoteSrc> source_ = std::make_shared<QuoteSrc>(0);
  FetchModel model_;
  std::map<int, Spi> spis_;   ///< By request; a service never lets go.
  std::vector<Asked> asked_;  ///< The ranges of the present fetch.
  int64 start_ = 0, timeout_ = 0;
  int maintenance_ = 0;
  int reads_ = 0;         ///< Looks at the wall clock in this step.
  int ends_ = 0;          ///< Cancels in this step.
  int patience_ = 0;      ///< Looks before the time is up.
  bool wasLate_ = false;  ///< Whether the last look told that the time was up.
};

class QuoteGetSyncSchedule : public ScheduleTest {};

TEST_F(QuoteGetSyncSchedule, shouldKeepEveryPromiseInRandomSchedules) {
  take<FetchSchedule>(800, 15);
  if (HasFailure()) return;
  EXPECT_GT(seen.delivered, schedules);
  EXPECT_GT(seen.dropped, schedules);
  EXPECT_GT(seen.inside, schedules);
  EXPECT_GT(seen.thrown, schedules / 4);
  EXPECT_GT(seen.refused, schedules / 8);
}

}  // namespace
}  // namespace orvane::support
