#include <iterator>

#include <QJsonDocument>

#include "platform/fields/KLineView.h"
#include "platform/market/files/DataFiles.h"
#include "tests/fuzz/InputFile.h"

namespace orvane {
namespace {

/// Ways to read a file; the first byte of the input chooses one.
const char* const kDescriptions[] = {
    "{}",
    R"({"tolerant": true, "skipEmpty": true, "period": "1min", "timeZone": "America/New_York"})",
    R"({"header": false, "columns": ["date", "time", "open", "high", "low", "close", "volume"]})",
    R"({"encoding": "gbk", "dateOrder": "dayFirst", "priceTick": "0.2"})",
    R"({"encoding": "utf-16", "decimalPoint": ",", "delimiter": ";"})",
};

DataFileRequest requestOf(const InputFile& file, std::uint8_t choice) {
  DataFileRequest request;
  request.paths = {file.path()};
  request.code = "X";
  request.description =
      QJsonDocument::fromJson(kDescriptions[choice % std::size(kDescriptions)]).object();
  return request;
}

void readBars(const DataFileRequest& request) {
  try {
    for (const LoadedBars& one : loadBars(request))
      for (std::size_t i = 1; i < one.series.bars.size(); ++i)
        require(KLineView(one.series.bars[i - 1]).endTime() <
                KLineView(one.series.bars[i]).endTime());
  } catch (const DataFileError& error) {
    require(*error.what() != '\0');
  }
}

void readTicks(const DataFileRequest& request) {
  try {
    for (const LoadedTicks& one : loadTicks(request))
      require(one.series.cells.size() == one.series.rows() * one.series.columns.size());
  } catch (const DataFileError& error) {
    require(*error.what() != '\0');
  }
}

}  // namespace
}  // namespace orvane

/// Whatever bytes a data file holds: a series in order of time, or an error that says something.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const orvane::InputFile file(data + 1, size - 1);
  const auto request = orvane::requestOf(file, data[0]);
  orvane::readBars(request);
  orvane::readTicks(request);
  return 0;
}
