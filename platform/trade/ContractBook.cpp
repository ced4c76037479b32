#include "platform/trade/ContractBook.h"

#include <stdexcept>

namespace orvane::detail {
namespace {

/// The number behind a field's text; the default where it is empty.
template <typename Number, typename Parse>
Number fieldOr(const char* field, const std::string& value, Number byDefault, Parse parse) {
  if (value.empty()) return byDefault;
  const auto number = parse(std::string_view(value));
  if (!number || number->units < 0)
    throw std::invalid_argument(std::string(field) + ": \"" + value +
                                "\" is not a decimal number from 0 on, or has too many digits");
  return *number;
}

constexpr auto kPrice = [](std::string_view value) { return priceOf(value); };
constexpr auto kVolume = [](std::string_view value) { return volumeOf(value); };
constexpr auto kMultiplier = [](std::string_view value) { return multiplierOf(value); };
constexpr auto kRate = [](std::string_view value) { return rateOf(value); };
constexpr auto kMoney = [](std::string_view value) { return moneyOf(value); };

}  // namespace

ContractBook::ContractBook(const TradeOptions& options)
    : marginRate_(fieldOr("marginRate", options.marginRate, Rate{}, kRate)),
      feeRate_(fieldOr("feeRate", options.feeRate, Rate{}, kRate)),
      feePerLot_(fieldOr("feePerLot", options.feePerLot, Money{}, kMoney)),
      slippage_(fieldOr("slippage", options.slippage, Price{}, kPrice)),
      slippageTicks_(options.slippageTicks) {
  if (slippageTicks_ < 0)
    throw std::invalid_argument("slippageTicks: " + std::to_string(slippageTicks_) + " is below 0");
}

void ContractBook::add(const ICodeID& code, const Instrument& instrument) {
  ContractTerms terms;
  terms.code = code;
  terms.tick = fieldOr("priceTick", instrument.priceTick, Price{}, kPrice);
  terms.lot = fieldOr("lotSize", instrument.lotSize, Volume{}, kVolume);
  terms.multiplier = fieldOr("multiplier", instrument.multiplier, terms.multiplier, kMultiplier);
  terms.marginRate = fieldOr("marginRate", instrument.marginRate, marginRate_, kRate);
  terms.feePerLot = fieldOr("feePerLot", instrument.feePerLot, feePerLot_, kMoney);
  terms.feeRate = fieldOr("feeRate", instrument.feeRate, feeRate_, kRate);
  if (terms.multiplier.isZero())
    throw std::invalid_argument("multiplier: \"" + instrument.multiplier + "\" is not above 0");
  Contract& contract = contracts_[code.id];
  contract.sessions.emplace(instrument.sessions, instrument.timeZone);
  contract.terms = terms;
  Price inTicks;
  if (__builtin_mul_overflow(terms.tick.units, int64{slippageTicks_}, &inTicks.units))
    throw std::invalid_argument("slippageTicks: " + std::to_string(slippageTicks_) + " of " +
                                text(terms.tick) + " are too large");
  contract.slippage = cappedSum(slippage_, inTicks);
}

Contract* ContractBook::find(int64 codeId) {
  const auto at = contracts_.find(codeId);
  return at == contracts_.end() ? nullptr : &at->second;
}

const Contract* ContractBook::find(int64 codeId) const {
  const auto at = contracts_.find(codeId);
  return at == contracts_.end() ? nullptr : &at->second;
}

void ContractBook::reset() {
  for (auto& [codeId, contract] : contracts_) {
    contract.mark.reset();
    contract.limits = {};
    contract.day = 0;
    contract.orders.clear();
    contract.ledgers.clear();
  }
}

}  // namespace orvane::detail
