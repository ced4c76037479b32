#pragma once

#include <string_view>
#include <vector>

namespace orvane {

/// A file of a new strategy's project: `templates/strategy/` has them, and they stand in the
/// command as texts. In name and text, "@NAME@" and its like are to be replaced.
struct StrategyTemplate {
  std::string_view name, text;
};

/// All of them.
std::vector<StrategyTemplate> strategyTemplates();

}  // namespace orvane
