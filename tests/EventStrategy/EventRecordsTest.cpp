#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <type_traits>

#include "EventStrategy/EventTypes.h"
#include "EventStrategy/Events.h"
#include "EventStrategy/IEvent.h"

namespace orvane {
namespace {

TEST(EventTypes, shouldNameThe27TypesByTheirBits) {
  const std::map<int, std::string> expected = {{0x0, "UNKNOWN"},
                                               {0x1, "INIT"},
                                               {0x2, "ACCOUNT_STATUS"},
                                               {0x4, "BAR_PROCESS"},
                                               {0x8, "BAR"},
                                               {0x10, "DATA"},
                                               {0x20, "TICK"},
                                               {0x40, "POSITION"},
                                               {0x80, "ORDER"},
                                               {0x100, "FILL"},
                                               {0x200, "TIMER"},
                                               {0x400, "PARAMS"},
                                               {0x800, "READY"},
                                               {0x1000, "BAROPEN"},
                                               {0x2000, "SIGNAL"},
                                               {0x4000, "STRATEGYPOSITION"},
                                               {0x8000, "EVENT"},
                                               {0x10000, "EXIT"},
                                               {0x20000, "CAPITAL"},
                                               {0x40000, "BARCLOSE"},
                                               {0x80000, "ROLLOVER"},
                                               {0x100000, "DATA_DELETED"},
                                               {0x200000, "DIC"},
                                               {0x400000, "DATA_PROCESS"},
                                               {0x800000, "INDEXELEMENT_CHANGE"},
                                               {0x1000000, "DEBUGDATA"},
                                               {0x2000000, "DATASNAPSHOT"}};
  ASSERT_EQ(expected.size(), 27u);
  EXPECT_EQ(EventTypeNames, expected);
}

TEST(EventTypes, shouldHaveTheTradeMask147906) {
  EXPECT_EQ(TradeEventTypeMask, 147906);
  EXPECT_EQ(TradeEventTypeMask, 0x241C2);
}

TEST(EventTypeNames, shouldBeEmptyForAMaskOf0) { EXPECT_EQ(eventTypeNames(0), ""); }

TEST(EventTypeNames, shouldBeEmptyForBitsOutsideTheTradeMaskSuchAs32) {
  EXPECT_EQ(eventTypeNames(32), "");
  EXPECT_EQ(eventTypeNames(0x2000000 | 8 | 512), "");
}

TEST(EventTypeNames, shouldNameTheBitsInAscendingOrderOfCode) {
  EXPECT_EQ(eventTypeNames(0x142), "ACCOUNT_STATUS|POSITION|FILL");
  EXPECT_EQ(eventTypeNames(0x100 | 0x40 | 0x2), "ACCOUNT_STATUS|POSITION|FILL");
  EXPECT_EQ(eventTypeNames(TradeEventTypeMask),
            "ACCOUNT_STATUS|POSITION|ORDER|FILL|STRATEGYPOSITION|CAPITAL");
  EXPECT_EQ(eventTypeNames(-1), eventTypeNames(TradeEventTypeMask));
}

TEST(EventRecords, shouldCarryTheirTypeFromConstruction) {
  EXPECT_EQ(AccountStatusEvent().type, 2);
  EXPECT_EQ(BarProcessEvent().type, 4);
  EXPECT_EQ(BarEvent().type, 8);
  EXPECT_EQ(DataEvent().type, 16);
  EXPECT_EQ(TickEvent().type, 32);
  EXPECT_EQ(PositionEvent().type, 64);
  EXPECT_EQ(OrderEvent().type, 128);
  EXPECT_EQ(FillEvent().type, 256);
  EXPECT_EQ(TimerEvent().type, 512);
  EXPECT_EQ(StrategyPositionEvent().type, 16384);
  EXPECT_EQ(GeneralEvent().type, 32768);
  EXPECT_EQ(CapitalEvent().type, 131072);
  EXPECT_EQ(RolloverEvent().type, 524288);
  EXPECT_EQ(DataDeletedEvent().type, 1048576);
  EXPECT_EQ(DataProcessEvent().type, 4194304);
  EXPECT_EQ(IndexElementChangeEvent().type, 8388608);
  EXPECT_EQ(DataSnapshotEvent().type, 33554432);
}

TEST(EventRecords, shouldHaveTheirDefaults) {
  EXPECT_EQ(AccountStatusEvent().info.statusCode, 0);
  EXPECT_EQ(AccountStatusEvent().account.counterType, -1);
  EXPECT_EQ(BarProcessEvent().requestId, -1);
  EXPECT_EQ(BarProcessEvent().code.id, 0);
  const BarEvent bar;
  EXPECT_EQ(bar.requestId, -1);
  EXPECT_TRUE(bar.bars.empty());
  EXPECT_TRUE(bar.ticks.empty());
  EXPECT_EQ(bar.status, ResultStatus());
  EXPECT_EQ(bar.batchFlag, 0);
  EXPECT_FALSE(bar.isTick);
  const DataEvent data;
  EXPECT_EQ(data.requestId, -1);
  EXPECT_TRUE(data.records.empty());
  EXPECT_EQ(static_cast<int>(data.valueType), 0);
  EXPECT_EQ(data.batchFlag, 0);
  EXPECT_EQ(data.batchTag, 0);
  EXPECT_EQ(TickEvent().requestId, -1);
  EXPECT_EQ(RolloverEvent().requestId, -1);
  EXPECT_EQ(RolloverEvent().coefficient.value, 0);
  EXPECT_TRUE(RolloverEvent().coefficient.items.empty());
  EXPECT_TRUE(IndexElementChangeEvent().elements.empty());
  EXPECT_EQ(DataSnapshotEvent().record, Record());
}

TEST(EventRecords, shouldReleaseAllTheyHoldWhenDeletedThroughTheBase) {
  // A leak check of the process is what this test is for: the nested members are all non-empty.
  auto tick = std::make_unique<TickEvent>();
  for (int i = 0; i < 100; ++i) tick->quote.extras[i] = std::string(100, 'x');
  auto status = std::make_unique<AccountStatusEvent>();
  status->info.login.list1.push_back({std::string(100, 'a'), "b", "c", "d"});
  status->info.login.list2.push_back({std::string(100, 'a'), "b", "c", "d"});
  status->info.login.names.push_back(std::string(100, 'n'));
  status->info.accounts.resize(3);
  status->info.accounts[1].account = std::string(100, 'q');

  struct Probe : TickEvent {
    explicit Probe(bool& flag) : gone(flag) {}
    ~Probe() override { gone = true; }
    bool& gone;
  };
  bool gone = false;
  std::unique_ptr<IEvent> base = std::make_unique<Probe>(gone);
  base.reset();
  EXPECT_TRUE(gone);
  base = std::move(tick);
  base.reset();
  base = std::move(status);
  base.reset();
  EXPECT_FALSE(base);
}

TEST(EventRecords, shouldDeriveFromIEventDirectly) {
  EXPECT_TRUE((std::is_base_of_v<IEvent, DataSnapshotEvent>));
  EXPECT_TRUE(std::has_virtual_destructor_v<IEvent>);
}

}  // namespace
}  // namespace orvane
