#include "platform/events/IndexService.h"

#include <gmock/gmock.h>

#include "platform/fields/IndexElementView.h"
#include "services/QuoteClient/IIndexTrade.h"
#include "shared/TextForms.h"
#include "tests/platform/events/EventFixture.h"

namespace orvane::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

/// A subscriber that hands what it is told to a runner's pump.
class IndexSpi final : public IndexTradeSpi {
 public:
  void onElementChange(const ICodeID& code, std::list<IndexTradeElement>& elements) override {
    if (onTold) onTold();
    runner_->push(code.code + "=" + textOf(elements));
    elements.clear();  // It is the receiver's own list.
  }
  static std::string textOf(const std::list<IndexTradeElement>& elements) {
    std::string text;
    for (const IndexTradeElement& each : elements)
      text += each.code.code + "*" +
              std::to_string(static_cast<int>(IndexElementView(each).weight() * 100)) + " ";
    return text;
  }
  std::vector<std::string> handled() const { return runner_->handled(); }
  std::function<void()> onTold;

 private:
  const std::shared_ptr<RunnerSpi> runner_ = std::make_shared<RunnerSpi>(nullptr);
};

IIndexTrade& indexes() { return *IIndexTrade::instance(); }

std::string elementsOf(const ICodeID& code) {
  std::list<IndexTradeElement> elements;
  const ResultStatus status = indexes().indexElements(code, elements);
  return status.code == 0 ? IndexSpi::textOf(elements) : std::to_string(status.code);
}

/// An index I of A, B and C, and a day of bars.
struct IndexedRun {
  explicit IndexedRun(PlatformOptions options = {}) : platform(options) {
    platform->addBars(makeBars(a, kMonday, kMinute, 5));
  }
  InstalledPlatform platform;
  const ICodeID index = platform.code("I"), a = platform.code("A"), b = platform.code("B"),
                c = platform.code("C");
};

IndexComposition composition(const std::string& index, int64 time,
                             std::vector<IndexElementSpec> elements) {
  return {index, time, std::move(elements), "here:1"};
}

TEST(IndexService, shouldTellAChangeAtItsTimeAndAnswerWithWhatHoldsBefore) {
  IndexedRun on;
  on.platform->addIndexes(
      {composition("I.X", kMonday + 3 * kMinute, {{"C.X", 1}}),
       composition("I.X", IndexComposition::kFromTheStart, {{"A.X", 0.25}, {"B.X", 0.75}})});
  EXPECT_EQ(elementsOf(on.index), "A*25 B*75 ");
  auto spi = std::make_shared<IndexSpi>();
  std::string asked;
  spi->onTold = [&] { asked = elementsOf(on.index); };
  indexes().subscribeElementChange(on.index, spi);
  indexes().subscribeElementChange(on.index, spi);  // Once is enough.
  std::vector<std::string> seen;
  auto bars = std::make_shared<RunnerSpi>(
      [&](const std::string&) { seen.push_back(elementsOf(on.index)); });
  on.platform.quotes().subscribeBars(makeQuery(on.a), kOneMinute, bars, 1);
  on.platform->run();
  EXPECT_THAT(spi->handled(), ElementsAre("@0:03 I=C*100 "));
  EXPECT_EQ(asked, "C*100 ");
  // The request's answer, and five bars: the change comes before the bar of its instant.
  EXPECT_THAT(seen,
              ElementsAre("A*25 B*75 ", "A*25 B*75 ", "A*25 B*75 ", "C*100 ", "C*100 ", "C*100 "));
}

TEST(IndexService, shouldKnowNothingOfAnIndexWhoseFirstCompositionLiesAhead) {
  IndexedRun on;
  on.platform->addIndexes({composition("I.X", kMonday + 2 * kMinute, {{"A.X", 1}})});
  EXPECT_EQ(elementsOf(on.index), "22");
  EXPECT_EQ(elementsOf(on.b), "22");
  on.platform->run();
  EXPECT_EQ(elementsOf(on.index), "A*100 ");
}

TEST(IndexService, shouldNotTellWhatLiesBeforeTheFirstInstantOrFromTheEndOn) {
  PlatformOptions options;
  options.from = kMonday + 2 * kMinute;
  options.to = kMonday + 4 * kMinute;
  IndexedRun on(options);
  on.platform->addIndexes({composition("I.X", kMonday + kMinute, {{"A.X", 1}}),
                           composition("I.X", kMonday + 4 * kMinute, {{"B.X", 1}})});
  auto spi = std::make_shared<IndexSpi>();
  indexes().subscribeElementChange(on.index, spi);
  on.platform->run();
  EXPECT_THAT(spi->handled(), IsEmpty());
  EXPECT_EQ(elementsOf(on.index), "A*100 ");
}

TEST(IndexService, shouldTellNothingMoreAndLetGoOfTheReceiverOnceItUnsubscribed) {
  IndexedRun on;
  on.platform->addIndexes({composition("I.X", kMonday + 2 * kMinute, {{"A.X", 1}})});
  auto spi = std::make_shared<IndexSpi>();
  indexes().subscribeElementChange(on.index, spi);
  indexes().unsubscribeElementChange(on.b, spi);
  indexes().unsubscribeElementChange(on.index, spi);
  indexes().unsubscribeElementChange(on.index, spi);
  EXPECT_EQ(spi.use_count(), 1);
  on.platform->run();
  EXPECT_THAT(spi->handled(), IsEmpty());
}

TEST(IndexService, shouldForgetTheChangesOnARewindAndTellThemAgain) {
  IndexedRun on;
  on.platform->addIndexes({composition("I.X", kMonday + 2 * kMinute, {{"A.X", 1}})});
  auto spi = std::make_shared<IndexSpi>();
  indexes().subscribeElementChange(on.index, spi);
  on.platform->run();
  on.platform->rewind();
  EXPECT_EQ(elementsOf(on.index), "22");
  on.platform->run();
  EXPECT_EQ(spi->handled().size(), 2u);
}

TEST(IndexService, shouldGoOnWhenAReceiverThrows) {
  IndexedRun on;
  on.platform->addIndexes({composition("I.X", kMonday + 2 * kMinute, {{"A.X", 1}})});
  auto bad = std::make_shared<IndexSpi>(), good = std::make_shared<IndexSpi>();
  bad->onTold = [] { throw std::runtime_error("no"); };
  indexes().subscribeElementChange(on.index, bad);
  indexes().subscribeElementChange(on.index, good);
  on.platform->run();
  EXPECT_EQ(good->handled().size(), 1u);
}

TEST(IndexService, shouldRefuseAnIndexThatIsMadeOfItselfByItsElementsToo) {
  IndexedRun on;
  const auto refusal = [&](const std::vector<IndexComposition>& compositions) -> std::string {
    try {
      on.platform->addIndexes(compositions);
    } catch (const std::invalid_argument& error) {
      return error.what();
    }
    return {};
  };
  EXPECT_EQ(refusal({composition("I.X", 1, {{"I", 1}})}), "here:1: \"I\" is the index itself");
  EXPECT_EQ(refusal({composition("I.X", 1, {{"A.X", 1}}), composition("A.X", 2, {{"B.X", 1}}),
                     composition("B.X", 3, {{"I.X", 1}})}),
            "here:1: \"B\" is made of itself by way of its elements");
  // Not at the same time: that is none.
  EXPECT_EQ(refusal({composition("I.X", 1, {{"A.X", 1}}), composition("I.X", 2, {{"B.X", 1}}),
                     composition("A.X", 2, {{"I.X", 1}})}),
            "");
  EXPECT_EQ(refusal({composition("I.X", 2, {})}),
            "here:1: \"I.X\" has a composition of that time already");
}

TEST(IndexService, shouldRefuseCodesThatAreNotThereAndElementsThatComeTwice) {
  IndexedRun on;
  const auto refusal = [&](const IndexComposition& wrong) -> std::string {
    try {
      on.platform->addIndexes({composition("C.X", 1, {{"A.X", 1}}), wrong});
    } catch (const std::invalid_argument& error) {
      return error.what();
    }
    return {};
  };
  EXPECT_EQ(refusal(composition("Q.X", 1, {})), "here:1: \"Q.X\" is not a code that is known");
  EXPECT_EQ(refusal(composition("I.X", 1, {{"Q", 1}})),
            "here:1: \"Q\" is not a code that is known");
  EXPECT_EQ(refusal(composition("I.X", 1, {{"A", 1}, {"A.X", 1}})),
            "here:1: \"A.X\" is an element twice");
  // Nothing of a refused list was taken.
  on.platform->run();
  EXPECT_EQ(elementsOf(on.c), "22");
}

TEST(IndexService, shouldBeginWithTheFirstChangeWhenThereIsNoMarketData) {
  InstalledPlatform platform;
  const ICodeID index = platform.code("I");
  platform.code("A");
  platform.code("B");
  platform->addIndexes({composition("I", IndexComposition::kFromTheStart, {{"A", 0.5}}),
                        composition("I", kMonday + kMinute, {{"B", 0.5}}),
                        composition("I", kMonday + 2 * kMinute, {{"A", 1}})});
  EXPECT_EQ(platform->nowUtcMs(), kMonday + kMinute);
  auto spi = std::make_shared<IndexSpi>();
  indexes().subscribeElementChange(index, spi);
  EXPECT_EQ(elementsOf(index), "A*50 ");
  platform->run();
  EXPECT_THAT(spi->handled(), ElementsAre("@0:01 I=B*50 ", "@0:02 I=A*100 "));
}

}  // namespace
}  // namespace orvane::testing
