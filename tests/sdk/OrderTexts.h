#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/fields/OrderView.h"
#include "sdk/Text.h"

namespace orvane::test {

using Texts = std::vector<std::string>;

/// An order as a text such as "sell close 2" or "buy open 1 at 99".
inline std::string textOf(const OrderRequest& request) {
  Order order;
  order.values = request.values;
  order.ints = request.ints;
  const OrderView view(order);
  const char* const offsets[] = {"open ", "close ", "closeToday "};
  std::string text = view.isBuy() ? "buy " : "sell ";
  text += offsets[static_cast<int>(view.offset())] + numberText(view.volume());
  if (view.type() == order::Type::Limit) text += " at " + numberText(view.limitPrice());
  EXPECT_EQ(view.timeInForce(), order::TimeInForce::UntilCancelled);
  return text;
}

}  // namespace orvane::test
