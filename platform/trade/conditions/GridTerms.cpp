#include "platform/trade/conditions/GridTerms.h"

#include <algorithm>

namespace orvane::detail {
namespace {

/// A decimal above 0; else `fault` says what is wrong with it.
template <typename Number>
std::optional<Number> readAmount(const char* field, const std::string& value,
                                 std::optional<Number> number, std::string& fault) {
  if (number && number->isPositive()) return number;
  fault = std::string(field) + ": \"" + value + "\" is not a decimal number above 0";
  return std::nullopt;
}

std::optional<Price> readPrice(const char* field, const std::string& value, std::string& fault) {
  return readAmount(field, value, priceOf(std::string_view(value)), fault);
}

std::string notMultiple(const char* field, const std::string& value, const char* of,
                        const std::string& unit) {
  return std::string(field) + ": " + value + " is not a multiple of the " + of + " " + unit;
}

}  // namespace

std::size_t GridTerms::levelsBelow(Price price) const {
  if (price <= lower) return 0;
  const int64 above = (price.units - lower.units - 1) / step.units + 1;
  return std::min(static_cast<std::size_t>(above), cells + 1);
}

std::optional<GridTerms> readGridTerms(const GridOptions& options, std::string& fault) {
  const auto lower = readPrice("lower", options.lower, fault);
  if (!lower) return std::nullopt;
  const auto upper = readPrice("upper", options.upper, fault);
  if (!upper) return std::nullopt;
  const auto step = readPrice("step", options.step, fault);
  if (!step) return std::nullopt;
  const auto volume =
      readAmount("volume", options.volume, volumeOf(std::string_view(options.volume)), fault);
  if (!volume) return std::nullopt;
  if (*upper <= *lower) {
    fault = "upper: \"" + options.upper + "\" is not above lower, " + text(*lower);
    return std::nullopt;
  }
  const int64 range = upper->units - lower->units;
  const int64 cells = range / step->units;
  if (range % step->units != 0) {
    fault = "step: \"" + options.step + "\" does not divide the range from " + text(*lower) +
            " to " + text(*upper);
    return std::nullopt;
  }
  if (cells > GridTerms::kMostCells) {
    fault = "step: \"" + options.step + "\" makes " + std::to_string(cells) +
            " steps of the range, more than " + std::to_string(GridTerms::kMostCells);
    return std::nullopt;
  }
  return GridTerms{*lower, *step, *volume, static_cast<std::size_t>(cells)};
}

std::string faultAgainst(const GridTerms& terms, const ContractTerms& contract) {
  const Price tick = contract.tick;
  if (tick.isPositive() && terms.lower.units % tick.units != 0)
    return notMultiple("lower", text(terms.lower), "price tick", text(tick));
  if (tick.isPositive() && terms.step.units % tick.units != 0)
    return notMultiple("step", text(terms.step), "price tick", text(tick));
  if (contract.lot.isPositive() && terms.volume.units % contract.lot.units != 0)
    return notMultiple("volume", text(terms.volume), "lot", text(contract.lot));
  if (!turnoverOf(terms.upper(), terms.volume, contract.multiplier))
    return "volume: " + text(terms.volume) + " at " + text(terms.upper()) +
           " is too much to reckon";
  return {};
}

}  // namespace orvane::detail
