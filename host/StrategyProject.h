#pragma once

#include <string>
#include <vector>

namespace orvane {

/// Why a text cannot name a strategy, in one message with text and rule; empty if it can.
std::string strategyNameFault(const std::string& name);

/// The name of the class of a strategy, such as "MeanCrossStrategy" for "mean_cross". It cannot
/// meet a word of the language, whatever the name is.
std::string strategyClassName(const std::string& name);

/// A file of a project, by its path within.
struct ProjectFile {
  std::string name, text;
};

/// Everything that a new strategy's project holds: its sources, its run, and data to run it on.
/// `name` must be a good one.
std::vector<ProjectFile> strategyProject(const std::string& name);

}  // namespace orvane
