// Text in the log: GBK inside, readable UTF-8 in a file, whatever locale the host has.

#include <log4cxx/fileappender.h>
#include <log4cxx/helpers/pool.h>
#include <log4cxx/logger.h>
#include <log4cxx/patternlayout.h>

#include <clocale>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "shared/BaseInformation.h"
#include "tests/EventStrategy/ov.strategy.runner/RunnerTest.h"

namespace orvane::support {
namespace {

class LogText : public RunnerTest {
 protected:
  ~LogText() override { gBaseInformationMap.reset(); }
};

/// Writes what the root logger hears to a UTF-8 file, as a host would configure it.
class LogFile {
 public:
  LogFile()
      : path_(std::filesystem::temp_directory_path() /
              ("orvane-log-" + std::to_string(::getpid()) + ".txt")) {
    appender_->setLayout(std::make_shared<log4cxx::PatternLayout>(LOG4CXX_STR("%m%n")));
    appender_->setEncoding(LOG4CXX_STR("UTF-8"));
    appender_->setFile(path_.string());
    appender_->setAppend(false);
    log4cxx::helpers::Pool pool;
    appender_->activateOptions(pool);
    log4cxx::Logger::getRootLogger()->addAppender(appender_);
  }
  ~LogFile() {
    log4cxx::Logger::getRootLogger()->removeAppender(log4cxx::AppenderPtr(appender_));
    appender_->close();
    std::filesystem::remove(path_);
  }
  LogFile(const LogFile&) = delete;
  LogFile& operator=(const LogFile&) = delete;

  std::string text() const {
    std::ifstream in(path_, std::ios::binary);
    std::ostringstream out;
    out << in.rdbuf();
    return out.str();
  }

 private:
  const std::filesystem::path path_;
  const std::shared_ptr<log4cxx::FileAppender> appender_ =
      std::make_shared<log4cxx::FileAppender>();
};

TEST_F(LogText, shouldWriteReadableChineseIntoAUtf8FileInAProcessThatNeverSetItsLocale) {
  ASSERT_STREQ(std::setlocale(LC_ALL, nullptr), "C");
  const LogFile file;
  context().logInfo(gbkFromUtf8("开仓信号：买入"), true);
  runner->setError(gbkFromUtf8("价格无效"));
  EXPECT_NE(file.text().find("[INFO ] Stg 开仓信号：买入\n"), std::string::npos) << file.text();
  EXPECT_NE(file.text().find("[INFO ] Runner r1,setError,价格无效\n"), std::string::npos);
  EXPECT_EQ(file.text().find('?'), std::string::npos);
}

TEST_F(LogText, shouldWriteCodesWithChineseMarketNames) {
  auto tables = std::make_shared<BaseInformationMap>();
  tables->markets[1] = {gbkFromUtf8("上期所")};
  gBaseInformationMap = tables;
  logs.clear();
  context().subscribeQuote(codeOf(7, gbkFromUtf8("铜")), 0);
  EXPECT_TRUE(runnerLogged("DEBUG", ",subscribe quote,铜.上期所,flags="));
}

TEST_F(LogText, shouldLoseNothingAroundABrokenSequence) {
  logs.clear();
  context().logInfo("a\xFFz", true);
  EXPECT_THAT(logs.messages(), ElementsAre("[INFO ] Stg a\xEF\xBF\xBDz"));
}

TEST_F(LogText, shouldHaveItsOwnTextsInGbk) {
  // Every Chinese text that the library itself makes, by way of the operation that makes it.
  EXPECT_EQ(context().attachAccount("a", 0).message, gbkFromUtf8("不支持"));
  TradingAccountID account;
  EXPECT_EQ(context().findTradingAccount("a", 0, account).message, gbkFromUtf8("账号不存在"));
  EXPECT_EQ(runner->subscribeQuote(std::string("XX"), 0).message, gbkFromUtf8("无效合约 XX"));
  std::list<ICodeID> codes;
  EXPECT_EQ(runner->quoteSrc()->categoryQuery("none", 0, codes).message, gbkFromUtf8("未知错误"));
  context().subscribeKline(7, codeOf(1), "1m", 1, 2, 3, 0);
  EXPECT_EQ(context().subscribeKline(7, codeOf(1), "1m", 1, 2, 3, 0).message,
            gbkFromUtf8("reqId=7重复订阅"));
  EXPECT_EQ(TestAccess::loadStrategy(*runner, "x").status.message,
            gbkFromUtf8("加载x失败,no such module"));
}

}  // namespace
}  // namespace orvane::support
