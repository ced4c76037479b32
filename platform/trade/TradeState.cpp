#include "platform/trade/TradeState.h"

namespace orvane::detail {

void TradeState::makeUpForPostponed() {
  postponed.takeAll([this](const MarketStream& stream, std::size_t row) {
    const int64 codeId = stream.code().id;
    exchange_.onQuietBar(codeId, stream.bars().bars[row]);
    equity_.noteMark(codeId, stream.timeAt(row), false);
  });
}

}  // namespace orvane::detail
