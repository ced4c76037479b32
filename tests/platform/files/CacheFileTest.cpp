#include "platform/market/files/CacheFile.h"

#include <gmock/gmock.h>

#include <unistd.h>

#include <fstream>
#include <iterator>

#include "platform/core/ZoneRules.h"
#include "platform/market/files/CacheFolder.h"
#include "tests/platform/files/DataFileSupport.h"

namespace orvane {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::StartsWith;

constexpr const char* kBarText =
    "datetime,open,high,low,close,volume\n2021-01-04 09:30,1,2,1,2,5\n"
    "2021-01-04 09:31,2,3,1,2,6\n2021-01-04 09:33,2,3,1,2,7\n";
constexpr const char* kTickText =
    "symbol,datetime,price,size,bid1,bidsize1,ask1,ask2\n"
    "A,2021-01-04 09:30:00.5,1.5,2,1,3,2,2.5\nB,2021-01-04 09:30:01,7,8,,,,\n"
    "A,2021-01-04 09:30:02,1.75,1,1,3,2,2.5\n";

std::string wholeFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

template <typename T>
void setBytes(std::string& bytes, std::size_t at, T value) {
  std::memcpy(bytes.data() + at, &value, sizeof(value));
}

/// A cache of three bars.
class CacheFile : public ::testing::Test {
 protected:
  CacheFile() {
    DataCache cache;
    cache.bars = loadBars(requestOf({folder_.write("a_1min.csv", kBarText)},
                                    R"({"timeZone": "Asia/Shanghai", "market": "X"})"));
    cache.sources = {dataSourceOf(folder_.path("a_1min.csv"))};
    cache.reading = "as bars";
    bars_ = cache.bars.front();
    writeDataCache(path_, cache);
  }

  std::string error(const std::string& path) const {
    return messageOf([&] { loadBars(requestOf({path})); }, folder_);
  }
  std::string errorOfBytes(const std::string& bytes) const {
    return error(folder_.write("b.ovb", bytes));
  }

  const DataFolder folder_;
  const std::string path_ = folder_.path("a.ovb");
  LoadedBars bars_;
};

void expectSameBars(const LoadedBars& one, const LoadedBars& other) {
  EXPECT_EQ(one.code, other.code);
  EXPECT_EQ(one.notes, other.notes);
  EXPECT_EQ(one.series.periodMs, other.series.periodMs);
  EXPECT_EQ(one.series.timeZone, other.series.timeZone);
  EXPECT_EQ(one.series.bars, other.series.bars);
}

TEST_F(CacheFile, shouldGiveBackTheBarsAndAllThatIsKnownOfThem) {
  const DataCache cache = openDataCache(path_);
  ASSERT_EQ(cache.bars.size(), 1U);
  expectSameBars(cache.bars.front(), bars_);
  EXPECT_EQ(cache.bars.front().series.origin, folder_.path("a_1min.csv"));
  EXPECT_EQ(cache.bars.front().code, "A.X");
  EXPECT_TRUE(cache.ticks.empty());
  EXPECT_EQ(cache.reading, "as bars");
  ASSERT_EQ(cache.sources.size(), 1U);
  EXPECT_EQ(cache.sources[0].path, folder_.path("a_1min.csv"));
  EXPECT_EQ(cache.sources[0].bytes, std::string(kBarText).size());
  EXPECT_EQ(cache.sources[0].hash.size(), 32U);
  EXPECT_GT(cache.madeNs, cache.sources[0].modifiedNs - 1'000'000'000);
}

TEST_F(CacheFile, shouldGiveBackTheTicksOfSeveralCodes) {
  DataCache cache;
  cache.ticks = loadTicks(requestOf({folder_.write("t.csv", kTickText)}));
  ASSERT_EQ(cache.ticks.size(), 2U);
  writeDataCache(path_, cache);
  const auto again = loadTicks(requestOf({path_}));
  ASSERT_EQ(again.size(), 2U);
  for (std::size_t i = 0; i < 2; ++i) {
    EXPECT_EQ(again[i].code, cache.ticks[i].code);
    EXPECT_EQ(again[i].notes, cache.ticks[i].notes);
    EXPECT_EQ(again[i].series.columns, cache.ticks[i].series.columns);
    EXPECT_EQ(again[i].series.times, cache.ticks[i].series.times);
    EXPECT_EQ(again[i].series.tradingDays, cache.ticks[i].series.tradingDays);
    EXPECT_EQ(again[i].series.cells, cache.ticks[i].series.cells);
  }
  auto one = requestOf({path_});
  one.code = "b";
  const auto chosen = loadTicks(one);
  ASSERT_EQ(chosen.size(), 1U);
  EXPECT_EQ(chosen[0].code, "b");
  EXPECT_EQ(chosen[0].series.rows(), 1U);
}

TEST_F(CacheFile, shouldBeTakenForACacheByItsFirstBytesToo) {
  const std::string other = folder_.write("a.data", wholeFile(path_));
  EXPECT_TRUE(isDataCache(other));
  EXPECT_FALSE(isDataCache(folder_.path("a_1min.csv")));
  const LoadedBars read = loadBars(requestOf({other})).front();
  expectSameBars(read, bars_);
  EXPECT_EQ(read.series.origin, other) << "messages name what was given";
}

TEST_F(CacheFile, shouldLeaveTheFileAloneWhenRowsAreChanged) {
  const std::string before = wholeFile(path_);
  auto loaded = loadBars(requestOf({path_}));
  loaded.front().series.bars[0].words[2] = 77;
  loaded.front().series.bars.push_back({});
  EXPECT_EQ(loaded.front().series.bars[0].words[2], 77);
  EXPECT_EQ(loaded.front().series.bars.size(), 4U);
  EXPECT_EQ(wholeFile(path_), before);
}

TEST_F(CacheFile, shouldTakeTheCodeThatIsAskedFor) {
  auto request = requestOf({path_});
  request.code = "IF.CFFEX";
  EXPECT_EQ(loadBars(request).front().code, "IF.CFFEX");
}

TEST_F(CacheFile, shouldSayWhatItHoldsWhenItIsAskedForAnother) {
  EXPECT_EQ(messageOf([&] { loadTicks(requestOf({path_})); }, folder_),
            "a.ovb: the cache holds bars, not ticks; use --bars for it");
}

TEST_F(CacheFile, shouldRefuseOptionsThatCannotChangeItAnyMore) {
  EXPECT_EQ(
      messageOf([&] { loadBars(requestOf({path_}, R"({"stamp": "end"})")); }, folder_),
      "a.ovb: a cache is read already, and \"stamp\" cannot change it; say so when it is made");
  EXPECT_EQ(
      messageOf([&] { loadBars(requestOf({path_}, R"({"priceTick": "0.2"})")); }, folder_),
      "a.ovb: a cache is read already, and \"priceTick\" cannot change it; say so when it is made");
  EXPECT_EQ(messageOf([&] { loadBars(requestOf({path_}, R"({"timeZone": "UTC"})")); }, folder_),
            "a.ovb: the cache was made with times of the zone \"Asia/Shanghai\", not \"UTC\"");
  EXPECT_NO_THROW(loadBars(requestOf({path_}, R"({"timeZone": "Asia/Shanghai", "code": "A"})")));
}

TEST_F(CacheFile, shouldTellOfEachLengthThatItIsCutShortTo) {
  const std::string bytes = wholeFile(path_);
  for (std::size_t size = 1; size < bytes.size(); size += size < 400 ? 1 : 97)
    ASSERT_THAT(errorOfBytes(bytes.substr(0, size)),
                StartsWith("b.ovb: is cut short: it has " + std::to_string(size) + " bytes of "));
  EXPECT_EQ(errorOfBytes(""), "b.ovb: is empty");
  EXPECT_THAT(errorOfBytes(bytes + "x"), StartsWith("b.ovb: is not whole: it has "));
}

TEST_F(CacheFile, shouldRefuseAForeignFileOfItsName) {
  EXPECT_EQ(errorOfBytes(kBarText), "b.ovb: is no cache of market data");
  EXPECT_EQ(error(folder_.path("none.ovb")), "none.ovb: cannot be read: No such file or directory");
}

TEST_F(CacheFile, shouldRefuseAnotherVersionAndAnotherByteOrder) {
  std::string bytes = wholeFile(path_);
  setBytes(bytes, 12, std::uint32_t{2});
  EXPECT_EQ(errorOfBytes(bytes),
            "b.ovb: is a cache of version 2, and this program knows version 1; make it anew");
  setBytes(bytes, 8, std::uint32_t{0x04030201});
  EXPECT_EQ(errorOfBytes(bytes),
            "b.ovb: was made on a machine of another byte order; make it anew on this one");
}

TEST_F(CacheFile, shouldNameThePlaceThatIsDamaged) {
  std::string bytes = wholeFile(path_);
  bytes[200] ^= 1;
  EXPECT_THAT(errorOfBytes(bytes), StartsWith("b.ovb: damaged: its head (bytes 0 to "));
  bytes[200] ^= 1;
  bytes.back() ^= 1;
  EXPECT_THAT(errorOfBytes(bytes),
              AllOf(StartsWith("b.ovb: damaged: bytes 4096 to "), HasSubstr("make it anew")));
}

TEST_F(CacheFile, shouldRefuseOrReadTheSameWhenAnyByteIsChanged) {
  const std::string bytes = wholeFile(path_);
  for (std::size_t at = 0; at < bytes.size(); at += at < 1200 ? 1 : 31) {
    std::string changed = bytes;
    changed[at] = static_cast<char>(changed[at] ^ (1 << (at % 8)));
    const std::string path = folder_.write("b.ovb", changed);
    try {
      expectSameBars(loadBars(requestOf({path})).front(), bars_);
    } catch (const DataFileError& error) {
      ASSERT_THAT(error.what(), StartsWith(path + ": "));
    }
    if (HasFailure()) FAIL() << "byte " << at;
  }
}

TEST_F(CacheFile, shouldCompareAllBytesOnDemandWhenNothingTellsOfAChange) {
  const auto stamp = std::filesystem::last_write_time(path_);
  std::string bytes = wholeFile(path_);
  bytes.back() ^= 1;
  folder_.write("a.ovb", bytes);
  std::filesystem::last_write_time(path_, stamp);
  auto request = requestOf({path_});
  EXPECT_NO_THROW(loadBars(request));
  request.checksCaches = true;
  EXPECT_THAT(messageOf([&] { loadBars(request); }, folder_), StartsWith("a.ovb: damaged"));
}

TEST_F(CacheFile, shouldKeepTheOldOneAndNothingElseWhenItCannotBeWritten) {
  const std::string before = wholeFile(path_);
  DataCache cache;
  cache.bars = {bars_};
  EXPECT_THROW(writeDataCache(folder_.path("none/a.ovb"), cache), std::runtime_error);
  writeDataCache(path_, cache);
  std::size_t files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(folder_.path("")))
    files += entry.is_regular_file() ? 1 : 0;
  EXPECT_EQ(files, 2U) << "the CSV and the cache";
  EXPECT_NE(wholeFile(path_), before);
  expectSameBars(loadBars(requestOf({path_})).front(), bars_);
}

TEST_F(CacheFile, shouldCheckTheOrderOfRowsThatNobodyVouchesFor) {
  EXPECT_TRUE(openDataCache(path_).bars.front().series.isOrdered);
  const std::string copy = folder_.write("b.ovb", wholeFile(path_));
  EXPECT_FALSE(openDataCache(copy).bars.front().series.isOrdered);
}

/// Loading with a folder of caches.
class CacheFolder : public ::testing::Test {
 protected:
  CacheFolder() {
    writeSource(kBarText, 0);
    request_ = requestOf({source_}, R"({"timeZone": "Asia/Shanghai"})");
    request_.cacheFolder = folder_.path("caches");
  }

  /// The source with a text, and a time of modification that many hours after a long gone one.
  void writeSource(const std::string& text, int hours) {
    source_ = folder_.write("a_1min.csv", text);
    std::filesystem::last_write_time(source_, old_ + std::chrono::hours(hours));
  }
  /// The same text with another volume in the first bar.
  static std::string changed() {
    std::string text = kBarText;
    text.replace(text.find(",5\n"), 3, ",9\n");
    return text;
  }
  LoadedBars load() const { return std::move(loadBars(request_).front()); }
  double volume() const { return KLineView(load().series.bars.front()).volume(); }
  std::vector<std::string> caches() const {
    std::vector<std::string> paths;
    for (const auto& entry : std::filesystem::directory_iterator(request_.cacheFolder))
      paths.push_back(entry.path().string());
    return paths;
  }

  const DataFolder folder_;
  const std::filesystem::file_time_type old_ =
      std::filesystem::last_write_time(folder_.path("")) - std::chrono::hours(1000);
  std::string source_;
  DataFileRequest request_;
};

TEST_F(CacheFolder, shouldReadOnceAndMapFromThenOn) {
  const LoadedBars first = load();
  ASSERT_EQ(caches().size(), 1U);
  // Nothing tells that the file is another one: what comes is the cache.
  writeSource(changed(), 0);
  const LoadedBars second = load();
  expectSameBars(first, second);
  EXPECT_EQ(volume(), 5);
  request_.cacheFolder.clear();
  EXPECT_EQ(volume(), 9);
}

TEST_F(CacheFolder, shouldGiveWhatTheFilesGive) {
  load();
  auto plain = request_;
  plain.cacheFolder.clear();
  expectSameBars(load(), loadBars(plain).front());
}

TEST_F(CacheFolder, shouldMakeTheCacheAnewWhenTheFileHasAnotherSize) {
  load();
  writeSource(std::string(kBarText) + "2021-01-04 09:34,2,3,1,2,8\n", 0);
  EXPECT_EQ(load().series.bars.size(), 4U);
  EXPECT_EQ(caches().size(), 1U);
}

TEST_F(CacheFolder, shouldLookAtTheBytesWhenTheFileHasAnotherTime) {
  load();
  const std::string cache = caches().front();
  const auto made = std::filesystem::last_write_time(cache);
  writeSource(kBarText, 1);
  EXPECT_EQ(volume(), 5);
  EXPECT_EQ(std::filesystem::last_write_time(cache), made) << "the bytes are the same";
  writeSource(changed(), 2);
  EXPECT_EQ(volume(), 9);
}

TEST_F(CacheFolder, shouldLookAtTheBytesWhenTheFileWasWrittenJustBeforeItsCache) {
  // Far ahead, so that the cache is not made well after it, however slow the machine is.
  const auto stamp = std::filesystem::last_write_time(folder_.path("")) + std::chrono::hours(24);
  std::filesystem::last_write_time(source_, stamp);
  EXPECT_EQ(volume(), 5);
  folder_.write("a_1min.csv", changed());
  std::filesystem::last_write_time(source_, stamp);
  EXPECT_EQ(volume(), 9);
}

/// If this fails because files are read otherwise now, raise `kReadingVersion` and put down anew
/// what they read as.
TEST_F(CacheFolder, shouldHaveRaisedTheReadersVersionIfFilesReadOtherwise) {
  std::uint64_t hash = 14695981039346656037ULL;
  const auto fold = [&hash](int64 word) {
    hash = (hash ^ static_cast<std::uint64_t>(word)) * 1099511628211ULL;
  };
  for (const IKLine& bar : load().series.bars)
    for (const int64 word : bar.words) fold(word);
  folder_.write("t.csv",
                "datetime,last_price,volume,bid_price1,bid_volume1,ask_price1,ask_volume1\n"
                "2021-01-04 09:30:00.500,10.125,5,10.1,7,10.2,3\n"
                "2021-01-04 09:30:01,10.2,9,10.15,1,10.25,2\n");
  const auto ticks = loadTicks(requestOf({folder_.path("t.csv")}, R"({"timeZone": "UTC"})"));
  for (std::size_t row = 0; row < ticks.front().series.rows(); ++row) {
    IDepthMarketData quote;
    ticks.front().series.fill(row, quote);
    for (const int64 word : quote.block1) fold(word);
    for (const int64 word : quote.block2) fold(word);
  }
  EXPECT_EQ(hash, 15584278482916502733U);
}

/// Whoever keeps a folder of caches would otherwise go on with what an earlier build read.
TEST_F(CacheFolder, shouldNotUseACacheOfOtherReadersOrOtherZoneRules) {
  load();
  const std::string reading = openDataCache(caches().front()).reading;
  const auto holds = [&](const std::string& text) {
    return reading.find(text) != std::string::npos;
  };
  EXPECT_TRUE(holds("\"readers\":" + std::to_string(detail::kReadingVersion))) << reading;
  EXPECT_TRUE(holds("\"zones\":\"" + detail::zoneDatabaseVersion() + "\"")) << reading;
}

TEST_F(CacheFolder, shouldMakeACacheBesideWhatAKilledProcessLeft) {
  const auto notes = load().notes;
  const std::string cache = caches().front();
  std::filesystem::remove(cache);
  for (int i = 1; i < 500; ++i)
    std::ofstream(cache + ".new-" + std::to_string(getpid()) + "-" + std::to_string(i)) << "half";
  EXPECT_EQ(load().notes, notes);
  EXPECT_TRUE(std::filesystem::exists(cache));
}

TEST_F(CacheFolder, shouldKeepACacheForEachWayOfReading) {
  load();
  request_.description["stamp"] = "end";
  const LoadedBars ended = load();
  EXPECT_EQ(caches().size(), 2U);
  EXPECT_EQ(KLineView(ended.series.bars.front()).endTime(), 1609723800000);
  request_.code = "B";
  EXPECT_EQ(load().code, "B");
  EXPECT_EQ(caches().size(), 3U);
}

TEST_F(CacheFolder, shouldReadTheFilesAndSaySoWhenACacheIsDamaged) {
  const LoadedBars good = load();
  const std::string cache = caches().front();
  for (const std::string& bytes : {std::string("what is this"), wholeFile(cache).substr(0, 4200)}) {
    std::ofstream(cache, std::ios::binary) << bytes;
    const LoadedBars again = load();
    EXPECT_EQ(again.series.bars, good.series.bars);
    EXPECT_TRUE(hasNote(again.notes, "; the files were read instead"));
    EXPECT_TRUE(hasNote(again.notes, cache));
    EXPECT_EQ(load().notes, good.notes) << "it was made anew";
  }
}

TEST_F(CacheFolder, shouldReadTheFilesAndSaySoWhenNoCacheCanBeMade) {
  request_.cacheFolder = folder_.write("file", "");
  const LoadedBars loaded = load();
  EXPECT_EQ(loaded.series.bars.size(), 3U);
  EXPECT_TRUE(hasNote(loaded.notes,
                      "no cache was made in \"" + request_.cacheFolder + "\": Not a directory"));
}

TEST_F(CacheFolder, shouldTellWhatIsWrongWithTheFilesAsWithoutACache) {
  writeSource("datetime,open,high,low,close\n2021-01-04 09:30,1,2,1,x\n", 0);
  EXPECT_EQ(messageOf([&] { load(); }, folder_),
            "a_1min.csv:2: column \"close\": \"x\" is not a number");
  request_.paths = {folder_.path("none.csv")};
  EXPECT_EQ(messageOf([&] { load(); }, folder_),
            "none.csv: cannot be read: No such file or directory");
}

}  // namespace
}  // namespace orvane
