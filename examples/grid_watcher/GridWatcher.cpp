#include <orvane/sdk/Accounts.h>
#include <orvane/sdk/Params.h>
#include <orvane/sdk/Strategy.h>
#include <orvane/sdk/Subscriptions.h>
#include <orvane/sdk/Text.h>
#include <orvane/sdk/Views.h>

#include <map>
#include <set>
#include <string>

namespace {

using orvane::IContext;
using orvane::int64;

/// Watches the grid conditions of its account: logs each of their orders that ends and each of
/// their fills. It sends nothing itself. No parameters.
///
/// Grids work an account beside every strategy, under the create source "__grid__". Their orders
/// come from trading assistants, which is what it subscribes to. That answers for the whole
/// account, so it looks at the create source too.
///
/// Tells the host what it counted when it stops, as the environment values "gridOrders",
/// "gridFills", "gridRejected" and "gridHeld".
class GridWatcher : public orvane::Strategy {
 public:
  void onStart(IContext* context, const QJsonObject& json) override {
    orvane::Params params(json);
    if (!params.accept(context)) return;
    orvane::TradingAccountID account;
    const orvane::ResultStatus found = orvane::findOwnAccount(context, json, account);
    if (found.code != 0)
      return context->setError("account " + orvane::accountName(json) + ": " + found.message);
    context->subscribeTrade(account, kTradingAssistants);
  }

  void onOrder(IContext* context, const orvane::Order& order) override {
    if (order.source.createSource != kGridSource) return;
    orders_.insert(order.id);
    const orvane::OrderView view(order);
    if (view.status() != orvane::order::Status::Rejected) return;
    ++rejected_;
    context->logWarn(nameOf(order.source) + " rejected: " + view.message(), true);
  }

  void onFill(IContext* context, const orvane::OrderFill& fill) override {
    if (fill.source.createSource != kGridSource) return;
    const orvane::FillView view(fill);
    ++fills_;
    held_ += view.isBuy() ? view.volume() : -view.volume();
    context->logInfo(nameOf(fill.source) + (view.isBuy() ? " bought " : " sold ") +
                         orvane::numberText(view.volume()) + " " + fill.code.code + " at " +
                         orvane::numberText(view.price()),
                     true);
  }

  void onStop(IContext* context) override {
    const std::map<std::string, std::string> counted = {
        {"gridOrders", std::to_string(orders_.size())},
        {"gridFills", std::to_string(fills_)},
        {"gridRejected", std::to_string(rejected_)},
        {"gridHeld", orvane::numberText(held_)}};
    context->logInfo("grid_watcher: " + counted.at("gridOrders") + " orders, " +
                         counted.at("gridFills") + " fills",
                     true);
    context->setEnvs(counted, true);
  }

 private:
  static constexpr orvane::EventSourceId kTradingAssistants = 32;
  static constexpr const char* kGridSource = "__grid__";

  static std::string nameOf(const orvane::SourceId& source) { return "grid " + source.sourceText; }

  std::set<int64> orders_;
  int64 fills_ = 0, rejected_ = 0;
  double held_ = 0;
};

}  // namespace

ORVANE_STRATEGY(GridWatcher)
