// A trade service that keeps every call-back and uses it at the worst moments, on its own threads.

#include <atomic>
#include <latch>
#include <thread>

#include "EventStrategy/Events.h"
#include "tests/EventStrategy/CollectingStrategy.h"
#include "tests/EventStrategy/TradeSrcFixture.h"
#include "tests/support/HostThread.h"

namespace orvane::support {
namespace {

/// Every call-back that carries something, once.
void callEverything(TradeEventSpi& spi, const TradingAccountID& account) {
  AccountStatusInfo info;
  info.statusCode = 16;
  info.accounts = {account};
  Order order;
  order.id = 1;
  order.status() = 3;
  spi.onRtnOrder(order);
  spi.onRtnTrade({});
  spi.onRtnPosition({});
  spi.onRtnPositionChange({});
  spi.onRtnSourcePosition({});
  spi.onRtnCapital({});
  spi.onRspStatus({}, info);
}

class TradeSrcThreads : public TradeSrcTest {
 protected:
  OrderRequest requestFor(int64 codeId) const {
    OrderRequest request;
    request.account = account;
    request.code = codeOf(codeId);
    request.source.createSource = "own";
    return request;
  }
};

TEST_F(TradeSrcThreads, shouldNotCallBackAfterTheListenerIsGoneWhicheverThreadTheServiceUses) {
  std::atomic<bool> stop{false};
  std::latch running{1};
  std::thread service([&] {
    running.count_down();
    while (!stop) callEverything(*source, account);
  });
  running.wait();
  for (int round = 0; round < 200; ++round) {
    auto listener = std::make_unique<RecordingTradeNotify>();
    source->setNotify(listener.get());
    source->setNotify(nullptr);
    listener.reset();  // A call-back in flight would touch it.
  }
  source->release();
  stop = true;
  service.join();
  EXPECT_EQ(source.use_count(), 1);
}

TEST_F(TradeSrcThreads, shouldReplayNothingForALateCallAfterTheUnsubscribe) {
  source->subscribeTrade(account);
  const std::shared_ptr<TradeEventSpi> kept = platform.trade().spi();
  source->unsubscribeTrade(account);
  platform.calls.clear();
  notify.take();
  onAnotherThread([&] { callEverything(*kept, account); });
  EXPECT_THAT(tradeCalls(), IsEmpty());
  EXPECT_EQ(notify.take().back(), "status 16");
  source->subscribeTrade(account);  // And it can be subscribed again.
  EXPECT_TRUE(marks().snapshotSent);
}

TEST_F(TradeSrcThreads, shouldReplayNothingForALateCallAfterTheRelease) {
  source->subscribeTrade(account);
  const std::shared_ptr<TradeEventSpi> kept = platform.trade().spi();
  source->setNotify(nullptr);
  source->release();
  platform.calls.clear();
  onAnotherThread([&] { callEverything(*kept, account); });
  EXPECT_THAT(platform.calls.entries(), IsEmpty());
  EXPECT_THAT(notify.take(), IsEmpty());
}

TEST_F(TradeSrcThreads, shouldBearCallsThatComeAfterItsOwnerIsGoneAndGoWithTheLastReference) {
  auto strategy = std::make_unique<CollectingStrategy>();
  strategy->startEvent();
  strategy->subscribeTrade(account);
  const std::weak_ptr<ITradeSrc> watched = strategy->tradeSrc();
  std::shared_ptr<TradeEventSpi> kept = platform.trade().spi();
  platform.trade().forget();
  strategy->stopEvent();
  strategy.reset();
  EXPECT_FALSE(watched.expired());  // The service's reference keeps it.
  onAnotherThread([&, kept = std::move(kept)]() mutable {
    callEverything(*kept, account);
    kept.reset();
  });
  EXPECT_TRUE(watched.expired());
}

TEST_F(TradeSrcThreads, shouldFindNothingThroughAWeakReferenceOnceItsOwnerIsGone) {
  auto strategy = std::make_unique<CollectingStrategy>();
  strategy->subscribeTrade(account);
  const std::weak_ptr<TradeEventSpi> kept = platform.trade().spi();
  platform.trade().forget();
  onAnotherThread([&] { EXPECT_NE(kept.lock(), nullptr); });
  strategy.reset();
  onAnotherThread([&] { EXPECT_EQ(kept.lock(), nullptr); });
}

TEST_F(TradeSrcThreads, shouldLetAServiceDropItsLastReferenceInsideTheCallThatWithdraws) {
  source->subscribeTrade(account);
  source->setNotify(nullptr);
  for (const char* operation : {"trade.unsubscribeAccount", "trade.unsubscribeAll"})
    platform.calls.onCall(operation, [&] { onAnotherThread([&] { platform.trade().forget(); }); });
  source->unsubscribeTrade(account);
  source->release();
  EXPECT_EQ(source.use_count(), 1);
}

TEST_F(TradeSrcThreads, shouldNotDetachBeforeACallBackInProgressHasReturned) {
  std::latch inside{1};
  std::latch leave{1};
  std::atomic<bool> returned{false};
  notify.onLine = [&](const std::string&) {
    inside.count_down();
    leave.wait();
    returned = true;
  };
  std::thread service([&] { static_cast<TradeDataSpi&>(*source).onRtnOrder(orderOf(1)); });
  inside.wait();
  {
    HostThread host([&] {
      source->setNotify(nullptr);
      EXPECT_TRUE(returned);
    });
    EXPECT_TRUE(host.awaitSleep());
    leave.count_down();
  }
  service.join();
  notify.onLine = {};
}

TEST_F(TradeSrcThreads, shouldNotWithdrawBeforeACallBackInProgressHasReturned) {
  source->subscribeTrade(account);
  notify.take();
  std::latch inside{1};
  std::latch leave{1};
  std::atomic<bool> returned{false};
  notify.onLine = [&](const std::string&) {
    inside.count_down();
    leave.wait();
    returned = true;
  };
  bool seen = false;
  platform.calls.onCall("trade.unsubscribeAll", [&] { seen = returned; });
  std::thread service([&] { static_cast<TradeDataSpi&>(*source).onRtnTrade(fillOf("f")); });
  inside.wait();
  {
    HostThread host([&] { source->release(); });
    EXPECT_TRUE(host.awaitSleep());
    leave.count_down();
  }
  service.join();
  EXPECT_TRUE(seen);
  platform.calls.onCall("trade.unsubscribeAll", {});
  notify.onLine = {};
}

TEST_F(TradeSrcThreads, shouldNeverMixALiveEventOfAnotherThreadIntoAReplay) {
  platform.trade().orders = {orderOf(1), orderOf(2)};
  platform.trade().positions = {positionOf(1)};
  std::latch started{1};
  std::thread service;
  platform.calls.onCall("trade.getPositions", [&] {
    service = std::thread([&] {
      started.count_down();
      static_cast<TradeDataSpi&>(*source).onRtnOrder(orderOf(77));
    });
    started.wait();
  });
  source->subscribeTrade(account);
  service.join();
  platform.calls.onCall("trade.getPositions", {});
  EXPECT_THAT(notify.take(), ElementsAre("position 1", "order 1", "order 2", "order 77"));
}

TEST_F(TradeSrcThreads, shouldDeliverACallBackThatComesWhileTheServiceTakesAnOrder) {
  source->subscribeTrade(account);
  notify.take();
  platform.calls.onCall("trade.sendOrder", [&] {
    onAnotherThread([&] { static_cast<TradeDataSpi&>(*source).onRtnOrder(orderOf(5)); });
  });
  std::list<Order> orders;
  source->sendOrder(requestFor(9), orders);
  platform.calls.onCall("trade.sendOrder", {});
  EXPECT_THAT(notify.take(), ElementsAre("order 5"));
}

TEST_F(TradeSrcThreads, shouldLetAListenerBeCalledWhileAPlainForwardIsUnderWay) {
  platform.calls.onCall("trade.getPositions", [&] {
    onAnotherThread([&] { static_cast<TradeDataSpi&>(*source).onRtnCapital({}); });
  });
  source->getPositions(account);
  platform.calls.onCall("trade.getPositions", {});
  EXPECT_THAT(notify.take(), ElementsAre("capital"));
}

TEST_F(TradeSrcThreads, shouldSubscribeAConditionWhileAnotherThreadAttachesAndDetaches) {
  std::latch ready{2};
  std::thread host([&] {
    ready.arrive_and_wait();
    for (int i = 0; i < 200; ++i) source->setNotify(i % 2 == 0 ? nullptr : &notify);
  });
  std::thread strategy([&] {
    ready.arrive_and_wait();
    for (int i = 0; i < 200; ++i) {
      source->subDetail({});
      source->unsubAllDetail();
    }
  });
  host.join();
  strategy.join();
  EXPECT_EQ(platform.calls.count("cond.subscribeDetail"), 200);
}

TEST_F(TradeSrcThreads, shouldKeepItsTablesWholeWhileEveryOperationRunsAtOnce) {
  constexpr int kRounds = 40;
  const TradingAccountID other = accountOf(6, "other");
  platform.trade().orders = {orderOf(1, 3), orderOf(2, 1)};
  platform.trade().fills = {fillOf("a")};
  std::latch ready{5};
  const auto repeat = [&](auto work) {
    return std::thread([&ready, work] {
      ready.arrive_and_wait();
      for (int round = 0; round < kRounds; ++round) work(round);
    });
  };
  std::thread threads[] = {
      repeat([&](int) { callEverything(*source, account); }),
      repeat([&](int) { callEverything(*source, other); }), repeat([&](int round) {
        source->subscribeTrade(round % 2 == 0 ? account : other);
        std::list<Order> orders;
        source->sendOrder(requestFor(round % 5), orders);
        source->unsubscribeTrade(round % 3 == 0 ? account : other);
      }),
      repeat([&](int round) {
        source->onRelatedCodeIdChange({codeOf(round % 4), codeOf(9)});
        source->addSubscribeTradeByCreateSource("own", std::to_string(round % 3));
        source->addSubscribeTradeByCreateId("own", 1 << (round % 8));
        source->setNotifyQuick(round % 2 == 0);
      }),
      repeat([&](int round) {
        source->setNotify(round % 2 == 0 ? nullptr : &notify);
        source->setName("stg" + std::to_string(round % 2));
        if (round % 10 == 9) source->release();
      })};
  for (std::thread& thread : threads) thread.join();

  // What is left works as ever.
  source->release();
  source->resetCache();
  configure(kEverything);
  source->setRelatedCodeId({codeOf(1)});
  source->setNotify(&notify);
  notify.take();
  platform.calls.clear();
  source->subscribeTrade(account);
  EXPECT_EQ(platform.calls.count("trade.subscribe"), 6);
  EXPECT_THAT(notify.take(), ElementsAre("order 2"));
  tellStatus(16);
  EXPECT_THAT(notify.take(), ElementsAre("order 2", "status 16"));
}

}  // namespace
}  // namespace orvane::support
