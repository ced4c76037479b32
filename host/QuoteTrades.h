#pragma once

#include <string>

#include "platform/market/Series.h"

namespace orvane {

/// Ticks whose last price is the best bid, the best ask, or the mean of the two ("bid", "ask",
/// "mid"), without a volume: for bars of quotes. A price of 0 says that there is none, and of "mid"
/// both must be there; but where no row has both, each tells of a change of one side, and the other
/// holds on within the trading day. Throws `InputError` that begins with `option` if the ticks have
/// no such column.
TickSeries tradesOfQuotes(const TickSeries& ticks, const std::string& side,
                          const std::string& option);

/// What keeps bars from being made of ticks, or, where `side` is not empty, of what the operation
/// above made of them; and what to do about it, as a UTF-8 text.
std::string whyNoTrades(const TickSeries& ticks, const std::string& side);

}  // namespace orvane
