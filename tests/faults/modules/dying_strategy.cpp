#include <fcntl.h>
#include <orvane/sdk/Accounts.h>
#include <orvane/sdk/Orders.h>
#include <orvane/sdk/Records.h>
#include <orvane/sdk/Strategy.h>
#include <orvane/sdk/Subscriptions.h>
#include <orvane/sdk/Views.h>
#include <unistd.h>

#include <csignal>
#include <list>
#include <string>

namespace {

using orvane::IContext;
using orvane::Record;

/// Trades with every bar, publishes two records with every tenth, and kills its process, without a
/// word, in its call number "dieAt"; never if that is 0. What the dictionary acknowledged it adds
/// to the file "acknowledged", a line with the key for each publication.
class Dying : public orvane::Strategy {
 public:
  void onStart(IContext* context, const QJsonObject& params) override {
    dieAt_ = params["dieAt"].toInt();
    target_ = params["target"].toString().toStdString();
    const std::string path = params["acknowledged"].toString().toStdString();
    file_ = open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
    const auto asked = orvane::subscribeAllOrFail(context, params);
    if (asked.empty()) return;
    code_ = asked.front().code;
    if (orvane::findOwnAccount(context, params, account_).code != 0)
      return context->setError("no account");
    context->subscribeTrade(account_, code_);
    count();
  }
  void onBarSeries(IContext* context, const orvane::ICodeID&, const std::string&,
                   const std::vector<orvane::IKLine>& bars, const orvane::ResultStatus&,
                   int) override {
    count();
    for (const orvane::IKLine& bar : bars) {
      if (++bars_ % 10 == 0) publish(context, orvane::KLineView(bar).endTime());
      trade(context);
    }
  }
  void onOrder(IContext*, const orvane::Order&) override { count(); }
  void onFill(IContext*, const orvane::OrderFill&) override { count(); }
  void onPosition(IContext*, const orvane::Position&) override { count(); }
  void onCapital(IContext*, const orvane::TradingAccount&) override { count(); }
  void onStop(IContext* context) override {
    context->setEnvs({{"calls", std::to_string(calls_)}}, true);
    close(file_);
  }

 private:
  void count() {
    if (++calls_ == dieAt_) kill(getpid(), SIGKILL);
  }
  void publish(IContext* context, orvane::int64 key) {
    const std::list<Record> two = {orvane::jsonRecord(key, {{"bars", bars_}}),
                                   orvane::jsonRecord(key + 1, {{"bars", bars_}})};
    if (context->publishRecords("kept", target_, 0, two, orvane::kLive).code != 0)
      return context->setError("not published");
    const std::string line = std::to_string(key) + "\n";
    if (write(file_, line.data(), line.size()) < 0) context->setError("not noted");
  }
  void trade(IContext* context) {
    using namespace orvane::order;
    holds_ = !holds_;
    std::list<orvane::Order> sent;
    context->sendOrder(
        orvane::marketOrder(account_, code_, holds_ ? Direction::Buy : Direction::Sell,
                            holds_ ? Offset::Open : Offset::Close, 1),
        sent);
  }

  int dieAt_ = 0;
  int calls_ = 0;
  int bars_ = 0;
  int file_ = -1;
  bool holds_ = false;
  std::string target_;
  orvane::ICodeID code_;
  orvane::TradingAccountID account_;
};

}  // namespace

ORVANE_STRATEGY(Dying)
