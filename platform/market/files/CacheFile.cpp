#include "platform/market/files/CacheFile.h"

#define XXH_INLINE_ALL
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#include <xxhash.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <stdexcept>
#include <system_error>

#include "platform/market/files/CacheHead.h"
#include "platform/market/files/Parallel.h"

namespace orvane {
namespace detail {
namespace {

constexpr std::int64_t kNsPerSecond = 1'000'000'000;

std::int64_t nanoseconds(const timespec& time) {
  return std::int64_t{time.tv_sec} * kNsPerSecond + time.tv_nsec;
}

[[noreturn]] void fail(const std::string& path, const std::string& what) {
  throw DataFileError(path + ": " + what);
}

/// A descriptor that is closed with this object.
class Descriptor {
 public:
  explicit Descriptor(int descriptor) : descriptor_(descriptor) {}
  ~Descriptor() {
    if (descriptor_ >= 0) close(descriptor_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  int get() const { return descriptor_; }

 private:
  const int descriptor_;
};

/// The head's checksum: over all of it, as if its own place held 0.
std::uint64_t headHash(CachePreamble preamble, std::string_view behind) {
  preamble.headHash = 0;
  XXH3_state_t state;
  XXH3_64bits_reset(&state);
  XXH3_64bits_update(&state, &preamble, sizeof(preamble));
  XXH3_64bits_update(&state, behind.data(), behind.size());
  return XXH3_64bits_digest(&state);
}

std::uint64_t metaRoom(std::uint64_t metaBytes) { return (metaBytes + 7) / 8 * 8; }

/// A file that is mapped into memory, and what its head says.
class MappedCache {
 public:
  explicit MappedCache(const std::string& path) : path_(path) {
    const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    struct stat info {};
    if (file.get() < 0 || fstat(file.get(), &info) != 0)
      fail(path_, std::string("cannot be read: ") + strerror(errno));
    if (S_ISDIR(info.st_mode)) fail(path_, "is a folder, not a file");
    modifiedNs_ = nanoseconds(info.st_mtim);
    size_ = S_ISREG(info.st_mode) ? static_cast<std::uint64_t>(info.st_size) : 0;
    if (size_ == 0) fail(path_, "is empty");
    // Rows that somebody changes are copied then, and the file never changes.
    void* const memory =
        mmap(nullptr, size_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_NORESERVE, file.get(), 0);
    if (memory == MAP_FAILED) fail(path_, std::string("cannot be mapped: ") + strerror(errno));
    const std::uint64_t size = size_;
    memory_ = {memory, [size](void* mapped) { munmap(mapped, size); }};
    readHead();
  }

  const std::shared_ptr<void>& memory() const { return memory_; }
  bool isUntouched() const { return modifiedNs_ == preamble_.madeNs; }
  std::int64_t madeNs() const { return preamble_.madeNs; }
  std::string_view meta() const { return bytes().substr(sizeof(preamble_), preamble_.metaBytes); }

  /// The rows of a section.
  void* find(std::uint64_t offset, std::uint64_t count, std::uint64_t size) const {
    const std::uint64_t room = size_ - dataOffset_;
    if (offset % kCacheAlignment != 0 || offset > room || count > (room - offset) / size)
      fail(path_, "damaged: its description names rows that are not there");
    return static_cast<char*>(memory_.get()) + dataOffset_ + offset;
  }

  /// Compares all data with their checksums.
  void check() const {
    std::atomic<std::uint64_t> firstBad = preamble_.checks;
    const char* const checks = bytes().data() + sizeof(preamble_) + metaRoom(preamble_.metaBytes);
    forEachOf(preamble_.checks, usualReadThreads(), [&](std::size_t i) {
      std::uint64_t wanted = 0;
      std::memcpy(&wanted, checks + i * 8, 8);
      const std::string_view part = bytes().substr(partOffset(i), kCacheCheckBytes);
      if (XXH3_64bits(part.data(), part.size()) == wanted) return;
      for (std::uint64_t bad = firstBad; i < bad && !firstBad.compare_exchange_weak(bad, i);)
        continue;
    });
    if (firstBad == preamble_.checks) return;
    const std::uint64_t from = partOffset(firstBad);
    fail(path_, "damaged: bytes " + std::to_string(from) + " to " +
                    std::to_string(std::min(from + kCacheCheckBytes, size_) - 1) +
                    " are not what was written; make it anew");
  }

 private:
  std::string_view bytes() const { return {static_cast<const char*>(memory_.get()), size_}; }
  std::uint64_t partOffset(std::uint64_t part) const {
    return dataOffset_ + part * kCacheCheckBytes;
  }

  void readHead() {
    const std::string_view magic = bytes().substr(0, kCacheMagic.size());
    if (magic != kCacheMagic.substr(0, magic.size())) fail(path_, "is no cache of market data");
    if (size_ < sizeof(preamble_)) failShort(sizeof(preamble_));
    std::memcpy(&preamble_, bytes().data(), sizeof(preamble_));
    if (preamble_.byteOrder != kCacheByteOrder)
      fail(path_, "was made on a machine of another byte order; make it anew on this one");
    if (preamble_.version != kCacheVersion)
      fail(path_, "is a cache of version " + std::to_string(preamble_.version) +
                      ", and this program knows version " + std::to_string(kCacheVersion) +
                      "; make it anew");
    // Each bound by the file's size first, so that no sum wraps round.
    const std::uint64_t most = preamble_.fileBytes;
    const std::uint64_t headBytes = sizeof(preamble_) +
                                    metaRoom(std::min(preamble_.metaBytes, most)) +
                                    8 * std::min(preamble_.checks, most / 8);
    if (size_ < most) failShort(most);
    if (size_ > most)
      fail(path_, "is not whole: it has " + std::to_string(size_) +
                      " bytes, but its head tells of " + std::to_string(most));
    const std::string_view head = bytes().substr(0, headBytes);
    dataOffset_ = alignedForCache(headBytes);
    const std::uint64_t dataBytes = size_ < dataOffset_ ? 0 : size_ - dataOffset_;
    const bool fits = preamble_.metaBytes <= most && headBytes <= size_ && dataOffset_ <= size_ &&
                      preamble_.checks == (dataBytes + kCacheCheckBytes - 1) / kCacheCheckBytes;
    if (!fits || headHash(preamble_, head.substr(sizeof(preamble_))) != preamble_.headHash)
      fail(path_, "damaged: its head (bytes 0 to " + std::to_string(headBytes - 1) +
                      ") is not what was written; make it anew");
  }

  [[noreturn]] void failShort(std::uint64_t wanted) const {
    fail(path_,
         "is cut short: it has " + std::to_string(size_) + " bytes of " + std::to_string(wanted));
  }

  const std::string& path_;
  std::uint64_t size_ = 0;
  std::int64_t modifiedNs_ = 0;
  std::uint64_t dataOffset_ = 0;
  std::shared_ptr<void> memory_;
  CachePreamble preamble_;
};

/// Writes a file under a name of its own, and gives it its true one at the end.
class NewFile {
 public:
  explicit NewFile(const std::string& path) : path_(path), file_(make()) {
    if (file_.get() < 0) failWrite();
  }
  ~NewFile() {
    if (!isKept_ && file_.get() >= 0) unlink(temporary_.c_str());
  }
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  void writeAt(std::uint64_t offset, const void* bytes, std::uint64_t count) const {
    const char* at = static_cast<const char*>(bytes);
    while (count > 0) {
      const ssize_t done = pwrite(file_.get(), at, count, static_cast<off_t>(offset));
      if (done < 0 && errno == EINTR) continue;
      if (done <= 0) failWrite();
      at += done;
      offset += static_cast<std::uint64_t>(done);
      count -= static_cast<std::uint64_t>(done);
    }
  }

  /// The bytes are on the disk before the name is: no loss of power leaves half a file.
  void keep(std::uint64_t size, std::int64_t modifiedNs) {
    const timespec modified{static_cast<time_t>(modifiedNs / kNsPerSecond),
                            static_cast<long>(modifiedNs % kNsPerSecond)};
    const timespec times[] = {{0, UTIME_OMIT}, modified};
    if (ftruncate(file_.get(), static_cast<off_t>(size)) != 0 || fsync(file_.get()) != 0 ||
        futimens(file_.get(), times) != 0 || std::rename(temporary_.c_str(), path_.c_str()) != 0)
      failWrite();
    isKept_ = true;
  }

 private:
  /// A process that was killed may have left its file, and another have its number now.
  int make() {
    constexpr int kMostLeftOver = 1000;
    int file = -1;
    for (int i = 0; i < kMostLeftOver; ++i) {
      temporary_ = path_ + ".new-" + std::to_string(getpid()) + "-" + std::to_string(++count_);
      file = open(temporary_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
      if (file >= 0 || errno != EEXIST) break;
    }
    return file;
  }

  [[noreturn]] void failWrite() const {
    throw std::system_error(errno, std::generic_category(), path_ + ": cannot be written");
  }

  static inline std::atomic<unsigned> count_{0};
  const std::string path_;
  std::string temporary_;
  const Descriptor file_;
  bool isKept_ = false;
};

/// The checksums of the data: sections with zeros between them.
std::vector<std::uint64_t> checksOf(const std::vector<CacheSection>& sections,
                                    std::uint64_t dataBytes) {
  std::vector<std::uint64_t> checks((dataBytes + kCacheCheckBytes - 1) / kCacheCheckBytes);
  forEachOf(checks.size(), usualReadThreads(), [&](std::size_t i) {
    const std::uint64_t from = i * kCacheCheckBytes;
    const std::uint64_t to = std::min(from + kCacheCheckBytes, dataBytes);
    static constexpr char kZeros[kCacheAlignment] = {};
    XXH3_state_t state;
    XXH3_64bits_reset(&state);
    std::uint64_t at = from;
    for (const CacheSection& section : sections) {
      const std::uint64_t begin = std::max(section.offset, from);
      const std::uint64_t end = std::min(section.offset + section.bytes, to);
      if (begin >= end) continue;
      XXH3_64bits_update(&state, kZeros, begin - at);
      XXH3_64bits_update(&state, static_cast<const char*>(section.rows) + (begin - section.offset),
                         end - begin);
      at = end;
    }
    XXH3_64bits_update(&state, kZeros, to - at);
    checks[i] = XXH3_64bits_digest(&state);
  });
  return checks;
}

/// In microseconds, which most file systems keep; where less is kept, each opening looks at the
/// bytes.
std::int64_t nowNs() {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  return nanoseconds(now) / 1000 * 1000;
}

}  // namespace
}  // namespace detail

bool isDataCache(const std::string& path) {
  if (path.ends_with(".ovb")) return true;
  // Only a file may be looked into: what comes from a pipe comes once.
  struct stat info {};
  if (stat(path.c_str(), &info) != 0 || !S_ISREG(info.st_mode)) return false;
  const detail::Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
  char head[8];
  static_assert(sizeof(head) == detail::kCacheMagic.size());
  return file.get() >= 0 && pread(file.get(), head, sizeof(head), 0) == sizeof(head) &&
         std::string_view(head, sizeof(head)) == detail::kCacheMagic;
}

DataCache openDataCache(const std::string& path, bool checkAll) {
  const detail::MappedCache mapped(path);
  const bool isTrusted = mapped.isUntouched() && !checkAll;
  if (!isTrusted) mapped.check();
  const detail::FindRows find = [&mapped](std::uint64_t offset, std::uint64_t count,
                                          std::uint64_t size) {
    return mapped.find(offset, count, size);
  };
  DataCache cache = detail::readCacheMeta(path, mapped.meta(), find, mapped.memory());
  cache.madeNs = mapped.madeNs();
  for (LoadedBars& loaded : cache.bars) loaded.series.isOrdered = isTrusted;
  for (LoadedTicks& loaded : cache.ticks) loaded.series.isOrdered = isTrusted;
  return cache;
}

void writeDataCache(const std::string& path, const DataCache& cache) {
  using namespace detail;
  std::vector<CacheSection> sections;
  std::string behind = cacheMeta(cache, sections);
  CachePreamble preamble;
  std::copy(kCacheMagic.begin(), kCacheMagic.end(), preamble.magic.begin());
  preamble.metaBytes = behind.size();
  const std::uint64_t dataBytes =
      sections.empty() ? 0 : sections.back().offset + sections.back().bytes;
  const std::vector<std::uint64_t> checks = checksOf(sections, dataBytes);
  preamble.checks = checks.size();
  preamble.madeNs = nowNs();
  behind.resize(metaRoom(behind.size()), ' ');
  behind.append(reinterpret_cast<const char*>(checks.data()), checks.size() * 8);
  const std::uint64_t dataOffset = alignedForCache(sizeof(preamble) + behind.size());
  preamble.fileBytes = dataOffset + dataBytes;
  preamble.headHash = headHash(preamble, behind);

  NewFile file(path);
  file.writeAt(0, &preamble, sizeof(preamble));
  file.writeAt(sizeof(preamble), behind.data(), behind.size());
  for (const CacheSection& section : sections)
    file.writeAt(dataOffset + section.offset, section.rows, section.bytes);
  file.keep(preamble.fileBytes, preamble.madeNs);
}

DataSource dataSourceOf(const std::string& path) {
  using namespace detail;
  const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
  struct stat info {};
  if (file.get() < 0 || fstat(file.get(), &info) != 0)
    fail(path, std::string("cannot be read: ") + strerror(errno));
  XXH3_state_t state;
  XXH3_128bits_reset(&state);
  std::vector<char> buffer(std::size_t{1} << 20);
  for (;;) {
    const ssize_t got = read(file.get(), buffer.data(), buffer.size());
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) fail(path, std::string("cannot be read: ") + strerror(errno));
    if (got == 0) break;
    XXH3_128bits_update(&state, buffer.data(), static_cast<std::size_t>(got));
  }
  const XXH128_hash_t hash = XXH3_128bits_digest(&state);
  char digits[33];
  std::snprintf(digits, sizeof(digits), "%016llx%016llx",
                static_cast<unsigned long long>(hash.high64),
                static_cast<unsigned long long>(hash.low64));
  return {std::filesystem::absolute(path).string(), static_cast<std::uint64_t>(info.st_size),
          std::max<std::int64_t>(nanoseconds(info.st_mtim), 0), digits};
}

}  // namespace orvane
