#pragma once

#include <string>

namespace orvane {

/// A grid condition: a price range that is worked on an account. Texts are GBK; amounts are decimal
/// texts, since they are reckoned exactly.
///
/// The range is cut into steps. A buy rests at the lower price of each step that lies below the
/// last price; what it bought is offered at the upper price of its step, and once that is sold the
/// buy rests again. The range must be a whole number of steps, at most 1,000.
struct GridOptions {
  std::string name;     ///< Unlike that of any other grid; empty means "grid" and its number.
  std::string account;  ///< The account text.
  std::string code;     ///< The code text, such as "IF2101.CFFEX".
  std::string lower;    ///< Price of the lowest buy; above 0.
  std::string upper;    ///< Price of the highest sale; above `lower`.
  std::string step;     ///< Price from a buy to its sale.
  std::string volume;   ///< Of the order of each step.
};

}  // namespace orvane
