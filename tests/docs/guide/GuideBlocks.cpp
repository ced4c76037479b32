// Every block of code of the guide, in the order in which it stands there. What is written around
// them makes them one strategy, which a test runs: so they compile, and do what the guide says.
#include <orvane/sdk/Accounts.h>
#include <orvane/sdk/BarFetcher.h>
#include <orvane/sdk/Orders.h>
#include <orvane/sdk/Params.h>
#include <orvane/sdk/Records.h>
#include <orvane/sdk/Strategy.h>
#include <orvane/sdk/Subscriptions.h>
#include <orvane/sdk/Views.h>

// Plays a part in every chapter of the guide.
class GuideBlocks : public orvane::Strategy {
 public:
  // The guide's own lines stay as they are there.
  // clang-format off
  void onStart(orvane::IContext* context, const QJsonObject& json) override {
    orvane::Params params(json);
    fast_ = params.integer("fast", 5, 1, 1000);  // default, lowest, highest
    limit_ = params.number("limit", 0.5);
    name_ = params.text("name", "me");  // GBK, as all text inside
    if (fast_ > 100 && limit_ < 0) params.addError("\"limit\" must not be negative here");
    if (!params.accept(context)) return;  // ended the run with all errors at once
    orvane::subscribeAllOrFail(context, json);
  }

  void onBarSeries(orvane::IContext* context, const orvane::ICodeID& code, const std::string&,
                   const std::vector<orvane::IKLine>& bars, const orvane::ResultStatus&,
                   int) override {
    if (bars.empty() || isDone_) return;
    isDone_ = true;
    chooseData(context);
    readRecords(bars.front(), orvane::IDepthMarketData());
    lookUp(code);
    findAccount(context, code);
    sendOrder(context, code);
    subscribeRecords(context);
    publishRecords(context, bars.front());
    context->setEnvs({{"last", orvane::numberText(last_)}, {"name", name_}}, true);
  }

  void onFill(orvane::IContext* context, const orvane::OrderFill& fill) override {
    context->setEnvs({{"filled", orvane::numberText(orvane::FillView(fill).price())}}, true);
  }

  void onDic(orvane::IContext* context, const std::string&, const std::string&,
             const std::list<orvane::Record>& records, const orvane::ResultStatus&, int) override {
    if (!records.empty())
      context->setEnvs({{"records", std::to_string(records.size())}}, true);
  }

 private:
  static void chooseData(orvane::IContext* context) {
    orvane::ICodeID code;
    if (const auto status = context->codeServiceQuery("IF2101.CFFEX", code, 0); status.code != 0)
      return context->setError(status.message);
    context->subscribeQuote(code, 0);  // to onQuote
    // To onBarSeries, all that there is.
    context->subscribeKline(code, "5m", orvane::kUnsetTime, orvane::kUnsetTime, 0, 0);
  }

  void readRecords(const orvane::IKLine& line, const orvane::IDepthMarketData& tick) {
    const orvane::KLineView bar(line);     // beginTime(), endTime(), open() ... openInterest()
    const orvane::QuoteView quote(tick);   // lastPrice(), bidPrice(level), askSize(level), ...
    if (quote.hasBid() && quote.hasAsk()) spread_ = quote.askPrice() - quote.bidPrice();
    last_ = bar.close();
  }

  void lookUp(const orvane::ICodeID& code) {
    const auto days = fetcher_.newest(code, "1d", 20);  // or between(code, "1d", begin, end)
    if (days.status.code == 0 && !days.bars.empty())
      last_ = orvane::KLineView(days.bars.back()).close();
  }

  void findAccount(orvane::IContext* context, const orvane::ICodeID& code) {
    const QJsonObject json{{"account", QString::fromStdString(account_)}};
    orvane::TradingAccountID account;
    if (const auto status = orvane::findOwnAccount(context, json, account); status.code != 0)
      return context->setError(status.message);
    context->subscribeTrade(account, code);
    found_ = account;
  }

  void sendOrder(orvane::IContext* context, const orvane::ICodeID& code) {
    const orvane::TradingAccountID& account = found_;
    std::list<orvane::Order> sent;
    context->sendOrder(orvane::marketOrder(account, code, orvane::order::Direction::Buy,
                                           orvane::order::Offset::Open, 1), sent);
  }

  void subscribeRecords(orvane::IContext* context) {
    context->subscribeDic("means", "A.X", orvane::kUnsetTime, orvane::kUnsetTime, 0);  // to onDic
    context->subscribeDicSnapshot("means", "A.X", 0);  // the newest one, to onDicSnapshot
    orvane::Record newest;
    if (context->readLatest("means", "A.X", newest, 0).code == 0)  // answered at once
      key_ = newest.key;
  }

  void publishRecords(orvane::IContext* context, const orvane::IKLine& line) {
    const orvane::KLineView bar(line);
    const double mean = 1.5;
    std::list<orvane::Record> records;
    records.push_back(orvane::jsonRecord(bar.endTime(), {{"mean", mean}, {"close", bar.close()}}));
    const auto status = context->publishRecords("means", "A.X", 0, records, orvane::kLive);
    const QJsonObject fields = orvane::recordFields(records.front());
    if (status.code != 0 || fields.size() != 2) context->setError("publish: " + status.message);
  }
  // clang-format on

  orvane::int64 fast_ = 0;
  double limit_ = 0, spread_ = 0, last_ = 0;
  orvane::int64 key_ = 0;
  std::string name_, account_ = "GuideBlocks";
  orvane::TradingAccountID found_;
  orvane::BarFetcher fetcher_;
  bool isDone_ = false;
};

ORVANE_STRATEGY(GuideBlocks)
