// What the dictionary source reads, asks for and publishes.

#include <functional>

#include "tests/EventStrategy/DataSrcFixture.h"

namespace orvane::support {
namespace {

using ::testing::Pair;

bool never() { return false; }
bool always() { return true; }

std::vector<std::string> textsOf(const std::list<Record>& records) {
  std::vector<std::string> texts;
  for (const Record& record : records) texts.push_back(record.text);
  return texts;
}

class DataSrcQueriesTest : public DataSrcTest {
 protected:
  DataSrcQueriesTest() : notThere{22, gbkFromUtf8("不存在")} {}

  /// What stands in `answer` at three levels: names, targets, records.
  static std::list<LatestOfName> nested(std::list<Record> records) {
    return {{"other", {{"t", {{9, 9, "wrong name"}}}}},
            {"dic", {{"u", {{8, 8, "wrong target"}}}, {"key", std::move(records)}}}};
  }

  std::vector<std::string> publisherCalls() const { return platform.calls.entries("publisher."); }

  ResultStatus notThere;
  ResultStatus refused{52, "slow down"};
};

// Publishing.

TEST_F(DataSrcQueriesTest, shouldForwardTwelveOperationsToThePublishersOfTheSamePosition) {
  using Operation = ResultStatus (IDataSrc::*)(ORVANE_PUBLISHER_OP_ARGS);
  const Operation operations[] = {
      &IDataSrc::publisherOp1,  &IDataSrc::publisherOp2,  &IDataSrc::publisherOp3,
      &IDataSrc::publisherOp4,  &IDataSrc::publisherOp5,  &IDataSrc::publisherOp6,
      &IDataSrc::publisherOp7,  &IDataSrc::publisherOp8,  &IDataSrc::publisherOp9,
      &IDataSrc::publisherOp10, &IDataSrc::publisherOp11, &IDataSrc::publisherOp12};
  IDataSrc& data = *src;
  for (int i = 0; i < 12; ++i) {
    const std::string name = "publisher.publisherOp" + std::to_string(i + 1);
    platform.calls.clear();
    platform.calls.answer(name, {i, "m" + std::to_string(i)});
    EXPECT_EQ((data.*operations[i])("a", "b", 3, 4, "c", 6, 7),
              (ResultStatus{i, "m" + std::to_string(i)}));
    EXPECT_THAT(publisherCalls(), ElementsAre(name + " a b 3 4 c 6 7"));
  }
}

TEST_F(DataSrcQueriesTest, shouldPublishACopySortedByKeyAndLeaveTheCallersListAsItWas) {
  const std::list<Record> records = {{3, 0, "c"}, {-1, 0, "a"}, {2, 0, "b"}};
  const std::list<Record> before = records;
  EXPECT_EQ(src->publishRecords("dic", "key", 4, records, 5, 6), ResultStatus());
  EXPECT_EQ(records, before);
  EXPECT_THAT(publisherCalls(), ElementsAre("publisher.publishRecords dic key 4 3 5 6"));
  EXPECT_THAT(textsOf(platform.published.lastRecords()), ElementsAre("a", "b", "c"));
}

TEST_F(DataSrcQueriesTest, shouldKeepTheOrderOfRecordsWithOneKey) {
  src->publishRecords("dic", "key", 0,
                      {{2, 1, "first 2"}, {1, 0, "1"}, {2, 0, "second 2"}, {2, 2, "third 2"}}, 0,
                      0);
  EXPECT_THAT(textsOf(platform.published.lastRecords()),
              ElementsAre("1", "first 2", "second 2", "third 2"));
}

TEST_F(DataSrcQueriesTest, shouldPassThePublishersAnswerOn) {
  platform.calls.answer("publisher.publishRecords", refused);
  EXPECT_EQ(src->publishRecords("dic", "key", 0, {}, 0, 0), refused);
  EXPECT_TRUE(platform.published.lastRecords().empty());
}

// Blocking reads.

TEST_F(DataSrcQueriesTest, shouldReadRecordsOfATargetWithAllArgumentsAndTheStatus) {
  platform.calls.answer("data.readRecords", refused);
  std::list<Record> records;
  EXPECT_EQ(src->readRecords("dic", "key", 10, 20, always, records, 5, 77), refused);
  EXPECT_THAT(dataCalls(), ElementsAre("data.readRecords dic/key wait=77 flags=5"));
  EXPECT_EQ(platform.dataRead.targets, (std::list<std::string>{"key"}));
  EXPECT_EQ(platform.dataRead.name, "dic");
  EXPECT_EQ(platform.dataRead.begin, 10);
  EXPECT_EQ(platform.dataRead.end, 20);
  EXPECT_TRUE(platform.dataRead.cancelled);
  EXPECT_EQ(records.size(), 1u);
}

TEST_F(DataSrcQueriesTest, shouldReadTheLastRecordOfEachTargetThatHasOne) {
  platform.dataRead.answer = {
      {"a", {{1, 1, "old"}, {2, 20, "new"}}}, {"b", {}}, {"c", {{3, 3, "c"}}}};
  platform.calls.answer("data.readTargets", refused);
  std::map<std::string, Record> records = {
      {"b", {7, 7, "kept"}}, {"a", {0, 0, "gone"}}, {"z", {9, 9, "kept"}}};
  EXPECT_EQ(src->readTargets("dic", {"a", "b", "c"}, 10, never, records, 5, 77), refused);
  EXPECT_THAT(dataCalls(), ElementsAre("data.readTargets dic wait=77 flags=5"));
  EXPECT_EQ(platform.dataRead.targets, (std::list<std::string>{"a", "b", "c"}));
  EXPECT_EQ(platform.dataRead.begin, 10);
  EXPECT_FALSE(platform.dataRead.cancelled);
  EXPECT_THAT(records, ElementsAre(Pair("a", Record{2, 20, "new"}), Pair("b", Record{7, 7, "kept"}),
                                   Pair("c", Record{3, 3, "c"}), Pair("z", Record{9, 9, "kept"})));
}

TEST_F(DataSrcQueriesTest, shouldReadOneRecordWithAllArgumentsAndTheStatus) {
  platform.calls.answer("data.readTargets", refused);
  Record record;
  EXPECT_EQ(src->readRecord("dic", "key", 10, always, record, 5, 77), refused);
  EXPECT_THAT(dataCalls(), ElementsAre("data.readTargets dic wait=77 flags=5"));
  EXPECT_EQ(platform.dataRead.targets, (std::list<std::string>{"key"}));
  EXPECT_EQ(platform.dataRead.begin, 10);
  EXPECT_TRUE(platform.dataRead.cancelled);
  EXPECT_EQ(record, (Record{10, 0, "dic"}));
}

// The newest records.

TEST_F(DataSrcQueriesTest, shouldReadTheLastRecordOfTheLastTargetOfTheLastName) {
  platform.data().latestAnswer = nested({{1, 1, "old"}, {2, 2, "new"}});
  Record record;
  EXPECT_EQ(src->readLatest("dic", "key", record, 5), ResultStatus());
  EXPECT_EQ(record, (Record{2, 2, "new"}));
  EXPECT_THAT(dataCalls(), ElementsAre("data.readLatest dic/key flags=5"));
}

TEST_F(DataSrcQueriesTest, shouldAnswerSuccessForAFoundRecordWhateverStatusTheServiceGave) {
  platform.data().latestAnswer = nested({{2, 2, "new"}});
  platform.calls.answer("data.readLatest", refused);
  Record record;
  EXPECT_EQ(src->readLatest("dic", "key", record, 0), ResultStatus());
  EXPECT_EQ(record.text, "new");
}

TEST_F(DataSrcQueriesTest, shouldAnswer22ForATargetWithoutARecordWhenTheServiceDidNotFail) {
  const std::list<LatestOfName> empties[] = {{}, {{"dic", {}}}, nested({})};
  for (const auto& empty : empties) {
    platform.data().latestAnswer = empty;
    Record record{7, 7, "kept"};
    EXPECT_EQ(src->readLatest("dic", "key", record, 0), notThere);
    EXPECT_EQ(record, (Record{7, 7, "kept"}));
  }
}

TEST_F(DataSrcQueriesTest, shouldAnswerTheServicesFailureForATargetWithoutARecord) {
  platform.calls.answer("data.readLatest", refused);
  const std::list<LatestOfName> empties[] = {{}, {{"dic", {}}}, nested({})};
  for (const auto& empty : empties) {
    platform.data().latestAnswer = empty;
    Record record;
    EXPECT_EQ(src->readLatest("dic", "key", record, 0), refused);
  }
}

TEST_F(DataSrcQueriesTest, shouldForwardAQuestionForManyNewestRecords) {
  platform.data().latestAnswer = nested({{2, 2, "new"}});
  platform.calls.answer("data.readLatest", refused);
  std::list<LatestOfName> latest;
  EXPECT_EQ(src->readLatestMany({{"t", "n"}, {"u", "m"}}, latest, 5), refused);
  EXPECT_THAT(dataCalls(), ElementsAre("data.readLatest n/t,m/u flags=5"));
  EXPECT_EQ(latest, nested({{2, 2, "new"}}));
}

// Ranges.

TEST_F(DataSrcQueriesTest, shouldRequestARangeOfOneTargetFromThePublisher) {
  platform.calls.answer("publisher.requestRange", refused);
  EXPECT_EQ(src->requestRange("dic", "key", 10, 20, 30, 512), refused);
  EXPECT_THAT(platform.calls.entries(), ElementsAre("publisher.requestRange dic 30"));
  const DataReq request = platform.published.lastRequest();
  EXPECT_EQ(request.name, "dic");
  EXPECT_EQ(request.targets, (std::list<std::string>{"key"}));
  EXPECT_EQ(request.beginTime, 10);
  EXPECT_EQ(request.endTime, 20);
  EXPECT_EQ(request.count, 2147483647);
  EXPECT_EQ(request.flags, 512);
}

TEST_F(DataSrcQueriesTest, shouldRequestARangeOfAllTargetsFromThePublisherWithoutFlag512) {
  platform.calls.answer("publisher.requestRange", refused);
  EXPECT_EQ(src->requestRangeAll("dic", 10, 20, 30, 511), refused);
  EXPECT_THAT(platform.calls.entries(), ElementsAre("publisher.requestRange dic 30"));
  const DataReq request = platform.published.lastRequest();
  EXPECT_TRUE(request.targets.empty());
  EXPECT_EQ(request.beginTime, 10);
  EXPECT_EQ(request.endTime, 20);
  EXPECT_EQ(request.count, 2147483647);
  EXPECT_EQ(request.flags, 511);
}

TEST_F(DataSrcQueriesTest, shouldRequestARangeOfAllTargetsFromTheDataServiceWithFlag512) {
  platform.calls.answer("data.requestAll", refused);
  EXPECT_EQ(src->requestRangeAll("dic", 10, 20, 30, 512 | 4), refused);
  EXPECT_THAT(platform.calls.entries(),
              ElementsAre("data.requestAll dic begin=10 end=20 count=2147483647 flags=516 tag=30"));
}

// Definitions.

TEST_F(DataSrcQueriesTest, shouldCopyTheFirstDefinitionAndAnswerSuccess) {
  platform.data().definesAnswer = {{"1", "2", "3", "4", 5, 6, 7}, {"x", {}, {}, {}, 0, 0, 0}};
  platform.calls.answer("data.dataDefines", refused);
  DataDefine define;
  EXPECT_EQ(src->dataDefine("dic", define), ResultStatus());
  EXPECT_EQ(define.text1 + define.text2 + define.text3 + define.text4, "1234");
  EXPECT_EQ(define.value1, 5);
  EXPECT_EQ(define.value2, 6);
  EXPECT_EQ(define.value3, 7);
  EXPECT_THAT(dataCalls(), ElementsAre("data.dataDefines dic 1"));
}

TEST_F(DataSrcQueriesTest, shouldCopyTheFirstBriefAndAnswerSuccess) {
  platform.data().briefsAnswer = {{"1", "2"}, {"x", {}}};
  platform.calls.answer("data.dataBriefs", refused);
  DataBrief brief;
  EXPECT_EQ(src->dataBrief("dic", brief), ResultStatus());
  EXPECT_EQ(brief.text1 + brief.text2, "12");
  EXPECT_THAT(dataCalls(), ElementsAre("data.dataBriefs dic"));
}

TEST_F(DataSrcQueriesTest, shouldAnswer22ForADictionaryThatIsNotThereAndLeaveTheOutRecord) {
  platform.data().definesAnswer = std::list<DataDefine>{};
  platform.data().briefsAnswer = std::list<DataBrief>{};
  platform.calls.answer("data.dataDefines", refused);
  platform.calls.answer("data.dataBriefs", refused);
  DataDefine define{"kept", {}, {}, {}, 0, 0, 0};
  DataBrief brief{"kept", {}};
  EXPECT_EQ(src->dataDefine("dic", define), notThere);
  EXPECT_EQ(src->dataBrief("dic", brief), notThere);
  EXPECT_EQ(define.text1 + brief.text1, "keptkept");
}

TEST_F(DataSrcQueriesTest, shouldListTheTargetsOfADictionary) {
  EXPECT_EQ(src->targetsOfName("dic"), (std::list<std::string>{"dic-target"}));
  EXPECT_THAT(dataCalls(), ElementsAre("data.targetsOfName dic"));
}

TEST_F(DataSrcQueriesTest, shouldForwardAQuestionToTheDataService) {
  platform.calls.answer("data.queryOp", refused);
  std::string answer;
  EXPECT_EQ(src->dataServiceQuery("what", answer), refused);
  EXPECT_EQ(answer, "answer to what");
  EXPECT_THAT(dataCalls(), ElementsAre("data.queryOp what"));
}

TEST_F(DataSrcQueriesTest, shouldHoldNoLockAcrossAnyOfThem) {
  expectLocksFreeIn({"publisher.publisherOp7", "publisher.publishRecords", "publisher.requestRange",
                     "data.readRecords", "data.readTargets", "data.readLatest", "data.requestAll",
                     "data.dataDefines", "data.dataBriefs", "data.targetsOfName", "data.queryOp"});
  std::list<Record> records;
  std::map<std::string, Record> byTarget;
  std::list<LatestOfName> latest;
  Record record;
  DataDefine define;
  DataBrief brief;
  std::string answer;
  src->publisherOp7("", "", 0, 0, "", 0, 0);
  src->publishRecords("n", "t", 0, {}, 0, 0);
  src->readRecords("n", "t", 0, 0, never, records, 0, 0);
  src->readTargets("n", {"t"}, 0, never, byTarget, 0, 0);
  src->readRecord("n", "t", 0, never, record, 0, 0);
  src->readLatest("n", "t", record, 0);
  src->readLatestMany({}, latest, 0);
  src->requestRange("n", "t", 0, 0, 0, 0);
  src->requestRangeAll("n", 0, 0, 0, 0);
  src->requestRangeAll("n", 0, 0, 0, 512);
  src->dataDefine("n", define);
  src->dataBrief("n", brief);
  src->targetsOfName("n");
  src->dataServiceQuery("q", answer);
  EXPECT_EQ(checks, 14);
}

}  // namespace
}  // namespace orvane::support
