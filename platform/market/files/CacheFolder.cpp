#include "platform/market/files/CacheFolder.h"

#include <sys/stat.h>

#define XXH_INLINE_ALL
#include <xxhash.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <stdexcept>

#include "platform/core/ZoneRules.h"

namespace orvane::detail {
namespace {

namespace fs = std::filesystem;

/// A file may change twice within one step of the clock that files are stamped with. What was
/// changed that shortly before its cache was made is known by its bytes alone.
constexpr std::int64_t kStampDoubtNs = 2'000'000'000;

/// Everything that the result depends on but for the files' bytes.
std::string readingOf(const DataFileRequest& request) {
  QJsonArray paths;
  for (const std::string& path : request.paths) {
    paths.append(QString::fromStdString(path));
    paths.append(QString::fromStdString(fs::absolute(path).string()));
  }
  const QJsonObject reading{
      {"readers", kReadingVersion},
      {"zones", QString::fromStdString(zoneDatabaseVersion())},
      {"kind", request.kind == DataFileRequest::Kind::Bars ? "bars" : "ticks"},
      {"paths", paths},
      {"code", QString::fromStdString(request.code)},
      {"priceTick", QString::fromStdString(request.priceTick)},
      {"description", request.description}};
  return QJsonDocument(reading).toJson(QJsonDocument::Compact).toStdString();
}

std::string nameOf(const std::string& reading) {
  const XXH128_hash_t hash = XXH3_128bits(reading.data(), reading.size());
  char name[40];
  std::snprintf(name, sizeof(name), "%016llx%016llx.ovb",
                static_cast<unsigned long long>(hash.high64),
                static_cast<unsigned long long>(hash.low64));
  return name;
}

/// Size and time of modification, without a look at the bytes.
bool hasStampOf(const DataSource& source, bool& hasSize) {
  struct stat info {};
  if (stat(source.path.c_str(), &info) != 0) return false;
  hasSize = static_cast<std::uint64_t>(info.st_size) == source.bytes;
  const std::int64_t modified =
      std::int64_t{info.st_mtim.tv_sec} * 1'000'000'000 + info.st_mtim.tv_nsec;
  return hasSize && modified == source.modifiedNs;
}

bool isAsItWas(const DataSource& source, std::int64_t madeNs) {
  bool hasSize = false;
  const bool hasStamp = hasStampOf(source, hasSize);
  if (hasStamp && source.modifiedNs < madeNs - kStampDoubtNs) return true;
  return hasSize && dataSourceOf(source.path).hash == source.hash;
}

bool isCurrent(const DataCache& cache, const std::string& reading) {
  return cache.reading == reading &&
         std::all_of(cache.sources.begin(), cache.sources.end(),
                     [&](const DataSource& source) { return isAsItWas(source, cache.madeNs); });
}

std::vector<DataSource> sourcesOf(const std::vector<std::string>& paths) {
  std::vector<DataSource> sources;
  sources.reserve(paths.size());
  for (const std::string& path : paths) sources.push_back(dataSourceOf(path));
  return sources;
}

bool areSame(const std::vector<DataSource>& a, const std::vector<DataSource>& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](const DataSource& one, const DataSource& other) {
                      return one.bytes == other.bytes && one.modifiedNs == other.modifiedNs &&
                             one.hash == other.hash;
                    });
}

void note(DataCache& cache, const std::string& text) {
  for (LoadedBars& loaded : cache.bars) loaded.notes.push_back(text);
  for (LoadedTicks& loaded : cache.ticks) loaded.notes.push_back(text);
}

}  // namespace

bool wantsCache(const DataFileRequest& request) {
  return !request.cacheFolder.empty() &&
         std::all_of(request.paths.begin(), request.paths.end(), [](const std::string& path) {
           std::error_code error;
           return fs::is_regular_file(path, error) && !isDataCache(path);
         });
}

DataCache loadThroughCache(const DataFileRequest& request,
                           const std::function<void(DataCache&)>& read) {
  const std::string reading = readingOf(request);
  const std::string path = (fs::path(request.cacheFolder) / nameOf(reading)).string();
  std::string unfit;
  std::string outdated;
  std::error_code error;
  if (fs::exists(path, error)) {
    try {
      DataCache cache = openDataCache(path);
      if (isCurrent(cache, reading)) return cache;
      for (const DataSource& source : cache.sources)
        if (outdated.empty() && cache.reading == reading && !isAsItWas(source, cache.madeNs))
          outdated =
              "the cache " + path + " was made of an older " + source.path + ", and made anew";
    } catch (const DataFileError& fault) {
      unfit = std::string(fault.what()) + "; the files were read instead";
    }
  }
  DataCache fresh;
  std::string lost;
  try {
    fresh.sources = sourcesOf(request.paths);
  } catch (const DataFileError&) {
    // Reading tells what is wrong with the file.
  }
  read(fresh);
  fresh.reading = reading;
  try {
    // A file that was written to meanwhile may have been read half old, half new.
    if (areSame(fresh.sources, sourcesOf(request.paths))) {
      fs::create_directories(request.cacheFolder);
      writeDataCache(path, fresh);
    }
  } catch (const fs::filesystem_error& fault) {
    lost = "no cache was made in \"" + request.cacheFolder + "\": " + fault.code().message();
  } catch (const std::runtime_error& fault) {
    lost = std::string("no cache was made: ") + fault.what();
  }
  if (!unfit.empty()) note(fresh, unfit);
  if (!outdated.empty() && lost.empty()) note(fresh, outdated);
  if (!lost.empty()) note(fresh, lost);
  return fresh;
}

}  // namespace orvane::detail

namespace orvane {

std::string cacheStateOf(const std::string& path) {
  try {
    const DataCache cache = openDataCache(path);
    for (const DataSource& source : cache.sources) {
      std::error_code error;
      if (!std::filesystem::exists(source.path, error))
        return "its source " + source.path + " is gone";
      if (!detail::isAsItWas(source, cache.madeNs))
        return "its source " + source.path + " has changed";
    }
    return "fresh";
  } catch (const DataFileError& fault) {
    return std::string("cannot be used: ") + fault.what();
  }
}

std::string cachePathOf(const DataFileRequest& request) {
  if (!detail::wantsCache(request)) return {};
  const std::string name = detail::nameOf(detail::readingOf(request));
  return (std::filesystem::path(request.cacheFolder) / name).string();
}

}  // namespace orvane
