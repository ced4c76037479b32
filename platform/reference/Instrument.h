#pragma once

#include <string>
#include <vector>

#include "shared/Types.h"

namespace orvane {

/// One instrument as an instruments file or the command line describes it. Texts are GBK. Prices
/// and rates that are summed or compared are kept as their decimal text.
struct Instrument {
  int64 id = 0;            ///< 0: the store gives the next free one.
  std::string code;        ///< Such as "IF2101".
  std::string market;      ///< Such as "CFFEX"; may be empty.
  std::string name;        ///< Display name.
  std::string timeZone;    ///< IANA name; empty means the platform's.
  std::string currency;    ///< A name of `currencyNames`; empty means not known.
  std::string priceTick;   ///< Decimal text, such as "0.2"; empty means not known.
  std::string multiplier;  ///< Decimal text; empty means 1.
  std::string lotSize;     ///< Decimal text; empty: orders have any volume, queries answer 1.
  std::string sessions;    ///< Such as "09:30-11:30,13:00-15:00", or "21:00-02:30,09:00-11:30".
  std::string marginRate;  ///< Share of the turnover; empty means 0.
  std::string feePerLot;   ///< Money for each unit of volume; empty means 0.
  std::string feeRate;     ///< Share of the turnover; empty means 0.
  std::string dominant;    ///< Code text of the dominant contract behind a continuous code.
  std::string underlying;  ///< Code text.
  std::string continuous;  ///< Code text.
  std::vector<std::string> categories;
};

}  // namespace orvane
