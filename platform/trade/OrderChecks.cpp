#include "platform/trade/OrderChecks.h"

#include <charconv>

#include "shared/StatusCodes.h"

namespace orvane::detail {
namespace {

using status::kBadArgument;

Refusal bad(std::string text) { return {kBadArgument, std::move(text)}; }

std::string numberText(double value) {
  char text[400];
  const auto end = std::to_chars(text, text + sizeof(text), value, std::chars_format::fixed).ptr;
  return {text, end};
}

template <typename Enum>
bool isOneOf(Enum value, Enum last) {
  const auto number = static_cast<std::int32_t>(value);
  return number >= 0 && number <= static_cast<std::int32_t>(last);
}

template <typename Enum>
Refusal badNumber(const char* what, Enum value) {
  return bad(std::string("bad ") + what + ": " + std::to_string(static_cast<std::int32_t>(value)));
}

/// What is wrong with a number that is none of the exchange's.
Refusal badSize(const char* name, double value) {
  return bad(std::string("bad ") + name + ": " + numberText(value) +
             (value > 1 ? " is too large" : " is not above 0"));
}

/// The price that a kind of order needs, and its name.
std::optional<Refusal> readPrice(double value, const char* name, Price& price) {
  const auto exact = priceOf(value);
  if (!exact || !exact->isPositive()) return badSize(name, value);
  price = *exact;
  return std::nullopt;
}

std::optional<Refusal> checkTick(Price price, const char* name, Price tick) {
  if (tick.isZero() || price.units % tick.units == 0) return std::nullopt;
  return bad(std::string("bad ") + name + ": " + text(price) +
             " is not a multiple of the price tick " + text(tick));
}

}  // namespace

std::optional<Refusal> readOrder(WorkingOrder& order) {
  const OrderView view(order.record);
  order.type = view.type();
  order.timeInForce = view.timeInForce();
  order.direction = view.direction();
  order.offset = view.offset();
  if (!isOneOf(order.type, order::Type::Stop)) return badNumber("order type", order.type);
  if (!isOneOf(order.timeInForce, order::TimeInForce::UntilCancelled))
    return badNumber("time in force", order.timeInForce);
  if (!isOneOf(order.direction, order::Direction::Sell))
    return badNumber("direction", order.direction);
  if (!isOneOf(order.offset, order::Offset::CloseToday)) return badNumber("offset", order.offset);

  const auto volume = volumeOf(view.volume());
  if (!volume || !volume->isPositive()) return badSize("volume", view.volume());
  order.volume = *volume;
  if (order.type == order::Type::Limit)
    return readPrice(view.limitPrice(), "limit price", order.limit);
  if (order.type == order::Type::Stop) return readPrice(view.stopPrice(), "stop price", order.stop);
  return std::nullopt;
}

std::optional<Refusal> checkNumbers(const WorkingOrder& order, const PriceLimits& limits) {
  const ContractTerms& terms = *order.terms;
  if (terms.lot.isPositive() && order.volume.units % terms.lot.units != 0)
    return bad("bad volume: " + text(order.volume) + " is not a multiple of " + text(terms.lot));
  if (order.type == order::Type::Limit)
    if (auto refusal = checkTick(order.limit, "limit price", terms.tick)) return refusal;
  if (order.type == order::Type::Stop)
    if (auto refusal = checkTick(order.stop, "stop price", terms.tick)) return refusal;
  if (order.type != order::Type::Limit) return std::nullopt;
  if (limits.upper.isPositive() && order.limit > limits.upper)
    return bad("bad limit price: " + text(order.limit) + " is above the day's upper limit " +
               text(limits.upper));
  if (limits.lower.isPositive() && order.limit < limits.lower)
    return bad("bad limit price: " + text(order.limit) + " is below the day's lower limit " +
               text(limits.lower));
  return std::nullopt;
}

}  // namespace orvane::detail
