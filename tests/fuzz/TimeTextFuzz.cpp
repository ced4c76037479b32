#include "host/InputError.h"
#include "host/TimeArgument.h"
#include "platform/market/files/Description.h"
#include "platform/market/files/FileNames.h"
#include "platform/market/files/MomentText.h"
#include "platform/market/files/NumberParser.h"
#include "tests/fuzz/InputFile.h"

namespace orvane {
namespace {

void readMoments(const std::string& text) {
  for (const auto order :
       {detail::DateOrder::Unknown, detail::DateOrder::DayFirst, detail::DateOrder::MonthFirst}) {
    detail::MomentText moment;
    if (detail::parseMoment(text, order, moment) != detail::DateResult::Good) continue;
    require(moment.hasDate || moment.hasTime);
    require(moment.msOfDay >= 0 && moment.msOfDay <= detail::kDayMs);
    require(moment.datePart <= text.size());
    if (moment.hasDate) {
      std::int64_t day = 0;
      require(detail::dayOfNumber(detail::numberOfDay(moment.day), day) && day == moment.day);
    }
  }
}

void readArgument(const std::string& text) {
  try {
    // What it writes it reads again as the same instant.
    const int64 time = parseTimeArgument(text, "America/New_York", "--from");
    require(parseTimeArgument(isoTime(time), "UTC", "--from") == time);
  } catch (const InputError& error) {
    require(std::string(error.what()).starts_with("--from"));
  }
}

void readNumber(const std::string& text) {
  double value = 0;
  if (!detail::NumberParser().parse(text, value)) return;
  double again = 0;
  require(detail::NumberParser().parse(detail::decimalText(value), again) && again == value);
}

}  // namespace
}  // namespace orvane

/// Texts of times, periods, numbers and file names: what is read is in range, and what is written
/// from it reads as the same.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  orvane::readMoments(text);
  orvane::readArgument(text);
  orvane::readNumber(text);
  orvane::require(orvane::detail::parsePeriod(text) >= 0);
  orvane::require(!orvane::detail::factsOfFileName(text).code.empty());
  return 0;
}
