#pragma once

#include <QJsonObject>
#include <cstdint>
#include <optional>
#include <vector>

#include "host/RunPlan.h"
#include "host/sweep/ParameterSpace.h"
#include "host/sweep/WalkForward.h"

namespace orvane {

/// Everything that a sweep is made of.
struct SweepPlan {
  /// What all combinations have in common, with one runner, whose parameters are their base. It has
  /// its name and its module, but no account yet.
  RunPlan run;
  ParameterSpace space;
  std::vector<std::uint64_t> numbers;  ///< Of the combinations to run, ascending.
  std::size_t rank = 0;                ///< The place of the figure that tells which is best.
  std::vector<WalkWindow> windows;     ///< Empty: no walk.
  std::size_t batch = 0;               ///< Combinations that play at once; 0: by the data.
  bool retriesCrashed = false;         ///< Runs again what crashed when it was called before.
};

}  // namespace orvane
