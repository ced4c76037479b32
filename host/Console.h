#pragma once

#include <string>

namespace orvane {

/// Writes "orvane: `message`" as a line to the standard error; where that cannot be written, it is
/// left at that.
void complain(const std::string& message);

/// The same for what is no fault, as "orvane: note: `message`".
void remark(const std::string& message);

/// Says whether the standard error stands in the midst of a line that is rewritten as work goes on.
/// Any thread may call it.
void noteOpenLine(bool isOpen);

/// What clears such a line, or nothing: for whoever is about to write to the standard error, past
/// `complain`. May be called by a handler of a signal.
const char* beforeMessage();

/// Writes text to the standard output. Whether it could be is told by `outputFailure`.
void say(const std::string& text);

/// Writes out what the process, strategies included, gave to the standard output. Answers what
/// went wrong since the process began, as one UTF-8 message; empty if nothing did.
std::string outputFailure();

}  // namespace orvane
