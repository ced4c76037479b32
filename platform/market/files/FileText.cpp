#include "platform/market/files/FileText.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <QByteArray>
#include <QString>
#include <QStringDecoder>
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <string_view>

#include "platform/market/files/DataFiles.h"
#include "platform/market/files/Parallel.h"
#include "shared/TextCodec.h"

namespace orvane::detail {
namespace {

[[noreturn]] void fail(const std::string& path, const std::string& what) {
  throw DataFileError(path + ": " + what);
}

constexpr std::size_t kReadStep = std::size_t{1} << 20;

/// What market data mostly unpack to.
constexpr std::size_t kUsualUnpackRatio = 8;

/// How many steps of `size` bytes `all` bytes make.
std::size_t stepsOf(std::size_t all, std::size_t size) { return (all + size - 1) / size; }

/// A file that is open for reading.
class OpenFile {
 public:
  explicit OpenFile(const std::string& path)
      : path_(path), descriptor_(open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
    if (descriptor_ < 0) fail(path_, std::string("cannot be read: ") + strerror(errno));
  }
  ~OpenFile() { close(descriptor_); }
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;

  /// Reads up to `size` bytes at a place, fewer only at the end.
  std::size_t readAt(std::size_t place, char* to, std::size_t size) const {
    return readFully(to, size, [&](char* at, std::size_t most) {
      return pread(descriptor_, at, most, static_cast<off_t>(place + size - most));
    });
  }

  /// Reads up to `size` bytes of what has no places, such as a pipe.
  std::size_t readOn(char* to, std::size_t size) const {
    return readFully(to, size,
                     [&](char* at, std::size_t most) { return read(descriptor_, at, most); });
  }

 private:
  template <typename Read>
  std::size_t readFully(char* to, std::size_t size, const Read& readSome) const {
    std::size_t got = 0;
    while (got < size) {
      const ssize_t more = readSome(to + got, size - got);
      if (more == 0) break;
      if (more > 0)
        got += static_cast<std::size_t>(more);
      else if (errno != EINTR)
        fail(path_, std::string("cannot be read: ") + strerror(errno));
    }
    return got;
  }

  const std::string& path_;
  const int descriptor_;
};

/// Whether all bytes are of ASCII.
bool isPlain(std::string_view bytes) {
  std::size_t at = 0;
  std::uint64_t all = 0;
  for (; at + 8 <= bytes.size(); at += 8) {
    std::uint64_t word;
    std::memcpy(&word, bytes.data() + at, 8);
    all |= word;
  }
  for (; at < bytes.size(); ++at) all |= static_cast<unsigned char>(bytes[at]) & 0x80U;
  return (all & 0x8080808080808080U) == 0;
}

/// What the decoding asks about all bytes of a text.
struct Scan {
  std::atomic<bool> isAscii{true};
  std::atomic<bool> hasZero{false};

  void see(std::string_view bytes) {
    if (!isPlain(bytes)) isAscii = false;
    if (std::memchr(bytes.data(), 0, bytes.size()) != nullptr) hasZero = true;
  }
};

void scan(Scan& found, std::string_view text, int threads) {
  found.isAscii = true;
  found.hasZero = false;
  forEachOf(stepsOf(text.size(), kReadStep), threads,
            [&](std::size_t step) { found.see(text.substr(step * kReadStep, kReadStep)); });
}

/// Reads all bytes of a file, and scans them while the caches hold them.
Rows<char> readBytes(const std::string& path, int threads, Scan& found) {
  struct stat info {};
  if (stat(path.c_str(), &info) != 0) fail(path, std::string("cannot be read: ") + strerror(errno));
  if (S_ISDIR(info.st_mode)) fail(path, "is a folder, not a file");
  const OpenFile file(path);
  const bool hasSize = S_ISREG(info.st_mode);
  const auto size = static_cast<std::size_t>(hasSize ? info.st_size : 0);
  if (size > kMostTextBytes) fail(path, "is larger than 4 GiB");
  Rows<char> bytes;
  bytes.reserve(size + 1);  // With a byte more to see its end.
  bytes.resizeForWriting(size);
  forEachOf(stepsOf(size, kReadStep), threads, [&](std::size_t step) {
    const std::size_t from = step * kReadStep;
    const std::size_t wanted = std::min(kReadStep, size - from);
    // Half a file may look like a whole one.
    if (file.readAt(from, bytes.data() + from, wanted) < wanted)
      fail(path, "was cut short while it was read");
    found.see({bytes.data() + from, wanted});
  });
  // What has no size, and what has grown.
  for (std::size_t step = hasSize ? 1 : kReadStep;; step = kReadStep) {
    const std::size_t before = bytes.size();
    if (before > kMostTextBytes) fail(path, "is larger than 4 GiB");
    if (before + step > bytes.capacity()) bytes.reserve(2 * before + step);
    bytes.resizeForWriting(before + step);
    const std::size_t got = hasSize ? file.readAt(before, bytes.data() + before, step)
                                    : file.readOn(bytes.data() + before, step);
    bytes.resizeForWriting(before + got);
    if (got > 0) found.see({bytes.data() + before, got});
    if (got < step) return bytes;
  }
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

  Rows<char> run() {
    Rows<char> out;
    // Memory that is never touched costs nothing.
    out.reserve(std::min(limit_, kUsualUnpackRatio * packed_.size()));
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
  std::size_t member(std::string_view packed, Rows<char>& out) {
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
      if (before + room > out.capacity()) out.reserve(std::max(before + room, 2 * before));
      out.resizeForWriting(before + room);
      stream_.next_out = reinterpret_cast<Bytef*>(out.data() + before);
      stream_.avail_out = static_cast<uInt>(room);
      const int result = inflate(&stream_, Z_NO_FLUSH);
      out.resizeForWriting(before + room - stream_.avail_out);
      if (out.size() > limit_)
        fail(path_,
             "unpacks to more than " + std::to_string(limit_ >> 20) +
                 " MiB, which no market data of its size does; unpack it first if it is genuine");
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

bool isUtf8(std::string_view bytes) {
  return QByteArrayView(bytes.data(), static_cast<qsizetype>(bytes.size())).isValidUtf8();
}

void setText(FileText& file, std::string_view text) {
  Rows<char> bytes;
  bytes.append({text.data(), text.size()});
  file.bytes = std::move(bytes);
  file.text = {file.bytes.data(), file.bytes.size()};
}

/// `found` is what a scan of all bytes found.
void decode(FileText& file, const std::string& encoding, int threads, Scan& found) {
  std::string_view& text = file.text;
  const std::string_view head = text.substr(0, 3);
  const bool little = head.starts_with("\xFF\xFE");
  if (little || head.starts_with("\xFE\xFF") || encoding == "utf-16") {
    setText(file, decodeUtf16(file.path, text,
                              little ? QStringDecoder::Utf16LE
                                     : (head.starts_with("\xFE\xFF") ? QStringDecoder::Utf16BE
                                                                     : QStringDecoder::Utf16LE)));
    scan(found, text, threads);
  } else {
    if (head == "\xEF\xBB\xBF") {
      text.remove_prefix(3);
      scan(found, text, threads);
    }
    if (!found.isAscii && encoding == "gbk") {
      setText(file, gbkToUtf8(std::string(text)));
    } else if (!found.isAscii && !isUtf8(text)) {
      if (encoding == "utf-8") fail(file.path, "is not good UTF-8");
      setText(file, gbkToUtf8(std::string(text)));
      file.notes.push_back(file.path + ": not UTF-8, so read as GBK");
    }
  }
  if (!found.hasZero) return;
  const std::size_t zero = text.find('\0');
  if (zero == text.npos) return;
  const auto line = 1 + std::count(text.begin(), text.begin() + zero, '\n');
  throw DataFileError(file.path + ":" + std::to_string(line) + ": a zero byte; this is not text");
}

}  // namespace

FileText readFileText(const std::string& path, const std::string& encoding, int threads) {
  if (threads <= 0) threads = usualReadThreads();
  Scan found;
  FileText file{path, readBytes(path, threads, found), {}, {}};
  const auto seen = [&file] { return std::string_view(file.bytes.data(), file.bytes.size()); };
  if (seen().empty()) fail(path, "is empty");
  if (seen().starts_with("\x1F\x8B")) {
    file.bytes = Unpacker(path, seen()).run();
    scan(found, seen(), threads);
  }
  if (seen().empty()) fail(path, "is empty");
  file.text = seen();
  refuseOtherPackings(path, file.text);
  decode(file, encoding, threads, found);
  // Lines that end in a lone carriage return.
  if (file.text.find('\n') == file.text.npos)
    std::replace(file.bytes.begin(), file.bytes.end(), '\r', '\n');
  return file;
}

}  // namespace orvane::detail
