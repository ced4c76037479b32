#pragma once

#include <string>

namespace orvane {

/// Whether a shared library offers a function of this name. It is looked up in the file, and no
/// code of the library runs. False for whatever is no shared library of this kind of machine, or
/// cannot be read.
bool offersFunction(const std::string& path, const std::string& name);

}  // namespace orvane
