#pragma once

#include <array>
#include <bit>
#include <list>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "shared/AccountRecords.h"
#include "shared/ICodeID.h"
#include "shared/SourceId.h"

namespace orvane {

/// One leg of a combined order; carried.
struct OrderLeg {
  ICodeID code;
  std::array<Word, 4> values{};
};

/// One order.
struct Order {
  int64 id = 0;
  TradingAccountID account;
  ICodeID code;
  SourceId source;        ///< Who created it.
  SourceId cancelSource;  ///< Who last acted on it.
  std::pair<std::string, std::string> pair;
  std::string text3, text4;
  std::string orderRef;
  double value1 = 0;
  std::array<Word, 11> values{};        ///< The first is the update time.
  std::array<std::int32_t, 11> ints{};  ///< The sixth is the status; 3, 5, 6 and 7 are final.
  std::string text5, text6;
  Word value2 = 0, value3 = 0;
  Word value4 = 0;
  OrderLeg leg1, leg2;
  double value5 = 0;

  int64& updateTime() { return values[0]; }
  int64 updateTime() const { return values[0]; }
  std::int32_t& status() { return ints[5]; }
  std::int32_t status() const { return ints[5]; }
};

/// What `sendOrder` asks for: an `Order` without its id.
struct OrderRequest {
  TradingAccountID account;
  ICodeID code;
  SourceId source;
  std::pair<std::string, std::string> pair;
  std::string text3, text4;
  std::string orderRef;
  double value1 = 0;
  std::array<Word, 11> values{};
  std::array<std::int32_t, 11> ints{};
  std::string text5, text6;
};

/// One fill.
struct OrderFill {
  int64 id = 0;
  std::int32_t value1 = 0;
  TradingAccountID account;
  ICodeID code;
  SourceId source;  ///< Who created it.
  std::pair<std::string, std::string> pair;
  std::string text1;
  std::string orderRef;  ///< The reference text of the fill's order.
  std::array<Word, 7> numbers{};
  std::array<std::int32_t, 4> ints{};  ///< The fourth is the direction.
  std::string fillText;                ///< The fill's own text id.
  std::array<Word, 4> values{};        ///< The first is the fill time, the third the price.
  std::string text3;

  std::int32_t& direction() { return ints[3]; }
  std::int32_t direction() const { return ints[3]; }
  int64& fillTime() { return values[0]; }
  int64 fillTime() const { return values[0]; }
  double price() const { return std::bit_cast<double>(values[2]); }
  void setPrice(double price) { values[2] = std::bit_cast<Word>(price); }
};

/// A position of one account in one code.
struct Position {
  std::int32_t first = 0;
  TradingAccountID account;
  ICodeID code;
  std::string text1;
  std::array<Word, 16> block1{};
  double value1 = 0;
  std::array<Word, 16> block2{};
  double value2 = 0;
  std::array<Word, 11> block3{0, 0, 0, 0, 0, std::bit_cast<Word>(1.0), 0, 0, 0, 0, 0};
  std::array<std::int32_t, 4> ints{};
  std::array<Word, 40> block4{};
  double value3 = 0;
};

/// The part of a position that one create source holds.
struct SourcePosition : Position {
  int64 sourceType = 1;
  std::string createSource;
  std::string sourceText;
};

/// Which events of which other sources a create source wants.
struct CreateSourceTradeInfo {
  int64 override = 0;                     ///< `EventType` mask of the events wanted.
  int64 subCreateId = 0;                  ///< `EventSourceId` mask, account-wide.
  std::set<std::string> subCreateSource;  ///< Other create sources, account-wide.
};

/// A request for orders or fills of past days.
struct HistoryQuery {
  std::vector<TradingAccountID> accounts;
  std::vector<ICodeID> codes;
  std::list<std::string> sources;
  int64 begin = 0;  ///< UTC milliseconds.
  int64 end = 0;    ///< UTC milliseconds.
  std::int32_t mask = 0;
};

/// One day of an account's past.
struct HistoryDayEntry {
  std::int32_t date = 0;  ///< YYYYMMDD.
  std::list<Order> orders;
  std::list<OrderFill> fills;
};

/// The past of one account, by day.
struct HistoryDayRecord {
  TradingAccountID account;
  std::list<HistoryDayEntry> entries;
};

}  // namespace orvane
