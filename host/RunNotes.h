#pragma once

#include <string>
#include <vector>

#include "host/DataSet.h"
#include "host/RunPlan.h"
#include "platform/EmbeddedPlatform.h"

namespace orvane {

struct RunOutcome;

/// What a user should know about a run that goes well, since hardly anybody means it so. Each is
/// one UTF-8 line. Made of the data and the plan, before the data are handed over: what of them
/// lies between the bounds of the run, and what will never be seen of records and events.
std::vector<std::string> notesOnRange(const RunPlan& plan, const PlatformOptions& options,
                                      const DataSet& data);

/// Of records in the dictionary's file that earlier runs published; empty without any.
std::vector<std::string> notesOnDictionary(const RunPlan& plan, EmbeddedPlatform& platform);

/// Of a margin rate that is hardly one.
std::vector<std::string> notesOnTrade(const RunPlan& plan);

/// Of runners that were given ticks alone and did nothing with them, and of a run in which nobody
/// asked for anything.
std::vector<std::string> notesOnRunners(const RunOutcome& outcome);

}  // namespace orvane
