#include "platform/trade/TradeState.h"

namespace orvane::detail {

void TradeState::makeUpForPostponed() {
  // Mostly all are of one stream.
  const MarketStream* last = nullptr;
  Contract* contract = nullptr;
  const EquityBook::AllHolders* holders = nullptr;
  postponed.takeAll([&](const MarketStream& stream, std::size_t row) {
    const int64 codeId = stream.code().id;
    if (last != &stream) {
      last = &stream;
      contract = exchange_.contract(codeId);
      holders = &equity_.holdersOf(codeId);
    }
    exchange_.onQuietBar(*contract, stream.bars().bars[row]);
    equity_.noteMark(*holders, {codeId, stream.timeAt(row), false});
  });
}

}  // namespace orvane::detail
