#include "platform/core/Periods.h"
#include "tests/fuzz/InputFile.h"

/// Texts of frequencies: a period, or a status and nothing touched.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  orvane::int64 term = -5;
  bool extra = false;
  const auto status = orvane::detail::parseFrequency(
      std::string(reinterpret_cast<const char*>(data), size), term, extra);
  orvane::require(status.code == 0 ? term >= 0 : term == -5);
  return 0;
}
