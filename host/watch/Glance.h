#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "shared/Types.h"

namespace orvane {

/// What a runner holds of one code.
struct HoldingGlance {
  std::string code;   ///< UTF-8.
  double volume = 0;  ///< Long minus short.
};

/// One runner as it is seen at one moment. Texts are UTF-8.
struct RunnerGlance {
  std::string name;
  std::string status;       ///< As reports show it.
  bool isError = false;     ///< Whether its run ended as an error.
  std::string message;      ///< What came with the status.
  std::string callback;     ///< The call-back that it has been in for a while; empty if none.
  std::uint64_t calls = 0;  ///< Call-backs so far.
  double callsPerSecond = 0;
  double startBalance = 0;
  double equity = 0;  ///< The account's start and what this runner made of it.
  std::vector<HoldingGlance> holdings;
};

/// A run as it is seen at one moment. Texts are UTF-8.
struct Glance {
  std::string title;
  std::string phase;  ///< Such as "playing".
  std::string time;   ///< Simulated time on the clock of the run's zone; empty before it has one.
  std::string timeZone;                    ///< The zone's name.
  std::uint64_t delivered = 0, total = 0;  ///< Market records.
  double recordsPerSecond = 0;
  double elapsedSeconds = 0;
  double leftSeconds = -1;  ///< At the present rate; below 0 if that is not known.
  std::vector<RunnerGlance> runners;
  std::vector<std::string> log;  ///< The last lines, the oldest first.

  /// From 0 to 1.
  double share() const {
    return total == 0 ? 0 : static_cast<double>(delivered) / static_cast<double>(total);
  }
};

/// What the user chose to see.
struct ViewChoice {
  std::size_t first = 0;  ///< The runner that comes first.
  bool isPaused = false;
  bool showsHelp = false;
};

}  // namespace orvane
