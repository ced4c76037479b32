#pragma once

#include <QJsonValue>
#include <string>
#include <vector>

#include "host/RunPlan.h"

namespace orvane {

/// An instrument of the command line: "CODE[.MARKET],key=value,...". A part without "=" belongs to
/// the value before it, since sessions hold commas. Throws `InputError`.
InstrumentInput parseInstrument(const std::string& text, const std::string& option);

/// The instruments of a JSON array, or of an object with the one key "instruments". The keys of
/// each are the fields of `Instrument`. `origin` is what messages begin with.
std::vector<InstrumentInput> parseInstruments(const QJsonValue& json, const std::string& origin);

/// "CODE.MARKET", or "CODE" without a market; UTF-8.
std::string instrumentText(const Instrument& instrument);

/// Splits "CODE.MARKET" at its last dot; UTF-8 in, GBK in the instrument.
void setCodeText(Instrument& instrument, const std::string& codeText);

}  // namespace orvane
