#pragma once

#include <memory>
#include <vector>

#include "EventStrategy/ov.strategy.runner/IRunner.h"
#include "EventStrategy/ov.strategy.runner/RunnerContext.h"
#include "platform/EmbeddedPlatform.h"
#include "shared/ICodeID.h"

namespace orvane::bench {

/// What the benchmark's strategy subscribes to in `onStart`. With `Trading` it takes bars and sends
/// an order on each, with `QuoteTrading` it takes quotes and sends one on every tenth; it opens and
/// closes by turns.
enum class Wanted { Bars, Quotes, Trading, QuoteTrading };

/// On which quotes `QuoteTrading` sends an order: the first and then every tenth.
inline constexpr std::size_t kQuotesPerOrder = 10;

/// The account that it trades on.
inline constexpr char kAccount[] = "bench";

/// The id of its bar request.
inline constexpr int kRequestId = 1000000;

/// An embedded platform with one code and one runner on it, whose strategy counts what it sees.
/// The strategy is no module: the platform's symbol hook puts it in the place of one.
class Playback {
 public:
  Playback();
  ~Playback();

  EmbeddedPlatform& platform() { return *platform_; }
  ICodeID addCode();

  /// Starts so many runners from the factory, alike.
  void start(Wanted wanted, int count = 1);

  /// Starts a bare `RunnerContext` with its sources attached.
  std::shared_ptr<RunnerContext> startContext(const ICodeID& code, Wanted wanted);

  /// Lets the strategy send so many resting orders from one call-back, and waits until all that
  /// comes of them is told. Answers how many order call-backs it got. For `Wanted::Trading`.
  std::size_t sendOrders(int count);

  /// Ends the run and tells how many records the strategies saw, together.
  std::size_t stop();

 private:
  std::unique_ptr<EmbeddedPlatform> platform_;
  std::vector<std::shared_ptr<IRunner>> runners_;
  std::shared_ptr<RunnerContext> context_;
  ICodeID code_;
};

}  // namespace orvane::bench
