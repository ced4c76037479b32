#pragma once

#include <QJsonObject>
#include <string>

#include "host/RunPlan.h"

namespace orvane {

/// Reads a run's configuration file (docs/host.md) into `plan`. File names in it are relative to
/// its folder. Throws `InputError`.
void readRunConfig(const std::string& path, RunPlan& plan);

/// Gives every runner its name and its module's path, and checks that names differ and modules are
/// modules. `place` of runner i begins its messages. Throws `InputError`.
void completeRunners(RunPlan& plan, const std::string& place);

/// "10x" or "10" as 10; throws `InputError` that begins with `option`.
double parseSpeed(const std::string& text, const std::string& option);

}  // namespace orvane
