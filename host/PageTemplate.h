#pragma once

namespace orvane {

/// report.html without its data, made of host/page while building.
extern const char* const kPageHead;    ///< Up to the run's data.
extern const char* const kPageMiddle;  ///< From there to its timing.
extern const char* const kPageTail;

/// The same of sweep.html.
extern const char* const kSweepPageHead;  ///< Up to the sweep's data.
extern const char* const kSweepPageTail;

}  // namespace orvane
