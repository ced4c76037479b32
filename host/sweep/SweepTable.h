#pragma once

#include <string>
#include <vector>

#include "host/sweep/Sweep.h"

namespace orvane {

/// "results.csv": a row a run, in-sample before out-of-sample, window by window, best first.
/// Numbers are the shortest decimals that read back the same.
std::string sweepCsv(const SweepPlan& plan, const SweepOutcome& outcome);

/// The table for a person: the `top` best combinations, or what each window of a walk chose and
/// what that gave. `hasFiles`: each run's own words are in files, too.
std::string sweepText(const SweepPlan& plan, const SweepOutcome& outcome, std::size_t top,
                      bool hasFiles);

/// The names of ranges whose value never changed any figure, though there are runs that differ in
/// nothing else: a strategy may not know them.
std::vector<std::string> unusedParameters(const SweepPlan& plan, const SweepOutcome& outcome);

}  // namespace orvane
