#include <orvane/sdk/Params.h>
#include <orvane/sdk/Strategy.h>
#include <orvane/sdk/Subscriptions.h>
#include <orvane/sdk/Text.h>
#include <orvane/sdk/Views.h>
#include <QJsonDocument>
#include <cstdio>
#include <string>

namespace {

using orvane::ICodeID;
using orvane::IContext;
using orvane::IDepthMarketData;
using orvane::IKLine;
using orvane::int64;
using orvane::numberText;
using orvane::ResultStatus;
using orvane::utcText;

/// Shows every call-back that arrives, one line each. Parameters:
/// - "stdout" (false): write plain lines to the standard output and not to the log.
/// - "timer" (0): if above 0, fire a timer every so many milliseconds.
/// - "levels" (1): how many levels of the ladder a quote shows, 1 to 10.
class PrintEvents : public orvane::Strategy {
 public:
  void onStart(IContext* context, const QJsonObject& json) override {
    orvane::Params params(json);
    toStdout_ = params.flag("stdout", false);
    levels_ = static_cast<std::size_t>(params.integer("levels", 1, 1, 10));
    const int64 timerMs = params.integer("timer", 0, 0);
    if (!params.accept(context)) return;
    line(context, "onStart params=" + orvane::gbk(compact(json)));
    for (const auto& asked : orvane::subscribeAllOrFail(context, json))
      line(context, "subscribed " + asked.name + " " + (asked.isTicks ? "ticks" : asked.frequency));
    if (timerMs > 0) {
      const int id = context->createTimer(timerMs, 0, 0);
      line(context, "created timer " + std::to_string(id));
    }
  }

  void onUpdate(IContext* context, const QJsonObject& json) override {
    line(context, "onUpdate params=" + orvane::gbk(compact(json)));
  }

  void onQuote(IContext* context, const IDepthMarketData& quote) override {
    line(context, "onQuote " + quoteText(quote));
  }

  void onTickSeriesById(IContext* context, int requestId, const ICodeID& code,
                        const std::vector<IDepthMarketData>& ticks, const ResultStatus& status,
                        int batchFlag) override {
    const std::string head = "onTickSeriesById request=" + std::to_string(requestId) + " " +
                             code.code + tail(status, batchFlag);
    line(context, head + " ticks=" + std::to_string(ticks.size()));
    for (const auto& tick : ticks) line(context, "  " + quoteText(tick));
  }

  void onBarSeriesById(IContext* context, int requestId, const ICodeID& code,
                       const std::string& frequency, const std::vector<IKLine>& bars,
                       const ResultStatus& status, int batchFlag) override {
    line(context, "onBarSeriesById request=" + std::to_string(requestId) + " " + code.code + " " +
                      frequency + tail(status, batchFlag) + " bars=" + std::to_string(bars.size()));
    for (const auto& bar : bars) line(context, "  " + barText(bar));
  }

  void onTickSeries(IContext* context, const ICodeID& code,
                    const std::vector<IDepthMarketData>& ticks, const ResultStatus& status,
                    int batchFlag) override {
    line(context, "onTickSeries " + code.code + tail(status, batchFlag) +
                      " ticks=" + std::to_string(ticks.size()));
    for (const auto& tick : ticks) line(context, "  " + quoteText(tick));
  }

  void onBarSeries(IContext* context, const ICodeID& code, const std::string& frequency,
                   const std::vector<IKLine>& bars, const ResultStatus& status,
                   int batchFlag) override {
    const std::string head = "onBarSeries " + code.code + " " + frequency + tail(status, batchFlag);
    if (bars.size() == 1) return line(context, head + " " + barText(bars.front()));
    line(context, head + " bars=" + std::to_string(bars.size()));
    for (const auto& bar : bars) line(context, "  " + barText(bar));
  }

  void onBarProgressById(IContext* context, int requestId, const ICodeID& code,
                         const std::string& frequency,
                         const orvane::KLineProgress& progress) override {
    line(context, "onBarProgressById request=" + std::to_string(requestId) + " " + code.code + " " +
                      frequency + " " + progressText(progress));
  }

  void onBarProgress(IContext* context, const ICodeID& code, const std::string& frequency,
                     const orvane::KLineProgress& progress) override {
    line(context, "onBarProgress " + code.code + " " + frequency + " " + progressText(progress));
  }

  void onAccountStatus(IContext* context, const orvane::TradingAccountID& account, int status,
                       const ResultStatus& result) override {
    line(context, "onAccountStatus " + account.account + " status=" + std::to_string(status) +
                      tail(result, 0));
  }

  void onCapital(IContext* context, const orvane::TradingAccount& capital) override {
    line(context, "onCapital " + capital.account.account);
  }

  void onPosition(IContext* context, const orvane::Position& position) override {
    line(context, "onPosition " + position.account.account + " " + position.code.code);
  }

  void onStrategyPosition(IContext* context, const orvane::SourcePosition& position) override {
    line(context, "onStrategyPosition " + position.account.account + " " + position.code.code +
                      " source=" + position.createSource);
  }

  void onOrder(IContext* context, const orvane::Order& order) override {
    line(context, "onOrder " + std::to_string(order.id) + " " + order.code.code +
                      " status=" + std::to_string(order.status()));
  }

  void onFill(IContext* context, const orvane::OrderFill& fill) override {
    line(context, "onFill " + std::to_string(fill.id) + " " + fill.code.code + " direction=" +
                      std::to_string(fill.direction()) + " price=" + numberText(fill.price()));
  }

  void onDicSnapshot(IContext* context, const std::string& name, const std::string& key,
                     const orvane::Record& record) override {
    line(context, "onDicSnapshot " + name + " " + key + " " + recordText(record));
  }

  void onDic(IContext* context, const std::string& name, const std::string& key,
             const std::list<orvane::Record>& records, const ResultStatus& status,
             int batchFlag) override {
    line(context, "onDic " + name + " " + key + tail(status, batchFlag) +
                      " records=" + std::to_string(records.size()));
    for (const auto& record : records) line(context, "  " + recordText(record));
  }

  void onDicDeleted(IContext* context, const std::string& name, const std::string& key,
                    int64 value1, int64 value2) override {
    line(context, "onDicDeleted " + name + " " + key + " " + std::to_string(value1) + " " +
                      std::to_string(value2));
  }

  void onTimer(IContext* context, int timerId, int64 value) override {
    line(context, "onTimer " + std::to_string(timerId) + " due=" + utcText(value));
  }

  void onStop(IContext* context) override { line(context, "onStop"); }

 private:
  void line(IContext* context, const std::string& text) {
    if (!toStdout_) return context->logInfo(text, true);
    // One call a line, so that the lines of runners that print at once do not mix.
    const std::string out = orvane::utf8(context->name() + ": " + text) + "\n";
    std::fwrite(out.data(), 1, out.size(), stdout);
    std::fflush(stdout);
  }

  static std::string compact(const QJsonObject& json) {
    return QJsonDocument(json).toJson(QJsonDocument::Compact).toStdString();
  }

  static std::string tail(const ResultStatus& status, int batchFlag) {
    std::string text;
    if (batchFlag != 0) text += " flag=" + std::to_string(batchFlag);
    if (status.code != 0)
      text += " code=" + std::to_string(status.code) + " \"" + status.message + "\"";
    return text;
  }

  static std::string barText(const IKLine& bar) {
    const orvane::KLineView view(bar);
    std::string text = utcText(view.beginTime()) + " .. " + utcText(view.endTime()) +
                       " open=" + numberText(view.open()) + " high=" + numberText(view.high()) +
                       " low=" + numberText(view.low()) + " close=" + numberText(view.close());
    if (view.isQuoteBar())
      return text + " bidSize=" + numberText(view.bidSize()) +
             " askClose=" + numberText(view.askClose()) + " askSize=" + numberText(view.askSize());
    text += " volume=" + numberText(view.volume());
    if (view.turnover() != 0) text += " turnover=" + numberText(view.turnover());
    if (view.openInterest() != 0) text += " openInterest=" + numberText(view.openInterest());
    return text;
  }

  std::string quoteText(const IDepthMarketData& quote) const {
    const orvane::QuoteView view(quote);
    std::string text = quote.code.code + " " + utcText(view.time());
    if (view.hasTrade())
      text += " last=" + numberText(view.lastPrice()) + " volume=" + numberText(view.volume());
    for (std::size_t level = 0; level < levels_; ++level) {
      const std::string number = levels_ == 1 ? "" : std::to_string(level + 1);
      if (static_cast<int>(level) < view.bidLevels())
        text += " bid" + number + "=" + numberText(view.bidPrice(level)) + "x" +
                numberText(view.bidSize(level));
      if (static_cast<int>(level) < view.askLevels())
        text += " ask" + number + "=" + numberText(view.askPrice(level)) + "x" +
                numberText(view.askSize(level));
    }
    return text;
  }

  static std::string progressText(const orvane::KLineProgress& progress) {
    return std::to_string(progress.value1) + " of " + std::to_string(progress.value2) + " bars, " +
           std::to_string(progress.value3) + "%" + tail(progress.status, 0);
  }

  static std::string recordText(const orvane::Record& record) {
    return std::to_string(record.key) + ": " + record.text;
  }

  bool toStdout_ = false;
  std::size_t levels_ = 1;
};

}  // namespace

ORVANE_STRATEGY(PrintEvents)
