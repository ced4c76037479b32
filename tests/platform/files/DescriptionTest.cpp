#include "platform/market/files/Description.h"

#include "tests/platform/files/DataFileSupport.h"

namespace orvane::detail {
namespace {

std::string refusal(const char* json) {
  try {
    readDescription(QJsonDocument::fromJson(json).object());
  } catch (const DataFileError& error) {
    return error.what();
  }
  return {};
}

TEST(Description, shouldNameTheNearestKeyWhenOneIsUnknown) {
  EXPECT_EQ(refusal(R"({"timezone": "UTC"})"),
            "description: unknown key \"timezone\"; did you mean \"timeZone\"?");
  EXPECT_EQ(refusal(R"({"pricescal": 10})"),
            "description: unknown key \"pricescal\"; did you mean \"priceScale\"?");
}

TEST(Description, shouldTellWhatIsWantedWhenAValueIsOfAnotherKind) {
  EXPECT_EQ(refusal(R"({"stamp": "middle"})"),
            "description: \"stamp\": \"middle\" is not one of \"start\", \"end\"");
  EXPECT_EQ(refusal(R"({"timeZone": "Mars/Olympus"})"),
            "description: \"timeZone\": \"Mars/Olympus\" is not a time zone such as "
            "\"Asia/Shanghai\" or \"+08:00\"");
  EXPECT_EQ(refusal(R"({"period": "fortnight"})"),
            "description: \"period\": \"fortnight\" is not a period such as \"5min\", \"30s\", "
            "\"1h\", \"day\" or \"week\"");
  EXPECT_EQ(refusal(R"({"priceScale": 8})"),
            "description: \"priceScale\": 8 is not a power of ten such as 10000 or 0.01");
  EXPECT_EQ(refusal(R"({"priceTick": 0})"),
            "description: \"priceTick\": 0 is not a decimal above 0 such as \"0.2\"");
  EXPECT_EQ(refusal(R"({"date": "20211301"})"),
            "description: \"date\": \"20211301\" is not a date such as \"2021-01-04\"");
  EXPECT_EQ(refusal(R"({"header": 1})"), "description: \"header\": 1 is not true or false");
  EXPECT_EQ(refusal(R"({"delimiter": "::"})"),
            "description: \"delimiter\": \"::\" is not one character");
  EXPECT_EQ(refusal(R"({"columns": 3})"),
            "description: \"columns\": 3 is not a list of names or an object");
  EXPECT_EQ(refusal(R"({"columns": {"open": 0}})"),
            "description: \"columns\": 0 is not a header's name or a position from 1");
  EXPECT_EQ(refusal(R"({"columns": ["opne"]})"),
            "description: \"columns\": \"opne\" is no column name; did you mean \"open\"? \"-\" "
            "passes over a column");
  EXPECT_EQ(refusal(R"({"thousands": "."})"),
            "description: \"thousands\" and \"decimalPoint\" are the same character");
}

TEST(Description, shouldReadPeriodsInEveryCommonForm) {
  for (const char* text : {"5min", "5 min", "m5", "M5", "5m", "5minutes", "5T"})
    EXPECT_EQ(parsePeriod(text), 300'000) << text;
  for (const char* text : {"day", "1d", "D1", "daily", "24h", "Day"})
    EXPECT_EQ(parsePeriod(text), kDayMs) << text;
  EXPECT_EQ(parsePeriod("week"), kWeekMs);
  EXPECT_EQ(parsePeriod("30S"), 30'000);
  EXPECT_EQ(parsePeriod("500ms"), 500);
  for (const char* text : {"", "0min", "fast", "2d", "month", "5", "min5x", "99999999min"})
    EXPECT_EQ(parsePeriod(text), 0) << text;
}

TEST(Description, shouldShiftByTheDecimalsWhenAScaleIsGiven) {
  const auto read = [](const char* json) {
    return readDescription(QJsonDocument::fromJson(json).object());
  };
  EXPECT_EQ(read(R"({"priceScale": 10000})").priceShift, -4);
  EXPECT_EQ(read(R"({"volumeScale": 0.01})").volumeShift, 2);
  EXPECT_EQ(read(R"({"turnoverScale": 1})").turnoverShift, 0);
  EXPECT_EQ(read(R"({"priceTick": 0.2})").priceTick.mantissa, 2);
  EXPECT_EQ(read(R"({"priceTick": 0.2})").priceTick.decimals, 1);
}

}  // namespace
}  // namespace orvane::detail
