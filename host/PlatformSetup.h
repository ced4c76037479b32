#pragma once

#include <memory>

#include "host/DataSet.h"
#include "host/RunPlan.h"
#include "platform/EmbeddedPlatform.h"

namespace orvane {

/// The options of a plan's platform. Throws `InputError` if a time is wrong.
PlatformOptions platformOptions(const RunPlan& plan, const DataSet& data);

/// Makes a plan's platform and gives it everything that the plan names. Throws `InputError` if an
/// option, an instrument or a code is wrong.
std::unique_ptr<EmbeddedPlatform> makePlatform(const RunPlan& plan, const PlatformOptions& options,
                                               DataSet data);

}  // namespace orvane
