#include "shared/TextCodec.h"

#include <iconv.h>

#include <algorithm>
#include <stdexcept>

namespace orvane {
namespace {

/// One conversion of the C library. Opening one is dear, so each thread keeps its own.
class Converter {
 public:
  Converter(const char* to, const char* from) : handle_(iconv_open(to, from)) {
    if (handle_ == reinterpret_cast<iconv_t>(-1))
      throw std::runtime_error(std::string("no conversion from ") + from + " to " + to);
  }
  ~Converter() { iconv_close(handle_); }
  Converter(const Converter&) = delete;
  Converter& operator=(const Converter&) = delete;

  std::string convert(std::string_view text, std::string_view replacement) {
    std::string out;
    out.reserve(text.size() * 2);
    char* in = const_cast<char*>(text.data());
    std::size_t inLeft = text.size();
    char buffer[1024];
    while (inLeft > 0) {
      char* to = buffer;
      std::size_t toLeft = sizeof(buffer);
      const std::size_t before = inLeft;
      const std::size_t result = iconv(handle_, &in, &inLeft, &to, &toLeft);
      out.append(buffer, sizeof(buffer) - toLeft);
      const bool stuck = result == static_cast<std::size_t>(-1) && toLeft == sizeof(buffer);
      if (result == static_cast<std::size_t>(-1) && (stuck || before == inLeft)) {
        out.append(replacement);
        ++in;
        --inLeft;
        iconv(handle_, nullptr, nullptr, nullptr, nullptr);
      }
    }
    return out;
  }

 private:
  iconv_t handle_;
};

bool isAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

std::string_view bytesOf(std::wstring_view wide) {
  return {reinterpret_cast<const char*>(wide.data()), wide.size() * sizeof(wchar_t)};
}

}  // namespace

std::string gbkToUtf8(std::string_view gbk) {
  if (isAscii(gbk)) return std::string(gbk);
  thread_local Converter converter("UTF-8", "GBK");
  return converter.convert(gbk, "\xEF\xBF\xBD");
}

std::string utf8ToGbk(std::string_view utf8) {
  if (isAscii(utf8)) return std::string(utf8);
  thread_local Converter converter("GBK", "UTF-8");
  return converter.convert(utf8, "?");
}

std::wstring gbkToWide(std::string_view gbk) {
  if (isAscii(gbk)) return {gbk.begin(), gbk.end()};
  thread_local Converter converter("WCHAR_T", "GBK");
  static constexpr wchar_t kReplacement[] = L"\xFFFD";
  const std::string bytes = converter.convert(gbk, bytesOf(kReplacement));
  std::wstring wide(bytes.size() / sizeof(wchar_t), L'\0');
  std::copy(bytes.begin(), bytes.end(), reinterpret_cast<char*>(wide.data()));
  return wide;
}

std::string wideToGbk(std::wstring_view wide) {
  std::string gbk;
  thread_local Converter converter("GBK", "WCHAR_T");
  for (const wchar_t unit : wide) {
    if (unit < 0x80)
      gbk.push_back(static_cast<char>(unit));
    else
      gbk += converter.convert(bytesOf(std::wstring_view(&unit, 1)), "");
  }
  return gbk;
}

}  // namespace orvane
