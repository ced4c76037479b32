#include <orvane/sdk/Accounts.h>
#include <orvane/sdk/Orders.h>
#include <orvane/sdk/Records.h>
#include <orvane/sdk/Strategy.h>
#include <orvane/sdk/Subscriptions.h>
#include <orvane/sdk/Text.h>
#include <orvane/sdk/Views.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <list>
#include <optional>
#include <string>
#include <thread>

namespace {

using orvane::ICodeID;
using orvane::IContext;
using orvane::int64;

/// Trades by counting records, in ways that neighbours could disturb. Parameters:
/// - "every" (7): buys "volume" (1) with each such record and sells what it holds with the next.
/// - "quit" (0): ends its run after so many records, holding what it holds; 0 never.
/// - "fail" (0): the same as an error.
/// - "die" (""): ends its process after 20 records, in the way that it names; "marked" while there
///   is a file "mark".
/// - "refuse" (false): ends as an error before anything is played; "refuseBelow" (0): where "every"
///   is below it.
/// - "talk" (false): publishes its "every" and trades only while nobody else has published.
/// - "shy" (false): trades only while there is one account.
/// - "limit" (false): buys with limit orders at the price of the record.
class Swept : public orvane::Strategy {
 public:
  void onStart(IContext* context, const QJsonObject& params) override {
    every_ = params["every"].toInt(7);
    volume_ = params["volume"].toDouble(1);
    quit_ = params["quit"].toInt();
    fail_ = params["fail"].toInt();
    die_ = params["die"].toString().toStdString();
    mark_ = params["mark"].toString().toStdString();
    talks_ = params["talk"].toBool();
    isShy_ = params["shy"].toBool();
    isLimit_ = params["limit"].toBool();
    if (params["refuse"].toBool() || every_ < params["refuseBelow"].toInt())
      return context->setError(orvane::gbk("不要 \"these\", no"));
    if (orvane::findOwnAccount(context, params, account_).code != 0)
      return context->setError("no account");
    for (const auto& asked : orvane::subscribeAllOrFail(context, params))
      context->subscribeTrade(account_, asked.code);
  }
  void onBarSeries(IContext* context, const ICodeID& code, const std::string&,
                   const std::vector<orvane::IKLine>& bars, const orvane::ResultStatus&,
                   int batchFlag) override {
    // History makes it see more, and trades nothing.
    if (batchFlag != 0) {
      seen_ += static_cast<int>(bars.size());
      return;
    }
    for (const orvane::IKLine& bar : bars)
      see(context, code, orvane::KLineView(bar).close(), orvane::KLineView(bar).endTime());
  }
  void onQuote(IContext* context, const orvane::IDepthMarketData& quote) override {
    const orvane::QuoteView view(quote);
    see(context, quote.code, view.lastPrice(), view.time());
  }
  void onFill(IContext*, const orvane::OrderFill& fill) override {
    const orvane::FillView view(fill);
    held_ += view.isBuy() ? view.volume() : -view.volume();
  }

 private:
  void see(IContext* context, const ICodeID& code, double price, int64 time) {
    ++seen_;
    if (quit_ > 0 && seen_ >= quit_) return context->setFinish();
    if (fail_ > 0 && seen_ >= fail_) return context->setError("seen too much");
    if (seen_ >= 20) die();
    if (talks_ && hearsOthers(context, time)) return;
    if (seen_ % every_ != 0) return;
    if (isShy_ && context->tradingAccountCount() != 1) return;
    const bool buys = held_ <= 0;
    const auto direction = buys ? orvane::order::Direction::Buy : orvane::order::Direction::Sell;
    const auto offset = buys ? orvane::order::Offset::Open : orvane::order::Offset::Close;
    const double volume = buys ? volume_ : held_;
    std::list<orvane::Order> sent;
    context->sendOrder(isLimit_ && buys
                           ? orvane::limitOrder(account_, code, direction, offset, volume, price)
                           : orvane::marketOrder(account_, code, direction, offset, volume),
                       sent);
  }

  void die() const {
    if (die_ == "abort") std::abort();
    if (die_ == "marked" && std::filesystem::exists(mark_)) std::abort();
    if (die_ == "kill") std::raise(SIGKILL);
    if (die_ == "exit") std::exit(3);
    if (die_ == "exit well") std::exit(0);
    if (die_ == "thread") std::thread([] { throw 7; }).join();
    if (die_ == "write") *reinterpret_cast<volatile int*>(every_ * 8) = 7;
  }

  bool hearsOthers(IContext* context, int64 time) const {
    orvane::Record newest;
    const std::string mine = std::to_string(every_);
    const bool hears = context->readLatest("sums", "all", newest, 0).code == 0 &&
                       !newest.text.empty() && newest.text != mine;
    std::list<orvane::Record> records = {{time, 0, mine}};
    context->publishRecords("sums", "all", 0, records, orvane::kLive);
    return hears;
  }

  int every_ = 7, quit_ = 0, fail_ = 0, seen_ = 0;
  double volume_ = 1, held_ = 0;
  bool talks_ = false, isShy_ = false, isLimit_ = false;
  std::string die_, mark_;
  orvane::TradingAccountID account_;
};

}  // namespace

ORVANE_STRATEGY(Swept)
