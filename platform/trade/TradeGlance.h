#pragma once

#include <string>
#include <vector>

#include "shared/AccountRecords.h"
#include "shared/ICodeID.h"

namespace orvane {

/// What a create source holds of one code at one moment.
struct PositionGlance {
  ICodeID code;
  double longVolume = 0;
  double shortVolume = 0;
};

/// How a create source stands on one account at one moment.
struct SourceGlance {
  std::string source;  ///< GBK.
  /// Profit, closed and floating at the last prices, minus fees, in the account's currency.
  double result = 0;
  std::vector<PositionGlance> positions;  ///< By code id, ascending; held ones alone.
};

/// How an account stands at one moment. Amounts are in its currency.
struct AccountGlance {
  TradingAccountID account;
  double startBalance = 0;
  double balance = 0;                 ///< The start, plus closed profit, minus fees.
  double equity = 0;                  ///< The balance plus floating profit.
  std::vector<SourceGlance> sources;  ///< By name, ascending; those that ever had a fill.
};

}  // namespace orvane
