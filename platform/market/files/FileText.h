#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/market/Rows.h"

namespace orvane::detail {

/// The whole text of one file as UTF-8, whatever it was packed and encoded in.
struct FileText {
  std::string path;
  Rows<char> bytes;                ///< What holds the text.
  std::string_view text;           ///< No byte-order mark; line ends are "\n" or "\r\n".
  std::vector<std::string> notes;  ///< What was assumed about the encoding.
};

/// Most bytes that one file may unpack to.
inline constexpr std::size_t kMostTextBytes = std::size_t{4} << 30;

/// A packed file may unpack to this much whatever its size ...
inline constexpr std::size_t kFreeUnpackedBytes = std::size_t{64} << 20;

/// ... and to this many times its size beyond that.
inline constexpr std::size_t kMostUnpackRatio = 200;

/// Reads a file, plain or gzip-compressed. `encoding` is "", "utf-8", "gbk" or "utf-16"; empty:
/// by byte-order mark, else UTF-8 if the bytes are, else GBK. Up to `threads` threads read; 0: as
/// many as is usual. Throws `DataFileError`.
FileText readFileText(const std::string& path, const std::string& encoding, int threads = 0);

}  // namespace orvane::detail
