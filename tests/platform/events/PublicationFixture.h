#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>

#include "services/ov.publisher/IPublisher.h"
#include "tests/platform/market/PlatformFixture.h"

namespace orvane::testing {

inline constexpr int kLive = 1;

inline std::unique_ptr<IPublisher> makeRunPublisher() {
  return std::unique_ptr<IPublisher>(IPublisher::create(2));
}

inline IDepthMarketData makeTick(const ICodeID& code, int64 time, double price, double volume = 1) {
  IDepthMarketData tick;
  tick.code = code;
  QuoteWriter writer(tick);
  writer.setTime(time);
  writer.set(quote::LastPrice, price);
  writer.set(quote::Volume, volume);
  writer.set(quote::TradingDay, 20210104);
  writer.set(quote::Flags, quote::kHasTrade);
  return tick;
}

inline IKLine barOf(int minute, double close) {
  const int64 end = kMonday + minute * kMinute;
  return makeBar(end - kMinute, end, close, close, close, close);
}

/// A playback of minute bars of A, beside a code P that files know nothing of.
struct PublishingPlayback {
  explicit PublishingPlayback(int bars = 5, PlatformOptions options = {}) : platform(options) {
    platform->addBars(makeBars(a, kMonday, kMinute, bars));
  }
  /// A runner that calls `onMinute` with the number of each bar of A that it gets.
  std::shared_ptr<RunnerSpi> eachMinute(std::function<void(int)> onMinute) {
    auto runner = std::make_shared<RunnerSpi>([onMinute](const std::string& event) {
      const std::size_t at = event.find(" 0:0");
      if (at != std::string::npos) onMinute(event[at + 4] - '0');
    });
    platform.quotes().subscribeBars(makeQuery(a), kOneMinute, runner, 100 + ++runners);
    return runner;
  }
  /// Asks for the bars of a code, those of the past and those to come.
  std::shared_ptr<RecordingSpi> readBars(const ICodeID& code, const TermPair& term = kOneMinute,
                                         int requestId = 1) {
    auto reader = std::make_shared<RecordingSpi>();
    EXPECT_EQ(platform.quotes().subscribeBars(makeQuery(code), term, reader, requestId).code, 0);
    return reader;
  }
  InstalledPlatform platform;
  const ICodeID a = platform.code("A"), p = platform.code("P"), q = platform.code("Q");
  int runners = 0;
};

}  // namespace orvane::testing
