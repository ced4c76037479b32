#pragma once

#include <string>
#include <vector>

#include "platform/reference/Instrument.h"
#include "shared/Export.h"

namespace orvane {

/// Reads an instruments file, JSON as docs/formats.md tells. Throws `std::invalid_argument` with
/// a UTF-8 text that names the file, the place, the key and the value.
ORVANE_API std::vector<Instrument> loadInstruments(const std::string& path);

/// Reads the short form of the command line (UTF-8): `CODE[.MARKET][,key=value...]`, such as
/// "IF2101.CFFEX,tick=0.2,multiplier=300,tz=Asia/Shanghai,sessions=09:30-11:30+13:00-15:00".
/// Throws `std::invalid_argument` with a UTF-8 text that names the key and the value.
ORVANE_API Instrument parseInstrument(const std::string& text);

/// Throws `std::invalid_argument`, with a UTF-8 text that names the field and the value, if a
/// field of the instrument is wrong.
ORVANE_API void checkInstrument(const Instrument& instrument);

}  // namespace orvane
