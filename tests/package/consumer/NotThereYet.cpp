#include <orvane/sdk/Strategy.h>

#include <cstdio>

// Calls every operation that answers a status and prints what it answered: "operation code". The
// arguments are empty, so none can succeed by chance.
class NotThereYet : public orvane::Strategy {
 public:
  void onStart(orvane::IContext* context, const QJsonObject&) override {
    accounts(*context);
    dictionary(*context);
    publications(*context);
    context->setFinish();
  }

 private:
  static void tell(const char* operation, const orvane::ResultStatus& status) {
    std::printf("%s %d\n", operation, status.code);
  }

  static void accounts(orvane::IContext& context) {
    const orvane::TradingAccountID account;
    const orvane::ICodeID code;
    orvane::TradingAccountID found;
    orvane::Order order;
    orvane::Position position;
    std::list<orvane::Order> orders;
    std::list<orvane::OrderFill> fills;
    std::list<orvane::Position> positions;
    std::list<orvane::int64> ids;
    tell("attachAccount", context.attachAccount("", 0));
    tell("detachAccount", context.detachAccount("", 0));
    tell("findTradingAccount", context.findTradingAccount("", 0, found));
    tell("sendOrderIds", context.sendOrderIds({}, ids));
    tell("sendOrder", context.sendOrder({}, orders));
    tell("cancelOrder", context.cancelOrder(1, ""));
    tell("getOrder", context.getOrder(1, order));
    tell("ordersByCode", context.ordersByCode(account, code, orders, ""));
    tell("openOrdersByCode", context.openOrdersByCode(account, code, orders, ""));
    tell("historyOrders", context.historyOrders(account, code, orders, "", 0, 0));
    tell("fillsByCode", context.fillsByCode(account, code, fills, ""));
    tell("fillQueryForward", context.fillQueryForward(1, fills));
    tell("historyFills", context.historyFills(account, code, fills, "", 0, 0));
    tell("orderActionForward", context.orderActionForward(order, 0));
    tell("getPosition", context.getPosition(account, code, position, ""));
    tell("getPositions", context.getPositions(account, positions));
  }

  static void dictionary(orvane::IContext& context) {
    orvane::Record record;
    std::list<orvane::Record> records;
    std::map<std::string, orvane::Record> byTarget;
    std::list<orvane::LatestOfName> latest;
    orvane::DataDefine define;
    tell("subscribeDic", context.subscribeDic("name", "key", 0, 0, 0));
    tell("publishRecords", context.publishRecords("name", "target", 0, records, 0));
    tell("readRecords", context.readRecords("name", "target", 0, 0, records, 0));
    tell("readTargets", context.readTargets("name", {"target"}, 0, byTarget, 0, 0));
    tell("readRecord", context.readRecord("name", "target", 0, record, 0));
    tell("readLatest", context.readLatest("name", "target", record, 0));
    tell("readLatestMany", context.readLatestMany({{"target", "name"}}, latest, 0));
    tell("dataDefine", context.dataDefine("name", define));
  }

  static void publications(orvane::IContext& context) {
    const orvane::ICodeID code;
    tell("publishQuoteList", context.publishQuoteList({}, 0));
    tell("publishQuoteSeries", context.publishQuoteSeries(code, {}, 0, 0));
    tell("publishQuoteItems", context.publishQuoteItems(code, {}, 0));
    tell("publishQuoteItems2", context.publishQuoteItems2(code, {}, 0));
    tell("publishOp5", context.publishOp5("", "", 0));
    tell("publishOp6", context.publishOp6("", "", 0));
    tell("publishOp7", context.publishOp7("", "", 0));
    tell("publishOp8", context.publishOp8("", "", 0));
  }
};

ORVANE_STRATEGY(NotThereYet)
