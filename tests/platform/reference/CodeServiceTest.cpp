#include "platform/reference/CodeService.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>
#include <fstream>

#include "platform/reference/InstrumentFile.h"
#include "shared/BaseInformation.h"
#include "shared/TextCodec.h"

namespace orvane::detail {
namespace {

class CodeServiceTest : public ::testing::Test {
 protected:
  ICodeID add(const std::string& code, const std::string& market,
              std::vector<std::string> categories = {}) {
    Instrument instrument;
    instrument.code = code;
    instrument.market = market;
    instrument.priceTick = "0.20";
    instrument.multiplier = "300";
    instrument.categories = std::move(categories);
    return service.add(instrument);
  }
  int64 now = 1000;
  CodeService service{[this] { return now; }, "Asia/Shanghai"};
};

std::vector<int64> idsOf(const std::list<ICodeID>& codes) {
  std::vector<int64> ids;
  for (const ICodeID& code : codes) ids.push_back(code.id);
  return ids;
}

using Ids = std::vector<int64>;

TEST_F(CodeServiceTest, shouldNumberCodesAndMarketsAndPublishTheNames) {
  EXPECT_EQ(add("IF2101", "CFFEX").id, 1);
  EXPECT_EQ(add("rb2105", "SHFE").id, 2);
  EXPECT_EQ(add("BTC", "").id, 3);
  const ICodeID again = add("IF2101", "CFFEX");
  EXPECT_EQ(again.id, 1);
  EXPECT_EQ(again.market, 1);
  EXPECT_EQ(again.kind, CodeService::kKind);
  ASSERT_NE(gBaseInformationMap, nullptr);
  EXPECT_EQ(gBaseInformationMap->markets.at(1).name, "CFFEX");
  EXPECT_EQ(gBaseInformationMap->markets.at(2).name, "SHFE");
  EXPECT_EQ(gBaseInformationMap->markets.at(3).name, "");
}

TEST_F(CodeServiceTest, shouldKeepAGivenIdAndRefuseATakenOne) {
  Instrument instrument;
  instrument.code = "A";
  instrument.id = 41;
  EXPECT_EQ(service.add(instrument).id, 41);
  EXPECT_EQ(add("B", "").id, 42);
  instrument.code = "C";
  EXPECT_THROW(service.add(instrument), std::invalid_argument);
}

TEST_F(CodeServiceTest, shouldFindCodesByTextWithAndWithoutMarket) {
  add("X", "M1");
  add("X", "M2");
  add("EUR.USD", "FX");
  add("BTC", "");
  ICodeID code;
  EXPECT_EQ(service.codeIdOf("X.M2", code).code, 0);
  EXPECT_EQ(code.id, 2);
  EXPECT_EQ(service.codeIdOf("X", code).code, 22);
  EXPECT_EQ(service.codeIdOf("EUR.USD", code).code, 0);
  EXPECT_EQ(service.codeIdOf("EUR.USD.FX", code).code, 0);
  EXPECT_EQ(service.codeIdOf("BTC", code).code, 0);
  EXPECT_EQ(service.codeIdOf("BTC.", code).code, 0);
  EXPECT_EQ(code.id, 4);
  EXPECT_EQ(service.codeServiceQuery("nothing", code, 0).code, 22);
  std::string name;
  EXPECT_EQ(service.codeNameOf(code, name).code, 0);
  EXPECT_EQ(name, "BTC");
  code.id = 99;
  EXPECT_EQ(service.codeNameOf(code, name).code, 22);
}

TEST_F(CodeServiceTest, shouldAnswerQueriesByKindMarketAndPrefix) {
  add("IF2101", "CFFEX");
  add("IF2102", "CFFEX");
  add("rb2105", "SHFE");
  std::list<ICodeID> codes;
  service.codeQueryA(1, codes);
  EXPECT_EQ(idsOf(codes), (Ids{1, 2, 3}));
  service.codeQueryA(7, codes);
  EXPECT_TRUE(codes.empty());
  EXPECT_EQ(service.codeQueryB(1, 1, 1, codes).code, 0);
  EXPECT_EQ(idsOf(codes), (Ids{1}));
  service.codeQueryC(1, 1, codes);
  EXPECT_EQ(idsOf(codes), (Ids{1, 2}));
  EXPECT_EQ(service.codeQueryC(1, 9, codes).code, 22);
  service.codeRangeQuery("IF", 1, 5, codes, 0);
  EXPECT_EQ(idsOf(codes), (Ids{2}));
  std::string name;
  int market = 0;
  EXPECT_EQ(service.codeQueryD(2, name).code, 0);
  EXPECT_EQ(name, "SHFE");
  EXPECT_EQ(service.codeQueryE("CFFEX", market).code, 0);
  EXPECT_EQ(market, 1);
  EXPECT_EQ(service.codeQueryE("?", market).code, 22);
  std::list<int> markets;
  service.markets(1, markets);
  EXPECT_EQ(markets, (std::list<int>{1, 2}));
  service.markets(7, markets);
  EXPECT_TRUE(markets.empty());
}

TEST_F(CodeServiceTest, shouldFillPropertiesFromTheInstrument) {
  const ICodeID code = add("IF2101", "CFFEX");
  ICodeProperty property;
  EXPECT_EQ(service.currentCodeProperty(code, property, kUnsetTime).code, 0);
  EXPECT_EQ(property.code.id, 1);
  EXPECT_EQ(property.timeZone, "Asia/Shanghai");
  EXPECT_EQ(property.priceTick, 0.2);
  EXPECT_EQ(property.multiplier, 300);
  EXPECT_EQ(property.lotSize, 1);
  EXPECT_EQ(property.decimals, 1);
  EXPECT_EQ(property.time, 0);
  std::list<ICodeProperty> all;
  EXPECT_EQ(service.codeQueryF(1, all, kUnsetTime).code, 0);
  EXPECT_EQ(all.size(), 1u);
}

TEST_F(CodeServiceTest, shouldKeepTheHistoryOfPropertiesThatAUserChanged) {
  const ICodeID code = add("IF2101", "CFFEX");
  ICodeProperty property;
  service.currentCodeProperty(code, property, kUnsetTime);
  property.multiplier = 500;
  EXPECT_EQ(service.correctUserProp(property).code, 0);
  EXPECT_EQ(service.setUserCodeProperties({property}).code, 0);
  EXPECT_EQ(service.codePropertyAt(1, property, 999).code, 0);
  EXPECT_EQ(property.multiplier, 300);
  EXPECT_EQ(property.time, 999);
  service.codePropertyAt(1, property, 1000);
  EXPECT_EQ(property.multiplier, 500);
  service.currentCodeProperty(code, property, kUnsetTime);
  EXPECT_EQ(property.multiplier, 500);
  std::vector<ITimeCodeProp> history;
  EXPECT_EQ(service.historyCodeProperties(code, history, 0).code, 0);
  ASSERT_EQ(history.size(), 2u);
  EXPECT_EQ(history[1].time, 1000);
  EXPECT_EQ(service.codePropertyAt(77, property, 0).code, 22);
}

TEST_F(CodeServiceTest, shouldRefuseWrongUserPropertiesAndNameTheField) {
  const ICodeID code = add("IF2101", "CFFEX");
  ICodeProperty property;
  service.currentCodeProperty(code, property, kUnsetTime);
  ICodeProperty wrong = property;
  wrong.lotSize = 0;
  const ResultStatus status = service.correctUserProp(wrong);
  EXPECT_EQ(status.code, -2);
  EXPECT_NE(status.message.find("lotSize"), std::string::npos);
  wrong = property;
  wrong.timeZone = "Nowhere";
  EXPECT_EQ(service.correctUserProp(wrong).code, -2);
  wrong = property;
  wrong.code = ICodeID();
  wrong.code.code = "Z";
  EXPECT_EQ(service.correctUserProp(wrong).code, 22);
}

TEST_F(CodeServiceTest, shouldResolveLinksAndLeaveWhatHasNoneItself) {
  const ICodeID plain = add("IF2101", "CFFEX");
  Instrument continuous;
  continuous.code = "IF";
  continuous.market = "CFFEX";
  continuous.dominant = "IF2101.CFFEX";
  continuous.underlying = "missing";
  const ICodeID code = service.add(continuous);
  ICodeID resolved;
  EXPECT_EQ(service.resolveDominant(code, resolved).code, 0);
  EXPECT_EQ(resolved.id, plain.id);
  EXPECT_EQ(service.resolveUnderlying(code, resolved).code, 22);
  EXPECT_EQ(service.resolveContinuous(plain, resolved).code, 0);
  EXPECT_EQ(resolved.id, plain.id);
}

TEST_F(CodeServiceTest, shouldAnswerCategoriesOverOneMarketAndOverAll) {
  add("A", "M1", {"metal", "index"});
  add("B", "M1", {"metal"});
  add("C", "M2", {"metal"});
  std::vector<ICategoryID> categories;
  EXPECT_EQ(service.categoriesOf(1, 1, categories).code, 0);
  ASSERT_EQ(categories.size(), 2u);
  EXPECT_EQ(categories[1].third, "metal");
  ICategoryID category;
  std::list<ICodeID> codes;
  EXPECT_TRUE(service.getCategoryID("metal", category));
  service.categoryQuery(category, 0, codes);
  EXPECT_EQ(idsOf(codes), (Ids{1, 2, 3}));
  EXPECT_TRUE(service.getCategoryID("metal.M2", category));
  service.categoryQuery(category, 0, codes);
  EXPECT_EQ(idsOf(codes), (Ids{3}));
  EXPECT_TRUE(service.getCategoryID("index", category));
  EXPECT_EQ(category.second, "M1");
  EXPECT_FALSE(service.getCategoryID("none", category));
}

class InstrumentFile : public ::testing::Test {
 protected:
  std::string write(const std::string& text) {
    const std::string path = folder.filePath("instruments.json").toStdString();
    std::ofstream(path) << text;
    return path;
  }
  std::string failureOf(const std::string& text) {
    try {
      loadInstruments(write(text));
    } catch (const std::invalid_argument& error) {
      return error.what();
    }
    return "no failure";
  }
  QTemporaryDir folder;
};

TEST_F(InstrumentFile, shouldReadNumbersAndTextsAsDecimals) {
  const auto all = loadInstruments(write(R"({"instruments": [
      {"code": "IF2101", "market": "CFFEX", "name": "沪深", "priceTick": 0.2, "multiplier": "300",
       "feeRate": 0.000023, "sessions": "21:00-02:30,09:30-11:30", "categories": ["index"],
       "id": 5}, {"code": "B"}]})"));
  ASSERT_EQ(all.size(), 2u);
  EXPECT_EQ(all[0].priceTick, "0.2");
  EXPECT_EQ(all[0].multiplier, "300");
  EXPECT_EQ(all[0].feeRate, "0.000023");
  EXPECT_EQ(gbkToUtf8(all[0].name), "沪深");
  EXPECT_EQ(all[0].id, 5);
  EXPECT_EQ(all[0].categories, (std::vector<std::string>{"index"}));
  EXPECT_EQ(loadInstruments(write("\xEF\xBB\xBF[{\"code\":\"A\"}]")).size(), 1u);
}

TEST_F(InstrumentFile, shouldNameFileKeyAndValueWhenOneIsWrong) {
  const auto has = [](const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
  };
  const std::string bad = failureOf(R"([{"code": "A"}, {"code": "B", "priceTick": "x1"}])");
  EXPECT_TRUE(has(bad, "instruments.json: instruments[1]: key \"priceTick\": \"x1\"")) << bad;
  EXPECT_TRUE(has(failureOf(R"([{"code": "A", "tick": 1}])"),
                  "key \"tick\": is not known; is \"priceTick\" meant?"));
  EXPECT_TRUE(has(failureOf(R"([{"code": "A", "colour": 1}])"),
                  "key \"colour\": is not known; there are categories, code, continuous, "));
  EXPECT_TRUE(has(failureOf(R"([{"market": "A"}])"), "key \"code\": \"\" is empty"));
  EXPECT_TRUE(has(failureOf(R"([{"code": "A", "lotSize": 0}])"), "is not above 0"));
  EXPECT_TRUE(has(failureOf(R"([{"code": "A", "feeRate": -1}])"), "\"-1\" is not a decimal"));
  EXPECT_TRUE(has(failureOf(R"([{"code": "A", "timeZone": "Q"}])"), "\"Q\" is not a time zone"));
  EXPECT_TRUE(has(failureOf(R"([{"code": "A", "sessions": "9-11"}])"), "\"9-11\" is not a list"));
  EXPECT_TRUE(has(failureOf(R"([{"code": "A", "currency": "QQQ"}])"), "\"QQQ\""));
  EXPECT_TRUE(has(failureOf("[\n{,"), "instruments.json:2: "));
  EXPECT_TRUE(has(failureOf("{}"), "key \"instruments\": is missing"));
  EXPECT_TRUE(has(failureOf("[7]"), "instruments[0]: 7 is not an object"));
  EXPECT_THROW(loadInstruments("does/not/exist.json"), std::invalid_argument);
}

TEST(ParseInstrument, shouldReadTheShortForm) {
  const Instrument one = parseInstrument(
      "IF2101.CFFEX,tick=0.2,multiplier=300,tz=Asia/Shanghai,"
      "sessions=09:30-11:30+13:00-15:00,lot=1,margin=0.12,fee=2.5,feeRate=0.00002");
  EXPECT_EQ(one.code, "IF2101");
  EXPECT_EQ(one.market, "CFFEX");
  EXPECT_EQ(one.priceTick, "0.2");
  EXPECT_EQ(one.timeZone, "Asia/Shanghai");
  EXPECT_EQ(one.sessions, "09:30-11:30,13:00-15:00");
  EXPECT_EQ(one.marginRate, "0.12");
  EXPECT_EQ(one.feePerLot, "2.5");
  EXPECT_EQ(parseInstrument("BTC").market, "");
  EXPECT_THROW(parseInstrument(""), std::invalid_argument);
  EXPECT_THROW(parseInstrument("A,tick"), std::invalid_argument);
  EXPECT_THROW(parseInstrument("A,tick=abc"), std::invalid_argument);
  EXPECT_THROW(parseInstrument("A,nonsense=1"), std::invalid_argument);
}

}  // namespace
}  // namespace orvane::detail
