#pragma once

#include <string>
#include <vector>

#include "host/RunPlan.h"

namespace orvane {

/// The instrument of one text "CODE[.MARKET],key=value,...". A part without "=" belongs to the
/// value before it, since sessions hold commas. `place` begins the messages of `InputError`.
InstrumentInput instrumentOf(const std::string& text, const std::string& place);

/// The instruments of a JSON file. Throws `InputError`.
std::vector<InstrumentInput> instrumentsOfFile(const std::string& path);

/// "CODE.MARKET", or "CODE" without a market; UTF-8.
std::string instrumentText(const Instrument& instrument);

/// Throws `InputError` if two of them are of one code and market.
void checkNotGivenTwice(const std::vector<InstrumentInput>& instruments);

/// Splits "CODE.MARKET" at its last dot; UTF-8 in, GBK in the instrument.
void setCodeText(Instrument& instrument, const std::string& codeText);

}  // namespace orvane
