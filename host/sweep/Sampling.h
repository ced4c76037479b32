#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "host/sweep/Condition.h"
#include "host/sweep/ParameterSpace.h"

namespace orvane {

/// How a part of a grid is chosen.
struct SampleOptions {
  enum class Kind {
    Random,  ///< Each combination alike, none twice.
    Sobol,   ///< The points of a Sobol sequence, which leave no corner out; none twice.
  };
  Kind kind = Kind::Random;
  std::uint64_t count = 0;
  /// The same gives the same on every machine. A Sobol sequence is shifted by it.
  std::uint64_t seed = 1;
};

/// No sweep has more combinations; its rows are kept in memory.
inline constexpr std::uint64_t kMostCombinations = 1'000'000;

/// The numbers, ascending, of the combinations of a grid that fulfil all conditions; with a sample
/// so many of them. Throws `InputError`, which names the option and the value, if there is none,
/// there are too many, or fewer than the sample is to have.
std::vector<std::uint64_t> chooseCombinations(const ParameterSpace& space,
                                              const std::vector<Condition>& conditions,
                                              const std::optional<SampleOptions>& sample);

}  // namespace orvane
