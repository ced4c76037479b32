#include "host/InstrumentInputs.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/InputError.h"

namespace orvane {
namespace {

TEST(InstrumentInputs, shouldLeaveTheCommasOfSessionsInTheirValue) {
  const auto input = instrumentOf(
      "IF2101.CFFEX,priceTick=0.2,sessions=09:30-11:30,13:00-15:00,multiplier=300", "--instrument");
  EXPECT_EQ(input.instrument.code, "IF2101");
  EXPECT_EQ(input.instrument.market, "CFFEX");
  EXPECT_EQ(input.instrument.priceTick, "0.2");
  EXPECT_EQ(input.instrument.sessions, "09:30-11:30,13:00-15:00");
  EXPECT_EQ(input.instrument.multiplier, "300");
}

TEST(InstrumentInputs, shouldNameOptionKeyAndValueWhenAValueIsWrong) {
  try {
    instrumentOf("IF2101,priceTick=small", "--instrument");
    FAIL();
  } catch (const InputError& error) {
    EXPECT_THAT(error.what(), testing::HasSubstr("--instrument"));
    EXPECT_THAT(error.what(), testing::HasSubstr("priceTick"));
    EXPECT_THAT(error.what(), testing::HasSubstr("small"));
  }
}

TEST(InstrumentInputs, shouldRefuseAKeyOrAnInstrumentThatComesTwice) {
  const auto faultOf = [](const std::vector<std::string>& given) {
    try {
      std::vector<InstrumentInput> inputs;
      for (const std::string& text : given) inputs.push_back(instrumentOf(text, "--instrument"));
      checkNotGivenTwice(inputs);
    } catch (const InputError& error) {
      return std::string(error.what());
    }
    return std::string("none");
  };
  EXPECT_THAT(faultOf({"A.X,multiplier=300,multiplier=10"}), testing::HasSubstr("multiplier"));
  EXPECT_EQ(faultOf({"A.X,multiplier=300", "A.X"}),
            "--instrument A.X: is given already: --instrument A.X,multiplier=300");
  EXPECT_EQ(faultOf({"A.X", "A.Y", "A"}), "none");
}

TEST(InstrumentInputs, shouldSplitACodeAtItsLastDot) {
  Instrument instrument;
  setCodeText(instrument, "BRK.B.NYSE");
  EXPECT_EQ(instrument.code, "BRK.B");
  EXPECT_EQ(instrument.market, "NYSE");
  EXPECT_EQ(instrumentText(instrument), "BRK.B.NYSE");
  setCodeText(instrument, "BB");
  EXPECT_EQ(instrument.code, "BB");
  EXPECT_EQ(instrument.market, "");
  EXPECT_EQ(instrumentText(instrument), "BB");
}

}  // namespace
}  // namespace orvane
