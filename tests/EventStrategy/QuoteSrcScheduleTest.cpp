// Random schedules of what a strategy does with its quote source and a hostile service to it,
// against a model of the source's tables.

#include "EventStrategy/QuoteSrc.h"

#include "tests/EventStrategy/model/OwnedSchedule.h"
#include "tests/EventStrategy/model/QuoteKeeper.h"
#include "tests/EventStrategy/model/QuoteModel.h"
#include "tests/EventStrategy/model/ScheduleTest.h"

namespace orvane::support {
namespace {

/// A period as texts name it: in milliseconds, as the service gets it, and with the extra flag.
struct Period {
  const char* text;
  int64 term;
  const char* pair;
  bool hasExtraFlag;
};
const std::vector<Period> kPeriods = {
    {"1m", 60000, "(3,1)", false},  {"2m", 120000, "(3,2)", false},
    {"90s", 90000, "(2,90)", true}, {"1d", 86400000, "(5,1)", false},
    {"250ms", 250, "(5,1)", false}, {"tick", 0, "(8,0)", false}};

constexpr int kQuotedCodes = 4, kQuoteIds = 5;

class QuoteSchedule final : public OwnedSchedule<QuoteSrc, QuoteKeeper, QuoteModel> {
 public:
  QuoteSchedule(FakePlatform& platform, std::uint64_t seed, HostileSeen& seen)
      : OwnedSchedule(platform, seed, seen, "quote.",
                      {"quote.subscribeQuote", "quote.unsubscribeQuote", "quote.subscribeBars",
                       "quote.cancelRequest", "quote.unsubscribeSpi"}) {
    for (int code = 1; code <= kQuotedCodes; ++code)
      platform_.codes().codes["C" + std::to_string(code)] = codeOf(code, "resolved");
    source_->setNotify(&owner_);
  }

 private:
  void takeStep() override {
    switch (below(24)) {
      case 0:
      case 1:
      case 2:
      case 3:
        return subscribeQuote(aCode(), below(8), oneIn(3));
      case 4:
      case 5:
      case 6:
      case 7:
        return unsubscribeQuote(aCode(), below(8), oneIn(3));
      case 8:
      case 9:
        return requestByCode();
      case 10:
        return requestByRange();
      case 11:
        return requestByText();
      case 12:
      case 13:
      case 14:
        return cancel(anId());
      case 15:
        return nameWhatIsNot();
      case 16:
        return listen(!oneIn(3));
      case 17:
        return oneIn(3) ? release() : reset();
      case 18:
        return oneIn(2) ? replace(model_.release()) : listen(true);
      default:
        callBack();
        callBack();
    }
  }

  /// Codes are known by their id alone, so their texts vary.
  ICodeID aCode() { return codeOf(1 + below(kQuotedCodes), std::string(1, "XYZ"[below(3)])); }
  int anId() { return 1 + below(kQuoteIds); }

  // What the owner does.

  void subscribeQuote(const ICodeID& code, int flags, bool byText) {
    const auto calls = model_.subscribeQuote(code.id, flags);
    tell("subscribe quote " + std::to_string(code.id) + (byText ? " by text" : ""));
    expectCalls(calls);
    expectStatus(byText ? source_->subscribeQuote("C" + std::to_string(code.id), flags)
                        : source_->subscribeQuote(code, flags),
                 !calls.empty());
  }

  void unsubscribeQuote(const ICodeID& code, int flags, bool byText) {
    tell("unsubscribe quote " + std::to_string(code.id) + (byText ? " by text" : ""));
    expectCalls(model_.unsubscribeQuote(code.id, flags));
    expectStatus(byText ? source_->unsubscribeQuote("C" + std::to_string(code.id), flags)
                        : source_->unsubscribeQuote(code, flags),
                 false);
  }

  void requestByCode() {
    const Period& period = oneOf(kPeriods);
    const int id = anId(), count = below(4) - 1, flags = below(1024) & ~256;
    const IMDQuery query{aCode(), below(100), below(100), count > 0 ? count : 2147483647,
                         flags | (period.hasExtraFlag ? 256 : 0)};
    expectRequest(id, query, period);
    expectStatus(source_->subscribeKline(query.code, period.text, query.beginTime, query.endTime,
                                         count, flags, id),
                 true);
  }

  void requestByRange() {
    const Period& period = oneOf(kPeriods);
    const int id = anId(), extraFlags = below(1024);
    OVDataRange range;
    range.code = aCode();
    range.term = period.term;
    range.beginTime = below(100);
    range.endTime = below(100);
    range.flags = below(1024);
    expectRequest(id,
                  {range.code, range.beginTime, range.endTime, kNoLimit,
                   static_cast<int>(range.flags) | extraFlags},
                  period);
    expectStatus(source_->subscribeKline(range, id, extraFlags), true);
  }

  void requestByText() {
    const Period& period = oneOf(kPeriods);
    const int id = anId(), code = 1 + below(kQuotedCodes), begin = below(100), flags = below(2048);
    const int extraFlags = oneIn(2) ? 1048576 : 0;
    int passed = flags & (1 | 2 | 512 | 1024);
    if ((passed & 512) != 0) passed &= ~1024;
    expectRequest(id,
                  {codeOf(code, "resolved"), begin, 0, kNoLimit,
                   passed | extraFlags | (period.hasExtraFlag ? 256 : 0)},
                  period);
    expectStatus(source_->subscribeKline("C" + std::to_string(code), period.text, begin, flags, id,
                                         extraFlags),
                 true);
  }

  void expectRequest(int id, const IMDQuery& query, const Period& period) {
    tell("request " + std::to_string(id) + " of " + std::to_string(query.code.id) + " " +
         period.text);
    expectCalls(model_.request(id, query, period.pair));
  }

  void cancel(int id) {
    tell("cancel " + std::to_string(id));
    expectCalls(model_.cancel(id));
    expectStatus(source_->unsubscribeKline(id), false);
  }

  /// A code or a period that does not exist leaves no trace.
  void nameWhatIsNot() {
    const ResultStatus badCode{-2, gbkFromUtf8("无效合约 ") + "ghost"};
    const std::string ghost = "ghost";
    tell("name what is not");
    EXPECT_EQ(source_->subscribeQuote(ghost, 0), badCode);
    EXPECT_EQ(source_->unsubscribeQuote(ghost, 0), badCode);
    EXPECT_EQ(source_->subscribeKline(ghost, "1m", 1, 0, anId(), 0), badCode);
    EXPECT_EQ(source_->subscribeKline(aCode(), "7x", 1, 2, 0, 0, anId()).code, 17);
    EXPECT_EQ(source_->subscribeKline("C1", "7x", 1, 0, anId(), 0).code, 17);
  }

  void release() {
    tell("release");
    platform_.routes.hasRealtime = !oneIn(8);
    const auto calls = model_.release();
    if (platform_.routes.hasRealtime) expectCalls(calls);
    source_->release();
  }

  /// A new run: what stands is withdrawn one by one.
  void reset() {
    tell("reset");
    while (!model_.subscribers.empty())
      unsubscribeQuote(codeOf(model_.subscribers.begin()->first), 0, false);
    while (!model_.requests.empty()) cancel(model_.requests.begin()->first);
  }

  void afterStep() override { platform_.routes.hasRealtime = true; }

  // What the service does.

  void callBack() override {
    const auto spis = platform_.quotes().spis();
    const std::shared_ptr<QuoteSpi> spi = spis.empty() || !oneIn(4) ? source_ : oneOf(spis);
    const bool isHeard = model_.listens && spi.get() == source_.get();
    const int id = anId(), times = oneIn(6) ? 2 : 1;
    const auto request = model_.requests.find(id);
    const bool isKnown = isHeard && request != model_.requests.end();
    const std::string head = isKnown ? headOf(id, request->second.code) : "";
    for (int i = 0; i < times; ++i) {
      if (oneIn(3))
        tellQuote(*spi, isHeard);
      else
        tellBatch(*spi, id, isKnown, head);
    }
  }

  void tellQuote(QuoteSpi& spi, bool isHeard) {
    const IDepthMarketData quote = aQuote();
    tellOwner(isHeard && model_.subscribers.contains(quote.code.id), lineOf(quote),
              [&] { spi.onQuote(quote); });
  }

  void tellBatch(QuoteSpi& spi, int id, bool isKnown, const std::string& head) {
    const ResultStatus status{below(2), std::to_string(below(10))};
    const int flags = below(32);
    std::vector<IKLine> bars(static_cast<std::size_t>(below(3)));
    for (IKLine& bar : bars) bar = barOf(static_cast<Word>(any()));
    std::vector<IDepthMarketData> ticks(static_cast<std::size_t>(below(3)), aQuote());
    const KLineProgress progress{below(100), 0, 0, 0, {}};
    const RolloverCoefficient coefficient{below(100), {}};
    switch (below(4)) {
      case 0:
        return tellOwner(isKnown, head + "bars " + batchLine(bars, status, flags),
                         [&] { spi.onKLine(id, bars, status, flags); });
      case 1:
        return tellOwner(isKnown, head + "ticks " + batchLine(ticks, status, flags),
                         [&] { spi.onTick(id, ticks, status, flags); });
      case 2:
        return tellOwner(isKnown, head + lineOf(progress),
                         [&] { spi.onKLineProgress(id, progress); });
      default:
        return tellOwner(isKnown, head + lineOf(coefficient),
                         [&] { spi.onRollover(id, coefficient); });
    }
  }

  IDepthMarketData aQuote() {
    IDepthMarketData quote = quoteOf(0, static_cast<Word>(any()));
    quote.code = aCode();
    return quote;
  }

  // What is compared.

  /// No call finds the source's books behind the owner's wishes, nor its locks held.
  void expectInside() override { expectTables(); }

  void expectTables() override {
    std::map<int64, int> counts;
    for (const auto& [code, count] : TestAccess::refCounts(*source_)) counts[code.id] = count;
    EXPECT_EQ(counts, model_.subscribers);
    const auto requests = TestAccess::requests(*source_);
    EXPECT_EQ(requests.size(), model_.requests.size());
    for (const auto& [id, query] : model_.requests) {
      ASSERT_TRUE(requests.contains(id));
      EXPECT_EQ(textOf(requests.at(id)), textOf(query));
    }
    for (int id = 1; id <= kQuoteIds; ++id)
      EXPECT_EQ(source_->isSubscribeKline(id), model_.requests.contains(id));
    for (int code = 1; code <= kQuotedCodes; ++code)
      EXPECT_EQ(source_->isSubscribeQuote(codeOf(code)), model_.subscribers.contains(code));
  }
  static std::string textOf(const IMDQuery& query) {
    return std::to_string(query.code.id) + query.code.code + " " + std::to_string(query.beginTime) +
           " " + std::to_string(query.endTime) + " " + std::to_string(query.count) + " " +
           std::to_string(query.flags);
  }
};

class QuoteSrcSchedule : public ScheduleTest {};

TEST_F(QuoteSrcSchedule, shouldKeepEveryPromiseInRandomSchedules) {
  take<QuoteSchedule>(1500, 60);
  if (HasFailure()) return;
  EXPECT_GT(seen.delivered, schedules);
  EXPECT_GT(seen.dropped, schedules);
  EXPECT_GT(seen.inside, schedules / 2);
  EXPECT_GT(seen.thrown, schedules / 2);
  EXPECT_GT(seen.refused, schedules / 4);
  EXPECT_GT(seen.replaced, schedules / 4);
}

}  // namespace
}  // namespace orvane::support
