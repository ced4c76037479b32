#pragma once

#include <chrono>
#include <string>

#include "shared/Types.h"

namespace orvane {

/// The instant that a text names, in UTC milliseconds: a date, or a date and a time separated by a
/// blank or "T" ("2021-01-04", "20210104", "2021-01-04 09:30", "2021-01-04T09:30:00.500"), read in
/// `timeZone` (an IANA name) unless it ends with "Z" or an offset such as "+08:00". Throws
/// `InputError` that begins with `option`.
int64 parseTimeArgument(const std::string& text, const std::string& timeZone,
                        const std::string& option);

/// The day that a text names, in one of the forms above. Throws `InputError` that begins with
/// `option`.
std::chrono::sys_days parseDateArgument(const std::string& text, const std::string& option);

/// Throws `InputError` that begins with `option` unless the name is that of a time zone.
void checkTimeZone(const std::string& name, const std::string& option);

/// A UTC time as "2021-01-04T01:30:00.500Z".
std::string isoTime(int64 utcMs);

}  // namespace orvane
