#pragma once

#include <gtest/gtest.h>
#include <unistd.h>
#include <zlib.h>

#include <QJsonDocument>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "platform/market/files/DataFiles.h"

namespace orvane {

/// A folder of its own for the data files of one test, gone with it.
class DataFolder {
 public:
  DataFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "orvane-files-XXXXXX").string();
    path_ = mkdtemp(name.data());
  }
  ~DataFolder() { std::filesystem::remove_all(path_); }
  DataFolder(const DataFolder&) = delete;
  DataFolder& operator=(const DataFolder&) = delete;

  std::string write(const std::string& name, const std::string& bytes) const {
    std::filesystem::create_directories(std::filesystem::path(path(name)).parent_path());
    std::ofstream(path(name), std::ios::binary) << bytes;
    return path(name);
  }
  std::string writeGzip(const std::string& name, const std::string& bytes) const {
    const gzFile file = gzopen(path(name).c_str(), "wb");
    gzwrite(file, bytes.data(), static_cast<unsigned>(bytes.size()));
    gzclose(file);
    return path(name);
  }
  std::string path(const std::string& name) const { return (path_ / name).string(); }

 private:
  std::filesystem::path path_;
};

inline DataFileRequest requestOf(std::vector<std::string> paths, const char* description = "{}") {
  DataFileRequest request;
  request.paths = std::move(paths);
  request.description = QJsonDocument::fromJson(description).object();
  return request;
}

/// Loads a text as a file of bars that holds one code.
inline LoadedBars barsOf(const std::string& text, const char* description = "{}",
                         const std::string& name = "x.csv") {
  const DataFolder folder;
  auto loaded = loadBars(requestOf({folder.write(name, text)}, description));
  EXPECT_EQ(loaded.size(), 1U);
  return std::move(loaded.front());
}

inline LoadedTicks ticksOf(const std::string& text, const char* description = "{}",
                           const std::string& name = "x.csv") {
  const DataFolder folder;
  auto loaded = loadTicks(requestOf({folder.write(name, text)}, description));
  EXPECT_EQ(loaded.size(), 1U);
  return std::move(loaded.front());
}

/// The message that loading gives, with the folder's name cut off; empty if it goes well.
template <typename Load>
std::string messageOf(const Load& load, const DataFolder& folder) {
  try {
    load();
  } catch (const DataFileError& error) {
    std::string text = error.what();
    const std::string prefix = folder.path("");
    for (std::size_t at; (at = text.find(prefix)) != std::string::npos;)
      text.erase(at, prefix.size());
    return text;
  }
  return {};
}

inline std::string barError(const std::string& text, const char* description = "{}",
                            const std::string& name = "x.csv") {
  const DataFolder folder;
  const auto request = requestOf({folder.write(name, text)}, description);
  return messageOf([&] { loadBars(request); }, folder);
}

inline std::string tickError(const std::string& text, const char* description = "{}",
                             const std::string& name = "x.csv") {
  const DataFolder folder;
  const auto request = requestOf({folder.write(name, text)}, description);
  return messageOf([&] { loadTicks(request); }, folder);
}

/// A bar by name, for comparing.
struct PlainBar {
  double open, high, low, close, volume, turnover, openInterest;
  friend bool operator==(const PlainBar&, const PlainBar&) = default;
};

inline PlainBar plain(const IKLine& bar) {
  const KLineView view(bar);
  return {view.open(),   view.high(),     view.low(),         view.close(),
          view.volume(), view.turnover(), view.openInterest()};
}

/// The cell of a column, or a failure if the series has none such.
inline double cellOf(const TickSeries& series, std::size_t row, TickColumn column,
                     std::uint8_t level = 0) {
  for (std::size_t i = 0; i < series.columns.size(); ++i)
    if (series.columns[i] == TickColumnId{column, level})
      return series.cells[row * series.columns.size() + i];
  ADD_FAILURE() << "no such column";
  return 0;
}

inline bool hasNote(const std::vector<std::string>& notes, const std::string& part) {
  for (const std::string& note : notes)
    if (note.find(part) != std::string::npos) return true;
  return false;
}

// Times in UTC milliseconds.
inline constexpr int64 kNine = 1'386'320'400'000;  ///< 2013-12-06 09:00:00 UTC.
inline constexpr int64 kMinute = 60'000;
inline constexpr int64 kHour = 60 * kMinute;
inline constexpr int64 kDay = 24 * kHour;

}  // namespace orvane
