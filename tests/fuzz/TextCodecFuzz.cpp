#include "shared/TextCodec.h"
#include "tests/fuzz/InputFile.h"

/// Text to and from GBK: never more replacement than there were bytes, and what came out of one
/// conversion goes through the others unchanged.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  const std::string utf8 = orvane::gbkToUtf8(bytes);
  orvane::require(utf8.size() <= 4 * bytes.size());
  // Of what cannot be read only a mark is left, and GBK has no sign for it.
  if (utf8.find("\xEF\xBF\xBD") == std::string::npos)
    orvane::require(orvane::wideToGbk(orvane::gbkToWide(bytes)) == orvane::utf8ToGbk(utf8));

  const std::string gbk = orvane::utf8ToGbk(bytes);
  orvane::require(gbk.size() <= bytes.size() + 1);
  orvane::require(orvane::utf8ToGbk(orvane::gbkToUtf8(gbk)) == gbk);
  return 0;
}
