#include "platform/trade/TradeState.h"

#include <optional>

#include "platform/trade/BarMatcher.h"

namespace orvane::detail {
namespace {

/// Reckons with bars that waited, many of one stream in a row as a rule. Mostly one account holds
/// one side of the code: then nothing but its curve is told of each of them, and its book and the
/// exchange of the last.
class Reckoning {
 public:
  Reckoning(PaperExchange& exchange, EquityBook& equity) : exchange_(exchange), equity_(equity) {}
  Reckoning(const Reckoning&) = delete;
  Reckoning& operator=(const Reckoning&) = delete;
  ~Reckoning() { end(); }

  void take(const MarketStream& stream, std::size_t row) {
    if (stream_ != &stream) {
      end();
      begin(stream);
    }
    const IKLine& bar = stream.bars().bars[row];
    const EquityBook::Mark mark{codeId_, stream.timeAt(row), false};
    if (!isSole_) {
      exchange_.onQuietBar(*contract_, bar);
      equity_.noteMark(*holders_, mark);
      return;
    }
    if (hasPrices(bar)) {
      run_.take(KLineView(bar).close());
      last_ = &bar;
    }
    equity_.noteWorth(account_, mark, run_.equity(), run_.exposure());
  }

 private:
  void begin(const MarketStream& stream) {
    stream_ = &stream;
    codeId_ = stream.code().id;
    contract_ = exchange_.contract(codeId_);
    holders_ = &equity_.holdersOf(codeId_);
    const EquityBook::Holders* const sole = EquityBook::soleHolders(*holders_);
    if (sole == nullptr) return;
    account_ = sole->account;
    const std::optional<PriceRun> run = sole->ledger->priceRun(codeId_);
    isSole_ = run.has_value();
    run_ = run.value_or(PriceRun());
  }

  void end() {
    if (!isSole_) return;
    // The exchange may know a last price that the account refused.
    exchange_.ledger(account_)->mark(codeId_, run_.price());
    if (last_ != nullptr) exchange_.onQuietBar(*contract_, *last_);
    isSole_ = false;
    last_ = nullptr;
  }

  PaperExchange& exchange_;
  EquityBook& equity_;
  // Of the stream that is being taken.
  const MarketStream* stream_ = nullptr;
  int64 codeId_ = 0;
  Contract* contract_ = nullptr;
  const EquityBook::AllHolders* holders_ = nullptr;
  bool isSole_ = false;  ///< Of one side on one account; the rest is of that.
  std::int32_t account_ = 0;
  PriceRun run_;
  const IKLine* last_ = nullptr;  ///< That told a price.
};

}  // namespace

void TradeState::makeUpForPostponed() {
  Reckoning reckoning(exchange_, equity_);
  postponed.takeAll(
      [&](const MarketStream& stream, std::size_t row) { reckoning.take(stream, row); });
}

}  // namespace orvane::detail
