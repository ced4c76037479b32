// Records and quotes that strategies make to publish.

#include <gtest/gtest.h>
#include <orvane/sdk/Records.h>
#include <orvane/sdk/Views.h>

namespace orvane {
namespace {

TEST(KitRecords, shouldCarryFieldsThroughTheTextOfARecordInGbk) {
  const Record record = jsonRecord(5, {{"mean", 1.5}, {"who", QString::fromUtf8("均线")}});
  EXPECT_EQ(record.key, 5);
  EXPECT_EQ(record.text, "{\"mean\":1.5,\"who\":\"\xBE\xF9\xCF\xDF\"}");
  const QJsonObject fields = recordFields(record);
  EXPECT_EQ(fields["mean"].toDouble(), 1.5);
  EXPECT_EQ(fields["who"].toString(), QString::fromUtf8("均线"));
}

TEST(KitRecords, shouldHaveNoFieldsWhenARecordsTextIsNoObject) {
  for (const char* text : {"", "plain", "[1]", "{"})
    EXPECT_TRUE(recordFields({1, 0, text}).isEmpty()) << text;
}

TEST(KitRecords, shouldReadTheQueueDepthFromAnAnswerThatWentWellAlone) {
  EXPECT_EQ(queueDepth({0, "17"}), 17);
  EXPECT_EQ(queueDepth({0, ""}), 0);
  EXPECT_EQ(queueDepth({23, "17"}), -1);
}

TEST(KitRecords, shouldMakeAQuoteOfOneTrade) {
  ICodeID code;
  code.id = 3;
  const IDepthMarketData made = tradeQuote(code, 1000, 2.5, 7);
  const QuoteView view(made);
  EXPECT_EQ(made.code.id, 3);
  EXPECT_EQ(view.time(), 1000);
  EXPECT_TRUE(view.hasTrade());
  EXPECT_FALSE(view.hasBid());
  EXPECT_EQ(view.lastPrice(), 2.5);
  EXPECT_EQ(view.volume(), 7);
}

}  // namespace
}  // namespace orvane
