#pragma once

#include <string>
#include <vector>

namespace orvane {

/// Finds the strategy module that a user means: a path, or a bare name such as "sma_cross", which
/// is looked for beside the command and in the folder of installed modules. Throws `InputError` if
/// there is no such file; `place` begins the message.
std::string findStrategyModule(const std::string& given, const std::string& place);

/// Loads a module to see that it is one and exports "createStrategy"; throws `InputError`
/// otherwise. It stays loaded: the runner uses it next.
void checkStrategyModule(const std::string& path, const std::string& place);

/// The bare names that `findStrategyModule` finds beside the command and in the folder of installed
/// modules, sorted. No module is loaded for it.
std::vector<std::string> strategyModuleNames();

}  // namespace orvane
