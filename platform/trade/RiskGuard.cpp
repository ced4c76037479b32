#include "platform/trade/RiskGuard.h"

#include <stdexcept>
#include <utility>

#include "platform/core/Periods.h"
#include "shared/StatusCodes.h"

namespace orvane::detail {
namespace {

using status::kNotAllowed;
using status::kTooMany;

std::invalid_argument badField(const std::string& field, const std::string& value) {
  return std::invalid_argument("limits: " + field + ": \"" + value +
                               "\" is not a decimal number from 0 on");
}

std::optional<Volume> volumeLimit(const std::string& field, const std::string& value) {
  if (value.empty()) return std::nullopt;
  const auto limit = volumeOf(std::string_view(value));
  if (!limit || limit->units < 0) throw badField(field, value);
  return limit;
}

}  // namespace

RiskGuard::RiskGuard(const std::vector<RiskLimits>& limits) {
  for (const RiskLimits& given : limits) {
    Limits own;
    own.maxOrder = volumeLimit("maxOrder", given.maxOrder);
    own.maxPosition = volumeLimit("maxPosition", given.maxPosition);
    if (!given.maxLoss.empty()) {
      own.maxLoss = moneyOf(given.maxLoss);
      if (!own.maxLoss || own.maxLoss->units < 0) throw badField("maxLoss", given.maxLoss);
    }
    if (given.maxOrdersPerSecond < 0)
      throw badField("maxOrdersPerSecond", std::to_string(given.maxOrdersPerSecond));
    own.maxOrdersPerSecond = given.maxOrdersPerSecond;
    // The last entry of a source holds; one that names no limit leaves it without any.
    if (own.maxOrder || own.maxPosition || own.maxLoss || own.maxOrdersPerSecond != 0)
      limits_[given.source] = std::move(own);
    else
      limits_.erase(given.source);
  }
}

std::optional<Refusal> RiskGuard::check(const std::string& source, bool opens, Volume volume,
                                        const Standing& standing, int64 now) {
  const auto at = limits_.find(source);
  if (at == limits_.end()) return std::nullopt;
  Limits& limits = at->second;
  if (auto refusal = checkRate(limits, now)) return refusal;
  if (limits.maxOrder && volume > *limits.maxOrder)
    return Refusal{kNotAllowed, "risk limit: order volume " + text(volume) + " is above " +
                                    text(*limits.maxOrder)};
  if (!opens) return std::nullopt;
  const Volume after = cappedSum(cappedSum(standing.held, standing.opening), volume);
  if (limits.maxPosition && after > *limits.maxPosition)
    return Refusal{kNotAllowed, "risk limit: position " + text(after) +
                                    " with orders at work would be above " +
                                    text(*limits.maxPosition)};
  if (limits.maxLoss && standing.result < -*limits.maxLoss)
    return Refusal{kNotAllowed, "risk limit: loss " + text(-standing.result) + " is above " +
                                    text(*limits.maxLoss)};
  return std::nullopt;
}

std::optional<Refusal> RiskGuard::checkRate(Limits& limits, int64 now) {
  if (limits.maxOrdersPerSecond == 0) return std::nullopt;
  while (!limits.times.empty() && limits.times.front() <= now - kSecondMs) limits.times.pop_front();
  limits.times.push_back(now);
  if (limits.times.size() <= static_cast<std::size_t>(limits.maxOrdersPerSecond))
    return std::nullopt;
  return Refusal{kTooMany, "risk limit: more than " + std::to_string(limits.maxOrdersPerSecond) +
                               " orders within a second"};
}

void RiskGuard::reset() {
  for (auto& [source, limits] : limits_) limits.times.clear();
}

}  // namespace orvane::detail
