#pragma once

#include <QJsonObject>
#include <list>
#include <map>
#include <string>
#include <vector>

#include "EventStrategy/Events.h"
#include "EventStrategy/ov.strategy.runner/IContext.h"
#include "EventStrategy/ov.strategy.runner/IRunnerSpi.h"
#include "EventStrategy/ov.strategy.runner/IStrategy.h"

namespace orvane::support {

/// Where the probes pass on what the library calls. Calls are short texts, such as "onQuote 7 42".
class ProbeListener {
 public:
  virtual ~ProbeListener() = default;
  virtual void onStrategy(int number, IContext* context, const std::string& call) = 0;
  virtual void onDestroyed(int number) = 0;
  virtual void onSpi(int number, const std::string& call) = 0;
};

/// A strategy that passes every call on.
class ProbeStrategy final : public IStrategy {
 public:
  ProbeStrategy(ProbeListener& listener, int number) : listener_(listener), number_(number) {}
  ~ProbeStrategy() override { listener_.onDestroyed(number_); }

  void onStart(IContext* c, const QJsonObject& params) override {
    tell(c, "onStart", mark(params));
  }
  void onUpdate(IContext* c, const QJsonObject& params) override {
    tell(c, "onUpdate", mark(params));
  }
  void onQuote(IContext* c, const IDepthMarketData& quote) override {
    tell(c, "onQuote", quote.code.id, quote.block1[0]);
  }
  void onTickSeriesById(IContext* c, int id, const ICodeID& code,
                        const std::vector<IDepthMarketData>& ticks, const ResultStatus&,
                        int flag) override {
    tell(c, "onTickSeriesById", id, code.id, ticks.size() == 1 ? flag : -1);
  }
  void onBarSeriesById(IContext* c, int id, const ICodeID& code, const std::string&,
                       const std::vector<IKLine>& bars, const ResultStatus&, int flag) override {
    tell(c, "onBarSeriesById", id, code.id, bars.size() == 1 ? flag : -1);
  }
  void onTickSeries(IContext* c, const ICodeID& code, const std::vector<IDepthMarketData>& ticks,
                    const ResultStatus&, int flag) override {
    tell(c, "onTickSeries", code.id, ticks.size() == 1 ? flag : -1);
  }
  void onBarSeries(IContext* c, const ICodeID& code, const std::string&,
                   const std::vector<IKLine>& bars, const ResultStatus&, int flag) override {
    tell(c, "onBarSeries", code.id, bars.size() == 1 ? flag : -1);
  }
  void onBarProgressById(IContext* c, int id, const ICodeID& code, const std::string&,
                         const KLineProgress& progress) override {
    tell(c, "onBarProgressById", id, code.id, progress.value1);
  }
  void onBarProgress(IContext* c, const ICodeID& code, const std::string&,
                     const KLineProgress& progress) override {
    tell(c, "onBarProgress", code.id, progress.value1);
  }
  void onAccountStatus(IContext* c, const TradingAccountID& account, int status,
                       const ResultStatus&) override {
    tell(c, "onAccountStatus", account.accountKey, status);
  }
  void onCapital(IContext* c, const TradingAccount& capital) override {
    tell(c, "onCapital", capital.account.accountKey, capital.value);
  }
  void onPosition(IContext* c, const Position&) override { tell(c, "onPosition"); }
  void onStrategyPosition(IContext* c, const SourcePosition&) override {
    tell(c, "onStrategyPosition");
  }
  void onOrder(IContext* c, const Order& order) override {
    tell(c, "onOrder", order.account.accountKey, order.id);
  }
  void onFill(IContext* c, const OrderFill&) override { tell(c, "onFill"); }
  void onDicSnapshot(IContext* c, const std::string&, const std::string& key,
                     const Record& record) override {
    listener_.onStrategy(number_, c, "onDicSnapshot " + key + " " + std::to_string(record.key));
  }
  void onDic(IContext* c, const std::string&, const std::string& key, const std::list<Record>&,
             const ResultStatus&, int flag) override {
    listener_.onStrategy(number_, c, "onDic " + key + " " + std::to_string(flag));
  }
  void onDicDeleted(IContext* c, const std::string&, const std::string& key, int64 value1,
                    int64 value2) override {
    listener_.onStrategy(number_, c,
                         "onDicDeleted " + key + " " + std::to_string(value1) +
                             (value2 == value1 ? "" : " and " + std::to_string(value2)));
  }
  void onTimer(IContext* c, int id, int64 value) override { tell(c, "onTimer", id, value); }
  void onStop(IContext* c) override { tell(c, "onStop"); }

 private:
  static int mark(const QJsonObject& params) { return params["v"].toInt(-1); }

  template <typename... Numbers>
  void tell(IContext* context, const char* callback, Numbers... numbers) {
    std::string call = callback;
    ((call += " " + std::to_string(numbers)), ...);
    listener_.onStrategy(number_, context, call);
  }

  ProbeListener& listener_;
  const int number_;
};

/// A host's ear that passes every call on.
class ProbeSpi final : public IRunnerSpi {
 public:
  ProbeSpi(ProbeListener& listener, int number) : listener_(listener), number_(number) {}

  void onStatus(int status, const std::string& message) override {
    listener_.onSpi(number_, "status " + std::to_string(status) + " " + message);
  }
  void onNotify(const QJsonObject& argument) override {
    listener_.onSpi(number_, "notify " + std::to_string(argument["v"].toInt(-1)));
  }
  void onEnvs(const std::map<std::string, std::string>& values) override {
    std::string text = "envs";
    for (const auto& [key, value] : values) text += " " + key + "=" + value;
    listener_.onSpi(number_, text);
  }
  void onEnvItems(const std::list<EnvItem>& items) override {
    listener_.onSpi(number_, "items " + std::to_string(items.size()));
  }

 private:
  ProbeListener& listener_;
  const int number_;
};

}  // namespace orvane::support
