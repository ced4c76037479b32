#pragma once

#include <iconv.h>

#include <stdexcept>
#include <string>
#include <string_view>

namespace orvane::support {

/// A conversion by the system's own iconv, apart from the code under test. Throws where the text
/// cannot be converted.
inline std::string converted(const char* to, const char* from, std::string_view text) {
  const iconv_t handle = iconv_open(to, from);
  if (handle == reinterpret_cast<iconv_t>(-1)) throw std::runtime_error("no such conversion");
  std::string out(text.size() * 4 + 4, '\0');
  char* in = const_cast<char*>(text.data());
  std::size_t inLeft = text.size();
  char* at = out.data();
  std::size_t left = out.size();
  const std::size_t result = iconv(handle, &in, &inLeft, &at, &left);
  iconv_close(handle);
  if (result == static_cast<std::size_t>(-1)) throw std::runtime_error("not convertible");
  out.resize(out.size() - left);
  return out;
}

inline std::string gbkFromUtf8(std::string_view utf8) { return converted("GBK", "UTF-8", utf8); }
inline std::string utf8FromGbk(std::string_view gbk) { return converted("UTF-8", "GBK", gbk); }

}  // namespace orvane::support
