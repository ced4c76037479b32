#include "host/sweep/Sampling.h"

#include <fmt/core.h>

#include <algorithm>
#include <boost/random/mersenne_twister.hpp>
#include <boost/random/sobol.hpp>
#include <boost/random/uniform_int_distribution.hpp>
#include <random>
#include <set>

#include "host/InputError.h"

namespace orvane {
namespace {

/// More than that many combinations are not looked through one by one.
constexpr std::uint64_t kMostLookedAt = 20'000'000;
/// How often a sample tries to find one more combination.
constexpr std::uint64_t kTries = 100'000;

bool fulfilsAll(const std::vector<Condition>& conditions,
                const std::vector<std::uint64_t>& places) {
  return std::ranges::all_of(conditions,
                             [&](const Condition& condition) { return condition.holds(places); });
}

/// Points that are spread over the places of all ranges.
class Points {
 public:
  virtual ~Points() = default;
  virtual std::vector<std::uint64_t> next() = 0;
};

/// Boost's distribution and not the standard's, which differs from library to library.
class RandomPoints final : public Points {
 public:
  RandomPoints(const ParameterSpace& space, std::uint64_t seed)
      : space_(space), engine_(seed), number_(0, space.size() - 1) {}
  std::vector<std::uint64_t> next() override { return space_.placesOf(number_(engine_)); }

 private:
  const ParameterSpace& space_;
  std::mt19937_64 engine_;
  boost::random::uniform_int_distribution<std::uint64_t> number_;
};

/// A Sobol sequence under a digital shift, which keeps how evenly its points lie.
class SobolPoints final : public Points {
 public:
  SobolPoints(const ParameterSpace& space, std::uint64_t seed)
      : space_(space), engine_(space.ranges().size()) {
    std::mt19937_64 random(seed);
    for (std::size_t i = 0; i < space.ranges().size(); ++i) shifts_.push_back(random());
  }
  std::vector<std::uint64_t> next() override {
    std::vector<std::uint64_t> places;
    for (std::size_t i = 0; i < shifts_.size(); ++i) {
      // The engine leaves out the first point, which is 0 in all dimensions.
      const std::uint64_t point = (isFirst_ ? 0 : engine_()) ^ shifts_[i];
      places.push_back(scaled(point, space_.ranges()[i].size()));
    }
    isFirst_ = false;
    return places;
  }

 private:
  /// The share of 2^64 that a point is, as a place below `count`: the high half of their product,
  /// in halves of the point, since a range has fewer than 2^32 values.
  static std::uint64_t scaled(std::uint64_t point, std::uint64_t count) {
    const std::uint64_t low = (point & 0xFFFFFFFF) * count;
    return ((point >> 32) * count + (low >> 32)) >> 32;
  }

  const ParameterSpace& space_;
  boost::random::sobol_engine<std::uint64_t, 64> engine_;
  std::vector<std::uint64_t> shifts_;
  bool isFirst_ = true;
};

std::vector<std::uint64_t> sampleOf(const ParameterSpace& space,
                                    const std::vector<Condition>& conditions,
                                    const SampleOptions& options) {
  if (options.count > kMostCombinations)
    throw InputError(
        fmt::format("--count: \"{}\" is more than {}", options.count, kMostCombinations));
  if (options.count >= space.size())
    throw InputError(
        fmt::format("--count: the grid has only {} combinations; leave --sample out "
                    "to run them all, or give less than that and not \"{}\"",
                    space.size(), options.count));
  std::unique_ptr<Points> points;
  if (options.kind == SampleOptions::Kind::Random)
    points = std::make_unique<RandomPoints>(space, options.seed);
  else
    points = std::make_unique<SobolPoints>(space, options.seed);
  std::set<std::uint64_t> chosen;
  for (std::uint64_t tries = 0; chosen.size() < options.count; ++tries) {
    if (tries == kTries)
      throw InputError(
          fmt::format("--count: \"{}\" are more than could be found: {} combinations "
                      "of the grid, and {} tries for one more",
                      options.count, chosen.size(), kTries));
    const std::vector<std::uint64_t> places = points->next();
    if (fulfilsAll(conditions, places) && chosen.insert(space.numberOf(places)).second) tries = 0;
  }
  return {chosen.begin(), chosen.end()};
}

}  // namespace

std::vector<std::uint64_t> chooseCombinations(const ParameterSpace& space,
                                              const std::vector<Condition>& conditions,
                                              const std::optional<SampleOptions>& sample) {
  if (sample) return sampleOf(space, conditions, *sample);
  const std::uint64_t most = conditions.empty() ? kMostCombinations : kMostLookedAt;
  if (space.size() > most)
    throw InputError(
        fmt::format("--grid: there are {} combinations; at most {} are possible. Take "
                    "a part of them with --sample",
                    space.size(), most));
  std::vector<std::uint64_t> result;
  for (std::uint64_t number = 0; number < space.size(); ++number)
    if (fulfilsAll(conditions, space.placesOf(number))) result.push_back(number);
  if (result.empty())
    throw InputError(
        fmt::format("--where: none of the {} combinations of the grid fulfils it; give other "
                    "values with --grid, or another condition",
                    space.size()));
  if (result.size() > kMostCombinations)
    throw InputError(
        fmt::format("--grid: there are {} combinations; at most {} are possible. Take "
                    "a part of them with --sample",
                    result.size(), kMostCombinations));
  return result;
}

}  // namespace orvane
