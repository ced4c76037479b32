#include "platform/market/files/FileText.h"

#include <sys/stat.h>
#include <zlib.h>

#include <QByteArray>
#include <QString>
#include <QStringDecoder>
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string_view>

#include "platform/market/files/DataFiles.h"
#include "shared/TextCodec.h"

namespace orvane::detail {
namespace {

[[noreturn]] void fail(const std::string& path, const std::string& what) {
  throw DataFileError(path + ": " + what);
}

constexpr std::size_t kReadStep = std::size_t{1} << 20;

std::string readBytes(const std::string& path) {
  struct stat info {};
  if (stat(path.c_str(), &info) != 0) fail(path, std::string("cannot be read: ") + strerror(errno));
  if (S_ISDIR(info.st_mode)) fail(path, "is a folder, not a file");
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"),
                                                             &std::fclose);
  if (!file) fail(path, std::string("cannot be read: ") + strerror(errno));

  // A file in one step, with a byte more to see its end; what has no size, and what grows, in many.
  const bool hasSize = S_ISREG(info.st_mode);
  const auto size = static_cast<std::size_t>(hasSize ? info.st_size : 0);
  std::string bytes;
  for (std::size_t step = hasSize ? size + 1 : kReadStep;; step = kReadStep) {
    const std::size_t before = bytes.size();
    if (std::max(before, size) > kMostTextBytes) fail(path, "is larger than 4 GiB");
    bytes.resize(before + step);
    const std::size_t got = std::fread(bytes.data() + before, 1, step, file.get());
    bytes.resize(before + got);
    if (std::ferror(file.get())) fail(path, std::string("cannot be read: ") + strerror(errno));
    if (got < step) break;
  }
  // Half a file may look like a whole one.
  if (bytes.size() < size) fail(path, "was cut short while it was read");
  return bytes;
}

/// Unpacks gzip members one after the other.
class Unpacker {
 public:
  Unpacker(const std::string& path, std::string_view packed) : path_(path), packed_(packed) {
    if (inflateInit2(&stream_, 16 + MAX_WBITS) != Z_OK) fail(path_, "cannot be unpacked");
    limit_ =
        std::min(kMostTextBytes, std::max(kFreeUnpackedBytes, packed.size() * kMostUnpackRatio));
  }
  ~Unpacker() { inflateEnd(&stream_); }
  Unpacker(const Unpacker&) = delete;
  Unpacker& operator=(const Unpacker&) = delete;

  std::string run() {
    std::string out;
    std::size_t used = 0;
    while (used < packed_.size()) {
      used += member(packed_.substr(used), out);
      const std::string_view rest = packed_.substr(used);
      if (rest.empty() || rest.find_first_not_of('\0') == rest.npos) break;
      if (rest.substr(0, 2) != "\x1F\x8B") fail(path_, "broken gzip: bytes after its end");
      inflateReset(&stream_);
    }
    return out;
  }

 private:
  std::size_t member(std::string_view packed, std::string& out) {
    std::size_t fed = 0;
    stream_.avail_in = 0;
    for (;;) {
      if (stream_.avail_in == 0) {
        const std::size_t step = std::min<std::size_t>(packed.size() - fed, 1U << 30);
        if (step == 0) fail(path_, "broken gzip: it ends too early");
        stream_.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(packed.data() + fed));
        stream_.avail_in = static_cast<uInt>(step);
        fed += step;
      }
      const std::size_t before = out.size();
      const std::size_t room = std::clamp<std::size_t>(before, 1U << 18, 1U << 26);
      out.resize(before + room);
      stream_.next_out = reinterpret_cast<Bytef*>(out.data() + before);
      stream_.avail_out = static_cast<uInt>(room);
      const int result = inflate(&stream_, Z_NO_FLUSH);
      out.resize(before + room - stream_.avail_out);
      if (out.size() > limit_)
        fail(path_, "unpacks to more than " + std::to_string(limit_ >> 20) +
                        " MiB, which no market data of its size does");
      if (result == Z_STREAM_END) return fed - stream_.avail_in;
      if (result != Z_OK && result != Z_BUF_ERROR)
        fail(path_, std::string("broken gzip: ") + (stream_.msg ? stream_.msg : "bad data"));
    }
  }

  const std::string& path_;
  std::string_view packed_;
  std::size_t limit_ = 0;
  z_stream stream_{};
};

void refuseOtherPackings(const std::string& path, std::string_view bytes) {
  using namespace std::string_view_literals;
  static constexpr std::pair<std::string_view, const char*> kMagics[] = {
      {"PK\x03\x04"sv, "a zip archive"}, {"\x28\xB5\x2F\xFD"sv, "a zstd file"},
      {"BZh"sv, "a bzip2 file"},         {"\xFD\x37zXZ\0"sv, "an xz file"},
      {"PAR1"sv, "a Parquet file"},      {"\x89HDF"sv, "an HDF5 file"},
  };
  for (const auto& [magic, name] : kMagics)
    if (bytes.substr(0, magic.size()) == magic)
      fail(path, std::string("is ") + name + ": unpack or export it to CSV first");
}

std::string decodeUtf16(const std::string& path, std::string_view bytes,
                        QStringDecoder::Encoding encoding) {
  QStringDecoder decoder(encoding);
  const QString text = decoder(QByteArrayView(bytes.data(), static_cast<qsizetype>(bytes.size())));
  if (decoder.hasError()) fail(path, "is not good UTF-16");
  std::string utf8 = text.toStdString();
  if (utf8.starts_with("\xEF\xBB\xBF")) utf8.erase(0, 3);
  return utf8;
}

bool hasHighBytes(std::string_view bytes) {
  std::size_t at = 0;
  for (; at + 8 <= bytes.size(); at += 8) {
    std::uint64_t word;
    std::memcpy(&word, bytes.data() + at, 8);
    if (word & 0x8080808080808080U) return true;
  }
  return std::any_of(bytes.begin() + static_cast<std::ptrdiff_t>(at), bytes.end(),
                     [](char c) { return (c & 0x80) != 0; });
}

bool isUtf8(std::string_view bytes) {
  return QByteArrayView(bytes.data(), static_cast<qsizetype>(bytes.size())).isValidUtf8();
}

void decode(FileText& file, const std::string& encoding) {
  std::string& text = file.text;
  const std::string_view head = std::string_view(text).substr(0, 3);
  const bool little = head.starts_with("\xFF\xFE");
  if (little || head.starts_with("\xFE\xFF") || encoding == "utf-16") {
    text = decodeUtf16(file.path, text,
                       little ? QStringDecoder::Utf16LE
                              : (head.starts_with("\xFE\xFF") ? QStringDecoder::Utf16BE
                                                              : QStringDecoder::Utf16LE));
    return;
  }
  if (head == "\xEF\xBB\xBF") text.erase(0, 3);
  if (!hasHighBytes(text)) return;
  if (encoding == "gbk") {
    text = gbkToUtf8(text);
  } else if (!isUtf8(text)) {
    if (encoding == "utf-8") fail(file.path, "is not good UTF-8");
    text = gbkToUtf8(text);
    file.notes.push_back(file.path + ": not UTF-8, so read as GBK");
  }
}

}  // namespace

FileText readFileText(const std::string& path, const std::string& encoding) {
  FileText file{path, readBytes(path), {}};
  if (file.text.empty()) fail(path, "is empty");
  if (file.text.starts_with("\x1F\x8B")) file.text = Unpacker(path, file.text).run();
  if (file.text.empty()) fail(path, "is empty");
  refuseOtherPackings(path, file.text);
  decode(file, encoding);
  if (const std::size_t zero = file.text.find('\0'); zero != std::string::npos) {
    const auto line = 1 + std::count(file.text.begin(), file.text.begin() + zero, '\n');
    throw DataFileError(path + ":" + std::to_string(line) + ": a zero byte; this is not text");
  }
  // Lines that end in a lone carriage return.
  if (file.text.find('\n') == std::string::npos)
    std::replace(file.text.begin(), file.text.end(), '\r', '\n');
  return file;
}

}  // namespace orvane::detail
