// Records files: what is read, and what is said about a fault.

#include "platform/dictionary/RecordFile.h"

#include <gtest/gtest.h>

#include "platform/fields/DictionaryFlags.h"
#include "shared/TextCodec.h"
#include "tests/platform/files/DataFileSupport.h"

namespace orvane {
namespace {

std::vector<RecordPublication> recordsOf(const std::string& text,
                                         const std::string& name = "records.csv") {
  const DataFolder folder;
  return loadRecords(folder.write(name, text));
}

/// The error without the folder.
std::string errorOf(const std::string& text, const std::string& name = "r.json") {
  const DataFolder folder;
  try {
    loadRecords(folder.write(name, text));
    return "none";
  } catch (const DataFileError& error) {
    const std::string what = error.what();
    const std::string prefix = folder.path("");
    return what.starts_with(prefix) ? what.substr(prefix.size()) : what;
  }
}

std::string jsonError(const std::string& fields) {
  return errorOf("{\"records\": [\n  {\"name\": \"N\", \"target\": \"a\",\n   " + fields + "}]}");
}

TEST(RecordFile, shouldReadCsvWithQuotedTextsAndTimes) {
  const auto all = recordsOf(
      "name,target,key,text,value2,valueType\n"
      "N,a,1000,\"x, \"\"y\"\"\",7,2\n"
      "N,a,2021-01-04 00:00:01,z,,2\n"
      "N,b,2021-01-04T08:00:00+08:00,中文,-1,0\n");
  ASSERT_EQ(all.size(), 2U);
  EXPECT_EQ(all[0].name + all[0].target, "Na");
  EXPECT_EQ(all[0].valueType, 2);
  EXPECT_EQ(all[0].time, kUnsetTime);
  EXPECT_EQ(all[0].records, (std::list<Record>{{1000, 7, "x, \"y\""}, {1609718401000, 0, "z"}}));
  EXPECT_EQ(all[1].records, (std::list<Record>{{1609718400000, -1, utf8ToGbk("中文")}}));
}

TEST(RecordFile, shouldReadJsonWithLargeNumbersAndNestedTexts) {
  const auto all = recordsOf(
      "{\"timeZone\": \"Asia/Shanghai\", \"records\": ["
      "{\"name\": \"N\", \"target\": \"a\", \"key\": 9007199254740993, \"text\": {\"b\": [1, "
      "null]}},"
      "{\"name\": \"N\", \"target\": \"a\", \"key\": \"2021-01-04 08:00\", \"text\": \"\","
      " \"time\": 5, \"tag\": -3},"
      "{\"name\": \"N\", \"target\": \"a\", \"key\": 1, \"flags\": [\"delete\"], \"time\": 6}]}",
      "r.json");
  ASSERT_EQ(all.size(), 3U);
  EXPECT_EQ(all[0].records, (std::list<Record>{{9007199254740993, 0, "{\"b\":[1,null]}"}}));
  EXPECT_EQ(all[1].records, (std::list<Record>{{1609718400000, 0, ""}}));
  EXPECT_EQ(all[1].time, 5);
  EXPECT_EQ(all[1].tag, -3);
  EXPECT_EQ(all[2].flags, dictionary::kDeletes);
}

TEST(RecordFile, shouldSortTheRecordsOfAPublicationAndKeepTheOrderOfOneKey) {
  const auto all = recordsOf("name,target,key,text\nN,a,2,b\nN,a,1,first\nN,a,1,second\n");
  ASSERT_EQ(all.size(), 1U);
  EXPECT_EQ(all[0].records, (std::list<Record>{{1, 0, "first"}, {1, 0, "second"}, {2, 0, "b"}}));
}

TEST(RecordFile, shouldNameFileLineFieldAndValueOfAFaultInCsv) {
  const std::string head = "name,target,key,text,flags\n";
  EXPECT_EQ(
      errorOf(head + "N,a,1,x,\nN,a,soon,x,\n", "r.csv"),
      "r.csv:3: field \"key\": \"soon\" is neither a number of milliseconds nor a date and time");
  EXPECT_EQ(errorOf(head + "N,,1,x,\n", "r.csv"), "r.csv:2: field \"target\": \"\" is empty");
  EXPECT_EQ(errorOf(head + "N,a,,x,\n", "r.csv"),
            "r.csv:2: field \"key\": \"\" is neither a number of milliseconds nor a date and time");
  EXPECT_EQ(errorOf(head + "N,a,99999999999999999999,x,\n", "r.csv"),
            "r.csv:2: field \"key\": \"99999999999999999999\" is too large a number");
  EXPECT_EQ(errorOf(head + "N,a,1,x,realtime\n", "r.csv"),
            "r.csv:2: field \"flags\": \"realtime\" is not a flag; \"delete\" is");
  EXPECT_EQ(errorOf(head + "N,a,1,,delete\n", "r.csv"),
            "r.csv:2: field \"flags\": \"delete\" needs a time");
  EXPECT_EQ(errorOf(head + "N,a,1,x,delete\n", "r.csv"),
            "r.csv:2: field \"text\": \"x\" stands in a deletion, which has none");
  EXPECT_EQ(errorOf(head + "N,a,1\n", "r.csv"), "r.csv:2: has 3 fields instead of 5");
  EXPECT_EQ(errorOf("name,target,key\n", "r.csv"), "r.csv:1: field \"text\" is missing");
  EXPECT_EQ(errorOf("name,target,key,text,when\n", "r.csv"),
            "r.csv:1: field \"when\" is not known");
  EXPECT_EQ(errorOf("name,name\n", "r.csv"), "r.csv:1: field \"name\" comes twice");
  EXPECT_EQ(errorOf("", "r.csv"), "r.csv: is empty");
  EXPECT_EQ(errorOf("# nothing\n", "r.csv"), "r.csv: there is no header");
}

TEST(RecordFile, shouldNameFileLineFieldAndValueOfAFaultInJson) {
  EXPECT_EQ(jsonError("\"key\": 1,\n\"text\": null"),
            "r.json:4: field \"text\": \"null\" is no value");
  EXPECT_EQ(jsonError("\"key\": 1.5, \"text\": \"\""),
            "r.json:3: field \"key\": \"1.5\" is not a whole number");
  EXPECT_EQ(jsonError("\"key\": true, \"text\": \"\""),
            "r.json:3: field \"key\": \"true\" is not a text");
  EXPECT_EQ(jsonError("\"key\": 1, \"text\": 5"), "r.json:3: field \"text\": \"5\" is not a text");
  EXPECT_EQ(jsonError("\"key\": 1, \"text\": \"\",\n\"flags\": [\"delete\", \"x\"]"),
            "r.json:4: field \"flags\": \"[\"delete\",\"x\"]\" is not a text");
  EXPECT_EQ(jsonError("\"key\": 1, \"text\": \"\",\n\n\"flags\": \"x\""),
            "r.json:5: field \"flags\": \"x\" is not a flag; \"delete\" is");
  EXPECT_EQ(jsonError("\"key\": 1, \"text\": \"\", \"valueType\": 3000000000"),
            "r.json:3: field \"valueType\": \"3000000000\" is too large a number");
  EXPECT_EQ(jsonError("\"key\": 1"), "r.json:2: field \"text\" is missing");
  EXPECT_EQ(jsonError("\"key\": 1, \"what\": 1"), "r.json:3: field \"what\" is not known");
  EXPECT_EQ(jsonError("\"key\": 1, \"key\": 2, \"text\": \"\""),
            "r.json:3: field \"key\" comes twice");
  EXPECT_EQ(jsonError("\"key\": 1, \"text\": \"😀\"").find("r.json:3: field \"text\": "), 0U);
  EXPECT_EQ(errorOf("[1,\n x]"), "r.json:2: illegal number");
  EXPECT_EQ(errorOf("[\n1]"), "r.json:2: 1 is not an object");
  EXPECT_EQ(errorOf("{}"), "r.json: field \"records\" is missing");
  EXPECT_EQ(errorOf("{\"records\": null}"), "r.json: field \"records\" is not a list");
  EXPECT_EQ(errorOf("{\"timeZone\": \"Mars\", \"records\": []}"),
            "r.json: field \"timeZone\": \"Mars\" is not a time zone");
  EXPECT_EQ(errorOf("{\"timeZone\": null, \"records\": []}"),
            "r.json: field \"timeZone\": null is not a time zone");
}

TEST(RecordFile, shouldFindTheLineAmongNestedTextsThatLookLikeKeys) {
  EXPECT_EQ(
      errorOf("[{\"name\":\"N\",\"target\":\"}]\\\"\\\\\",\"text\":{\"key\":\n[\"{\"]},\n\"key\":\n"
              "null}]"),
      "r.json:3: field \"key\": \"null\" is no value");
}

TEST(RecordFile, shouldReadAnEmptyListAndAFileThatIsPacked) {
  EXPECT_TRUE(recordsOf("[]", "r.json").empty());
  EXPECT_TRUE(recordsOf("name,target,key,text\n").empty());
  const DataFolder folder;
  EXPECT_EQ(loadRecords(folder.writeGzip("r.csv.gz", "name,target,key,text\nN,a,1,x\n")).size(),
            1U);
}

}  // namespace
}  // namespace orvane
