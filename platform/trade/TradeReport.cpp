#include "platform/trade/TradeReport.h"

namespace orvane::detail {
namespace {

struct Caller {
  TradeEventSpi& spi;

  void operator()(const std::unique_ptr<Order>& order) const { spi.onRtnOrder(*order); }
  void operator()(const std::unique_ptr<OrderFill>& fill) const { spi.onRtnTrade(*fill); }
  void operator()(const Position& position) const { spi.onRtnPosition(position); }
  void operator()(const SourcePosition& position) const { spi.onRtnSourcePosition(position); }
  void operator()(const TradingAccount& capital) const { spi.onRtnCapital(capital); }
  void operator()(const TradeReport::Status& status) const {
    spi.onRspStatus(status.account, status.info);
  }
};

}  // namespace

void callTradeSpi(TradeEventSpi& spi, const TradeReport::What& what) {
  std::visit(Caller{spi}, what);
}

}  // namespace orvane::detail
