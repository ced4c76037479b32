#pragma once

#include <string>
#include <string_view>

#include "shared/Export.h"

namespace orvane {

/// Conversions between GBK, which all text inside the library is in, and the encodings at its
/// edges. Any thread may call them. A sequence that cannot be converted becomes one U+FFFD, or
/// "?" on the way to GBK, byte by byte, so that nothing around it is lost.
ORVANE_API std::string gbkToUtf8(std::string_view gbk);
ORVANE_API std::string utf8ToGbk(std::string_view utf8);
ORVANE_API std::wstring gbkToWide(std::string_view gbk);
ORVANE_API std::string wideToGbk(std::wstring_view wide);

}  // namespace orvane
