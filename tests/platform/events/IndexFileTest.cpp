#include "platform/events/IndexFile.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>

#include "platform/market/files/DataFiles.h"

namespace orvane {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

constexpr int64 kMonday = 1'609'718'400'000;  // 2021-01-04 00:00 UTC.
constexpr int64 kOneHour = 3'600'000;

/// A file that goes with the test.
class TextFile {
 public:
  explicit TextFile(const std::string& text)
      : path_((std::filesystem::temp_directory_path() /
               ("orvane_index_" + std::to_string(reinterpret_cast<std::uintptr_t>(this)) + ".txt"))
                  .string()) {
    std::ofstream(path_, std::ios::binary) << text;
  }
  ~TextFile() { std::filesystem::remove(path_); }
  TextFile(const TextFile&) = delete;
  TextFile& operator=(const TextFile&) = delete;
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

std::string textOf(const std::vector<IndexComposition>& all) {
  std::string text;
  for (const IndexComposition& each : all) {
    text += each.index + "@" +
            (each.time == IndexComposition::kFromTheStart
                 ? "start"
                 : std::to_string((each.time - kMonday) / kOneHour)) +
            ":";
    for (const IndexElementSpec& element : each.elements)
      text += " " + element.code + "*" + std::to_string(static_cast<int>(element.weight * 100));
    text += "\n";
  }
  return text;
}

/// What reading the text is refused with, without the file's name.
std::string refusalOf(const std::string& text) {
  const TextFile file(text);
  try {
    loadIndexes(file.path());
  } catch (const DataFileError& error) {
    const std::string what = error.what();
    EXPECT_EQ(what.substr(0, file.path().size()), file.path());
    return what.substr(file.path().size());
  }
  return "not refused";
}

TEST(IndexFile, shouldReadCompositionsFromCsvByIndexAndTime) {
  const TextFile file(
      "index,date,element,weight\n"
      "I.X,,A.X,0.25\n"
      "I.X,,B.X,0.75\n"
      "# a remark\n"
      "J.X,2021-01-04,A.X,\n"
      "I.X,2021-01-04 09:00:00,C.X,1\n"
      "I.X,2021-01-05T00:00:00+08:00,,\n");
  EXPECT_EQ(textOf(loadIndexes(file.path())),
            "I.X@start: A.X*25 B.X*75\nJ.X@0: A.X*0\nI.X@9: C.X*100\nI.X@16:\n");
  EXPECT_EQ(loadIndexes(file.path())[1].origin, file.path() + ":5");
}

TEST(IndexFile, shouldReadCompositionsFromJson) {
  const TextFile file(R"({"indexes": [
    {"index": "I.X", "elements": [{"code": "A.X", "weight": 0.5}, "B.X"],
     "changes": [{"time": "2021-01-04 09:00", "elements": []}]},
    {"index": "J.X", "changes": [{"time": "2021-01-04", "elements": ["I.X"]}]}]})");
  EXPECT_EQ(textOf(loadIndexes(file.path())), "I.X@start: A.X*50 B.X*0\nI.X@9:\nJ.X@0: I.X*0\n");
  EXPECT_EQ(loadIndexes(file.path())[1].origin, file.path() + ": indexes[0].changes[0]");
}

TEST(IndexFile, shouldReadTimesInTheZoneThatIsGivenUnlessTheFileNamesOne) {
  const TextFile csv("index;time;element\nI;2021-01-04 09:00;A\n");
  EXPECT_EQ(textOf(loadIndexes(csv.path(), "Asia/Shanghai")), "I@1: A*0\n");
  const TextFile json(R"({"timeZone": "Asia/Shanghai",
    "indexes": [{"index": "I", "changes": [{"time": "2021-01-04 09:00", "elements": ["A"]}]}]})");
  EXPECT_EQ(textOf(loadIndexes(json.path())), "I@1: A*0\n");
}

TEST(IndexFile, shouldNameFileLineColumnAndValueOfWhatIsWrongInCsv) {
  EXPECT_EQ(refusalOf("index,time,element,weight\nI,2021-01-04,A,1\nI,2021-01-04,B,abc\n"),
            ":3: column \"weight\": \"abc\" is not a number from 0 up");
  for (const char* weight : {"-1", "nan", "inf", "1e999", "0x10"})
    EXPECT_THAT(refusalOf(std::string("index,element,weight\nI,A,") + weight + "\n"),
                HasSubstr("\"" + std::string(weight) + "\" is not a number from 0 up"));
  EXPECT_EQ(refusalOf("index,time,element\nI,2021-13-04,A\n"),
            ":2: column \"time\": \"2021-13-04\" is not a date or a date and time");
  EXPECT_EQ(refusalOf("index,time,element\nI,09:30,A\n"),
            ":2: column \"time\": \"09:30\" is not a date or a date and time");
  EXPECT_EQ(refusalOf("index,element\n,A\n"), ":2: column \"index\": \"\" is empty");
  EXPECT_EQ(refusalOf("index,element\nI,A\nI,A\n"),
            ":3: column \"element\": \"A\" is an element twice");
  EXPECT_EQ(refusalOf("index,element\nI,I\n"), ":2: column \"element\": \"I\" is the index itself");
  EXPECT_EQ(refusalOf("index,element\nI,A\nI,\n"),
            ":3: column \"element\": \"\" is empty beside other elements");
  EXPECT_EQ(refusalOf("index,element\nI,\nI,A\n"),
            ":3: column \"element\": \"A\" stands beside a row that says none");
  EXPECT_EQ(refusalOf("index,element\nI,A,1\n"), ":2: the header has 2 columns, the row 3");
}

TEST(IndexFile, shouldNameWhatIsWrongInTheHeaderOfCsv) {
  EXPECT_EQ(refusalOf("index,elemnt\nI,A\n"),
            ":1: header: \"elemnt\" is not one of index, time, element and weight");
  EXPECT_EQ(refusalOf("index,weight\nI,1\n"), ":1: header: there is no column \"element\"");
  EXPECT_EQ(refusalOf("code,weight\nI,1\n"), ":1: header: there is no column \"index\"");
  EXPECT_EQ(refusalOf("index,element,code\nI,A,B\n"),
            ":1: header: \"code\" tells a column that is there");
  EXPECT_EQ(refusalOf(""), ": is empty");
  EXPECT_EQ(refusalOf("# a remark alone\n"), ": there is no header");
}

TEST(IndexFile, shouldNamePlaceKeyAndValueOfWhatIsWrongInJson) {
  const auto within = [](const std::string& index) {
    return refusalOf("{\"indexes\": [" + index + "]}");
  };
  EXPECT_THAT(refusalOf("{\n\"indexes\": [}\n"), HasSubstr(":2: "));
  EXPECT_EQ(refusalOf("{\"indices\": []}"), ": key \"indices\" is not known");
  EXPECT_EQ(refusalOf("{}"), ": key \"indexes\": is missing");
  EXPECT_EQ(refusalOf(R"({"timeZone": "Mars", "indexes": []})"),
            ": time zone: \"Mars\" is not a time zone");
  EXPECT_EQ(within("1"), ": indexes[0]: 1 is not an object");
  EXPECT_EQ(within(R"({"elements": []})"), ": indexes[0]: key \"index\": nothing is not a code");
  EXPECT_EQ(within(R"({"index": "I"})"), ": indexes[0]: key \"elements\": is missing");
  EXPECT_EQ(within(R"({"index": "I", "elements": [3]})"),
            ": indexes[0].elements[0]: 3 is not an object");
  EXPECT_EQ(within(R"({"index": "I", "elements": ["A", {"code": "B", "weight": "x"}]})"),
            ": indexes[0].elements[1]: key \"weight\": \"x\" is not a number from 0 up");
  EXPECT_EQ(within(R"({"index": "I", "elements": [{"code": "B", "weight": -1}]})"),
            ": indexes[0].elements[0]: key \"weight\": -1 is not a number from 0 up");
  EXPECT_EQ(within(R"({"index": "I", "elements": ["I"]})"),
            ": indexes[0].elements[0]: code: \"I\" is the index itself");
  EXPECT_EQ(within(R"({"index": "I", "changes": [{"time": "soon", "elements": []}]})"),
            ": indexes[0].changes[0]: key \"time\": \"soon\" is not a date or a date and time");
  EXPECT_EQ(within(R"({"index": "I", "elements": [], "elements2": []})"),
            ": indexes[0]: key \"elements2\" is not known");
  EXPECT_EQ(within(R"({"index": "I", "elements": []}, {"index": "I", "elements": []})"),
            ": indexes[1]: \"I\" has a composition of that time already");
}

TEST(IndexFile, shouldNameAFileThatIsNotThere) {
  try {
    loadIndexes("/nowhere/index.csv");
    FAIL();
  } catch (const DataFileError& error) {
    EXPECT_THAT(error.what(), HasSubstr("/nowhere/index.csv"));
  }
}

}  // namespace
}  // namespace orvane
