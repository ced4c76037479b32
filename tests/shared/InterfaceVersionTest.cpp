#include "shared/InterfaceVersion.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "shared/AccountRecords.h"
#include "shared/CodeProperty.h"
#include "shared/DictionaryRecords.h"
#include "shared/EnvItem.h"
#include "shared/ICodeID.h"
#include "shared/MarketRecords.h"
#include "shared/ResultStatus.h"
#include "shared/TradeRecords.h"

namespace orvane {
namespace {

TEST(InterfaceVersion, shouldRiseWhenARecordOfTheContractChangesItsSize) {
  // Whoever changes a size here makes the number one larger.
  ASSERT_EQ(kInterfaceVersion, 1);
  const std::vector<std::size_t> sizes = {
      sizeof(ResultStatus),     sizeof(ICodeID),        sizeof(TradingAccountID),
      sizeof(IDepthMarketData), sizeof(IKLine),         sizeof(KLineProgress),
      sizeof(OrderRequest),     sizeof(Order),          sizeof(OrderFill),
      sizeof(Position),         sizeof(SourcePosition), sizeof(TradingAccount),
      sizeof(Record),           sizeof(EnvItem)};
  EXPECT_THAT(sizes, testing::ElementsAre(40U, 48U, 160U, 568U, 88U, 64U, 648U, 920U, 592U, 952U,
                                          1024U, 496U, 48U, 104U));
}

}  // namespace
}  // namespace orvane
