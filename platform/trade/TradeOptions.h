#pragma once

#include <string>
#include <vector>

#include "platform/trade/conditions/GridOptions.h"
#include "shared/Types.h"

namespace orvane {

/// One account of the paper exchange. Texts are GBK; amounts are decimal texts, since they are
/// reckoned exactly.
struct AccountSpec {
  std::string name;              ///< The account text; not empty, unlike any other.
  std::string currency;          ///< A name of `currencyNames`; empty means not known.
  std::string startBalance;      ///< Empty means "1000000".
  std::int32_t counterType = 1;  ///< A code of `CounterTypeCodes`.
};

/// What one create source may do. Empty texts and 0 mean no limit. An order that breaks a limit is
/// rejected with a text of its own; the run goes on.
struct RiskLimits {
  std::string source;          ///< The create source that it holds for, GBK.
  std::string maxOrder;        ///< Largest volume of one order.
  std::string maxPosition;     ///< Largest volume on one side of one code, with orders at work.
  std::string maxLoss;         ///< No opening order once profit minus fees is below minus this.
  int maxOrdersPerSecond = 0;  ///< By the platform's clock, over the second before the order.
};

/// One line of a connection script.
struct ConnectionChange {
  std::string account;  ///< GBK.
  int64 time = 0;       ///< UTC milliseconds.
  bool isUp = false;
};

/// How the paper exchange of a run works. Everything is zero, off or absent by default: no fee, no
/// slippage, no latency, no margin.
struct TradeOptions {
  /// What a limit order that rests needs in order to be filled by a bar.
  enum class LimitFill {
    Through,  ///< The bar's range goes beyond the limit price.
    Touch,    ///< It reaches the limit price.
  };
  /// Who stands before an order that comes to rest in a ladder.
  enum class Queue {
    Behind,  ///< Everybody who is shown at its price.
    Front,   ///< Nobody.
  };

  std::vector<AccountSpec> accounts;
  /// The create sources in the order in which their orders are numbered and admitted; others
  /// follow in the order in which they first send one.
  std::vector<std::string> sources;
  std::vector<RiskLimits> limits;  ///< Of several entries of a source the last one holds.
  std::vector<ConnectionChange> script;
  std::vector<GridOptions> grids;  ///< Grid conditions, numbered from 1.

  int64 entryLatencyMs = 0;   ///< From sending an order or a cancel to the exchange.
  int64 reportLatencyMs = 0;  ///< From the exchange to the call-back.

  std::string slippage;        ///< Price amount against market and stop orders; added to:
  int slippageTicks = 0;       ///< the same in price ticks, for codes whose tick is known.
  std::string marginRate;      ///< For instruments that give none.
  std::string feePerLot;       ///< For instruments that give none.
  std::string feeRate;         ///< For instruments that give none.
  std::string barVolumeShare;  ///< Of a bar's volume that may be taken, such as "0.1"; empty: all.
  LimitFill limitFill = LimitFill::Through;
  Queue queue = Queue::Behind;
  /// At the end of each trading day profit of positions is made closed profit at the last price.
  bool settlesDaily = false;
  /// Orders that come outside the sessions of their code are rejected, and do not wait.
  bool rejectsOutsideSessions = false;
  /// Whether what one account takes of a market is gone for the others. Without it each account
  /// meets the market as if it were alone, as runs that are compared with each other have to.
  bool accountsShareMarket = true;

  std::string storePath;  ///< UTF-8; empty: the store lives in memory.
};

}  // namespace orvane
