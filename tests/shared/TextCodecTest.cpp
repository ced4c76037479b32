#include "shared/TextCodec.h"

#include <gtest/gtest.h>

#include "services/Common/CodeConvert.h"
#include "shared/GbkLiteral.h"
#include "tests/shared/Iconv.h"

namespace orvane {
namespace {

using support::gbkFromUtf8;

constexpr const char* kMixed = "合约 IF2101，价格=4.5（上涨）";

TEST(TextCodec, shouldConvertBetweenGbkAndUtf8AsIconvDoes) {
  EXPECT_EQ(utf8ToGbk(kMixed), gbkFromUtf8(kMixed));
  EXPECT_EQ(gbkToUtf8(gbkFromUtf8(kMixed)), kMixed);
  EXPECT_EQ(gbkToUtf8("plain"), "plain");
  EXPECT_EQ(gbkToUtf8(""), "");
}

TEST(TextCodec, shouldKeepWhatStandsAroundABrokenSequence) {
  EXPECT_EQ(gbkToUtf8("a\xFFz"), "a\xEF\xBF\xBDz");
  EXPECT_EQ(utf8ToGbk("a\xFFz"), "a?z");
  // A lead byte with nothing behind it.
  EXPECT_EQ(gbkToUtf8("a\xB2"), "a\xEF\xBF\xBD");
}

TEST(TextCodec, shouldConvertTextsLongerThanItsBuffer) {
  std::string utf8;
  for (int i = 0; i < 3000; ++i) utf8 += "重复订阅";
  const std::string gbk = utf8ToGbk(utf8);
  EXPECT_EQ(gbk, gbkFromUtf8(utf8));
  EXPECT_EQ(gbkToUtf8(gbk), utf8);
}

TEST(TextCodec, shouldMakeGbkWideAndBack) {
  const std::wstring wide = gbkToWide(gbkFromUtf8("加载/模块.so"));
  EXPECT_EQ(wide, L"加载/模块.so");
  EXPECT_EQ(wideToGbk(wide), gbkFromUtf8("加载/模块.so"));
  EXPECT_EQ(CodeConvert::gbk_to_unicode(gbkFromUtf8("策略")), L"策略");
}

TEST(GbkLiteral, shouldBeTheBytesThatIconvMakes) {
  EXPECT_EQ(std::string("不支持"_gbk), gbkFromUtf8("不支持"));
  EXPECT_EQ(std::string("无效合约 "_gbk), gbkFromUtf8("无效合约 "));
  EXPECT_EQ(std::string("plain"_gbk), "plain");
}

}  // namespace
}  // namespace orvane
