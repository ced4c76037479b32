#include "host/InstrumentInputs.h"

#include <fmt/core.h>

#include <algorithm>
#include <map>
#include <stdexcept>

#include "host/InputError.h"
#include "platform/reference/InstrumentFile.h"
#include "shared/TextCodec.h"

namespace orvane {
namespace {

/// Joins the parts of a value that holds commas with "+", as the short form of sessions wants it.
std::string withoutInnerCommas(const std::string& text) {
  std::string result;
  std::size_t begin = 0;
  while (begin <= text.size()) {
    const std::size_t end = std::min(text.find(',', begin), text.size());
    const std::string part = text.substr(begin, end - begin);
    const bool isOfValue = part.find('=') == std::string::npos && !part.empty() &&
                           result.find('=') != std::string::npos;
    if (begin != 0) result += isOfValue ? '+' : ',';
    result += part;
    begin = end + 1;
  }
  return result;
}

}  // namespace

InstrumentInput instrumentOf(const std::string& text, const std::string& place) {
  const std::string origin = fmt::format("{} {}", place, text);
  try {
    return {parseInstrument(withoutInnerCommas(text)), origin};
  } catch (const std::invalid_argument& error) {
    throw InputError(fmt::format("{}: {}", origin, error.what()));
  }
}

std::vector<InstrumentInput> instrumentsOfFile(const std::string& path) {
  std::vector<InstrumentInput> result;
  try {
    for (Instrument& instrument : loadInstruments(path)) {
      const std::string origin = fmt::format("{}: {}", path, instrumentText(instrument));
      result.push_back({std::move(instrument), origin});
    }
  } catch (const std::invalid_argument& error) {
    throw InputError(error.what());
  }
  return result;
}

void checkNotGivenTwice(const std::vector<InstrumentInput>& instruments) {
  std::map<std::string, const InstrumentInput*> known;
  for (const InstrumentInput& input : instruments) {
    const auto [at, isNew] = known.try_emplace(instrumentText(input.instrument), &input);
    if (!isNew)
      throw InputError(fmt::format("{}: is given already: {}", input.origin, at->second->origin));
  }
}

void setCodeText(Instrument& instrument, const std::string& codeText) {
  const auto dot = codeText.rfind('.');
  const bool hasMarket = dot != std::string::npos && dot != 0 && dot + 1 != codeText.size();
  instrument.code = utf8ToGbk(hasMarket ? codeText.substr(0, dot) : codeText);
  instrument.market = hasMarket ? utf8ToGbk(codeText.substr(dot + 1)) : std::string();
}

std::string instrumentText(const Instrument& instrument) {
  return gbkToUtf8(instrument.market.empty() ? instrument.code
                                             : instrument.code + "." + instrument.market);
}

}  // namespace orvane
