#pragma once

#include <string>

namespace orvane {

/// Writes "orvane: `message`" as a line to the standard error; where that cannot be written, it is
/// left at that.
void complain(const std::string& message);

/// The same for what is no fault, as "orvane: note: `message`".
void remark(const std::string& message);

/// Writes text to the standard output. Whether it could be is told by `outputFailure`.
void say(const std::string& text);

/// Writes out what the process, strategies included, gave to the standard output. Answers what
/// went wrong since the process began, as one UTF-8 message; empty if nothing did.
std::string outputFailure();

}  // namespace orvane
