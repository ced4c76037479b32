// The source of index changes against a service that keeps every shared pointer, calls back when
// it likes and throws: random sequences beside a model of its set, and the worst moments.

#include <atomic>
#include <latch>
#include <random>
#include <stdexcept>
#include <thread>

#include "EventStrategy/IndexSrc.h"
#include "tests/EventStrategy/LibraryTest.h"
#include "tests/EventStrategy/RecordingEventNotify.h"
#include "tests/support/RandomRuns.h"

namespace orvane::support {
namespace {

const char* const kSubscriptionCalls[] = {"index.subscribeElementChange",
                                          "index.unsubscribeElementChange"};

void tell(IndexTradeSpi& spi, int64 code) {
  std::list<IndexTradeElement> elements = {{codeOf(3), 30}};
  spi.onElementChange(codeOf(code, "X"), elements);
}

std::string heard(int64 code) { return std::to_string(code) + " X [3=30,]"; }

/// One source, its model, and the draws of one sequence. The source's mutex keeps out whoever calls
/// back from another thread during an operation, so what comes then is judged after it.
class IndexWorld {
 public:
  IndexWorld(FakePlatform& platform, unsigned seed) : platform_(platform), random_(seed) {
    src_->setNotify(&notify_);
    for (const char* operation : kSubscriptionCalls)
      platform_.calls.onCall(operation, [this] { act(); });
  }
  ~IndexWorld() {
    for (const char* operation : kSubscriptionCalls) platform_.calls.onCall(operation, {});
    src_->setNotify(nullptr);
    platform_.forgetSpis();
  }

  /// One random operation under a random mood of the service; then everything is compared.
  void step() {
    platform_.calls.clear();
    calls_.clear();
    deliveries_.clear();
    mood_ = static_cast<Mood>(std::min(below(8), 2));
    const bool threw = operate();
    if (caller_.joinable()) {
      caller_.join();
      expect(callersSpi_, callersCode_);
    }
    EXPECT_EQ(threw, mood_ == Mood::Throws && !calls_.empty());
    EXPECT_EQ(platform_.calls.entries("index."), calls_);
    EXPECT_EQ(notify_.take(), deliveries_);
    std::set<int64> ids;
    for (const ICodeID& code : TestAccess::codes(*src_)) ids.insert(code.id);
    EXPECT_EQ(ids, codes_);
    thrown += threw ? 1 : 0;
    delivered += static_cast<int>(deliveries_.size());
  }

  int delivered = 0, dropped = 0, thrown = 0, replaced = 0;

 private:
  enum class Mood { Throws, CallsFromAThread, Calm };

  int below(int limit) { return static_cast<int>(random_() % static_cast<unsigned>(limit)); }
  bool throws() const { return mood_ == Mood::Throws; }

  bool operate() {
    try {
      switch (below(12)) {
        case 0:
        case 1:
        case 2:
        case 3:
          subscribe(below(4));
          break;
        case 4:
        case 5:
          unsubscribe(below(4));
          break;
        case 6:
          withdrawAll();
          src_->unsubscribeAll();
          break;
        case 7:
          withdrawAll();
          src_->release();
          break;
        case 8:
          attach(below(3) > 0);
          break;
        case 9:
          replace();
          break;
        default:
          callBack(below(4));
          callBack(below(4));
      }
      return false;
    } catch (const std::runtime_error&) {
      return true;
    }
  }

  void subscribe(int64 code) {
    codes_.insert(code);
    calls_.push_back("index.subscribeElementChange " + std::to_string(code));
    src_->subscribeElementChange(codeOf(code, "C"));
  }

  void unsubscribe(int64 code) {
    calls_.push_back("index.unsubscribeElementChange " + std::to_string(code));
    if (!throws()) codes_.erase(code);
    src_->unsubscribeElementChange(codeOf(code, "D"));
  }

  void withdrawAll() {
    for (const int64 code : codes_)
      calls_.push_back("index.unsubscribeElementChange " + std::to_string(code));
    codes_.clear();
  }

  void attach(bool attached) {
    attached_ = attached;
    src_->setNotify(attached ? &notify_ : nullptr);
  }

  /// The owner goes and another comes; the service still has the old source's pointers.
  void replace() {
    ++replaced;
    attach(false);
    withdrawAll();
    const auto old = std::exchange(src_, std::make_shared<IndexSrc>());
    attach(true);
    old->release();
  }

  /// What the service does inside a call.
  void act() {
    if (throws()) throw std::runtime_error("hostile");
    if (mood_ != Mood::CallsFromAThread || caller_.joinable()) return;
    callersCode_ = below(4);
    callersSpi_ = drawSpi();
    caller_ = std::thread([spi = callersSpi_, code = callersCode_] { tell(*spi, code); });
  }

  void callBack(int64 code) {
    const auto spi = drawSpi();
    expect(spi, code);
    tell(*spi, code);
  }

  std::shared_ptr<IndexTradeSpi> drawSpi() {
    const auto spis = platform_.indexes.spis();
    if (spis.empty()) return src_;
    return spis[static_cast<std::size_t>(below(static_cast<int>(spis.size())))];
  }

  void expect(const std::shared_ptr<IndexTradeSpi>& spi, int64 code) {
    if (attached_ && spi.get() == src_.get() && codes_.contains(code))
      deliveries_.push_back(heard(code));
    else
      ++dropped;
  }

  FakePlatform& platform_;
  std::mt19937 random_;
  RecordingEventNotify notify_;
  std::shared_ptr<IndexSrc> src_ = std::make_shared<IndexSrc>();
  std::set<int64> codes_;
  bool attached_ = true;
  std::vector<std::string> calls_;       ///< What the service must be asked, in this step.
  std::vector<std::string> deliveries_;  ///< What the notify must hear, in this step.
  std::thread caller_;
  std::shared_ptr<IndexTradeSpi> callersSpi_;
  int64 callersCode_ = 0;
  Mood mood_ = Mood::Calm;
};

class IndexSrcHostility : public LibraryTest {
 protected:
  IndexSrcHostility() { src->setNotify(&notify); }
  ~IndexSrcHostility() override {
    for (const char* operation : kSubscriptionCalls) platform.calls.onCall(operation, {});
    src->setNotify(nullptr);
    platform.forgetSpis();
  }

  RecordingEventNotify notify;
  std::shared_ptr<IndexSrc> src = std::make_shared<IndexSrc>();
};

TEST_F(IndexSrcHostility, shouldAgreeWithItsModelWhateverTheServiceDoes) {
  const int runs = randomRuns(500);
  int delivered = 0, dropped = 0, thrown = 0, replaced = 0;
  for (int run = 1; run <= runs && !HasFailure(); ++run) {
    SCOPED_TRACE("seed " + std::to_string(run));
    IndexWorld world(platform, static_cast<unsigned>(run));
    for (int i = 0; i < 50 && !HasFailure(); ++i) world.step();
    delivered += world.delivered;
    dropped += world.dropped;
    thrown += world.thrown;
    replaced += world.replaced;
    logs.clear();
  }
  EXPECT_GT(delivered, runs / 5);
  EXPECT_GT(dropped, runs);
  EXPECT_GT(thrown, runs / 4);
  EXPECT_GT(replaced, runs / 2);
}

TEST_F(IndexSrcHostility, shouldDeliverAChangeThatComesTwiceTwice) {
  src->subscribeElementChange(codeOf(7));
  for (int i = 0; i < 2; ++i) onAnotherThread([this] { tell(*platform.indexes.spi(), 7); });
  EXPECT_THAT(notify.take(), ElementsAre(heard(7), heard(7)));
}

TEST_F(IndexSrcHostility, shouldDropWhatComesDuringAnUnsubscribeOrARelease) {
  std::thread late;
  int calls = 0;
  platform.calls.onCall("index.unsubscribeElementChange", [&] {
    ++calls;
    late = std::thread([this] { tell(*src, 7); });
  });
  src->subscribeElementChange(codeOf(7));
  src->unsubscribeElementChange(codeOf(7));
  late.join();
  src->subscribeElementChange(codeOf(7));
  src->release();
  late.join();
  EXPECT_EQ(calls, 2);
  EXPECT_THAT(notify.take(), IsEmpty());
}

TEST_F(IndexSrcHostility, shouldLiveUntilTheServiceLetsGoAndDeliverNothingOnceItsOwnerIsGone) {
  src->subscribeElementChange(codeOf(7));
  const std::weak_ptr<IndexSrc> watched = src;
  src->setNotify(nullptr);
  src->release();
  src = std::make_shared<IndexSrc>();
  ASSERT_FALSE(watched.expired());
  for (const auto& spi : platform.indexes.spis()) tell(*spi, 7);
  EXPECT_THAT(notify.take(), IsEmpty());
  platform.forgetSpis();
  EXPECT_TRUE(watched.expired());
}

TEST_F(IndexSrcHostility, shouldLetAnExceptionOfTheServiceThroughAndFreeItsMutex) {
  for (const char* operation : kSubscriptionCalls)
    platform.calls.onCall(operation, [] { throw std::runtime_error("hostile"); });
  EXPECT_THROW(src->subscribeElementChange(codeOf(7)), std::runtime_error);
  EXPECT_THROW(src->unsubscribeElementChange(codeOf(7)), std::runtime_error);
  EXPECT_EQ(TestAccess::codes(*src).size(), 1u);
  EXPECT_TRUE(TestAccess::mutexIsFree(*src));
}

TEST_F(IndexSrcHostility, shouldWithdrawTheRestWhenOneWithdrawalThrowsAndThenThrowTheFirst) {
  for (const int64 code : {7, 8, 9}) src->subscribeElementChange(codeOf(code));
  platform.calls.clear();
  int calls = 0;
  platform.calls.onCall("index.unsubscribeElementChange",
                        [&calls] { throw std::runtime_error("call " + std::to_string(++calls)); });
  std::string thrown;
  try {
    src->release();
  } catch (const std::runtime_error& error) {
    thrown = error.what();
  }
  EXPECT_EQ(thrown, "call 1");
  EXPECT_EQ(platform.calls.count("index."), 3);
  EXPECT_TRUE(TestAccess::codes(*src).empty());
  EXPECT_TRUE(TestAccess::mutexIsFree(*src));
}

TEST_F(IndexSrcHostility, shouldDeliverNothingAfterADetachWhileManyThreadsCallBack) {
  constexpr int kThreads = 4;
  constexpr int kCalls = 2000;
  src->subscribeElementChange(codeOf(7));
  std::atomic<bool> over{false};
  std::atomic<bool> detached{false};
  std::atomic<int> heardTooLate{0};
  std::latch go(kThreads + 1);
  notify.hook = [&] { heardTooLate += detached ? 1 : 0; };
  std::vector<std::thread> service;
  for (int i = 0; i < kThreads; ++i)
    service.emplace_back([&, spi = platform.indexes.spi()] {
      go.arrive_and_wait();
      for (int n = 0; n < kCalls && !over; ++n) tell(*spi, 7);
    });
  go.arrive_and_wait();
  for (int round = 0; round < 20; ++round) {
    src->unsubscribeAll();
    src->subscribeElementChange(codeOf(7));
  }
  src->setNotify(nullptr);
  detached = true;
  src->release();
  src = std::make_shared<IndexSrc>();  // The owner goes; the service still calls.
  platform.forgetSpis();
  over = true;
  for (std::thread& thread : service) thread.join();
  EXPECT_EQ(heardTooLate, 0);
}

}  // namespace
}  // namespace orvane::support
