#pragma once

#include <atomic>
#include <memory>
#include <string>

#include "platform/EmbeddedPlatform.h"
#include "platform/core/ServiceLoop.h"
#include "platform/core/Timers.h"
#include "platform/core/WorkerPool.h"
#include "platform/core/ZoneRules.h"
#include "platform/dictionary/DictionaryService.h"
#include "platform/events/EventDesk.h"
#include "platform/events/GeneralEvents.h"
#include "platform/events/IndexService.h"
#include "platform/events/Publications.h"
#include "platform/events/PublisherBook.h"
#include "platform/events/SystemEvents.h"
#include "platform/market/Driver.h"
#include "platform/market/Maintenance.h"
#include "platform/market/MarketStore.h"
#include "platform/market/OverdueAnswerer.h"
#include "platform/market/QuoteService.h"
#include "platform/reference/CodeService.h"
#include "platform/trade/SqliteStore.h"
#include "platform/trade/TradeDesk.h"
#include "platform/trade/TradeService.h"
#include "platform/trade/TradeState.h"
#include "services/Common/IServiceRouter.h"

namespace orvane {

/// The parts of an embedded platform, in the order in which they stand on one another: threads
/// come last, so that they end first.
class EmbeddedPlatform::Impl final : public IServiceRouter, public IQuoteHub {
 public:
  explicit Impl(PlatformOptions options);
  ~Impl() override;

  IQuoteHub* quoteHub() override { return this; }
  ITradeService* tradeService() override { return &trade; }
  int nextRequestId() override { return requestIds.fetch_add(1) + 1; }
  IRealtimeQuoteService* realtimeQuoteService() override { return &quotes; }
  ICodeService* codeService() override { return &codes; }
  IDataService* dataService() override { return &data; }

  int64 now() const;
  bool isPlayback() const { return options.mode == PlatformOptions::Mode::Playback; }
  void noteRequest();
  void noteTradeRequest();
  void noteEvent();
  void serveEvents();
  void postTelling();
  void noteDictionaryRequest();
  void resetClock();
  void run(const std::function<void(const PlaybackProgress&)>& progress);
  void drain();
  /// Throws `std::runtime_error` if something that happened is not on the disk, or there was a
  /// failure before.
  void checkWritten(std::string failure = {});

  const PlatformOptions options;
  const std::shared_ptr<const detail::ZoneRules> zone;
  detail::WorkerPool& pool = detail::WorkerPool::shared();
  SymbolHook symbolHook;
  /// Far above the ids that strategies choose for themselves: a cancel says no more than the id.
  static constexpr int kFirstDrawnId = 1'000'000'000;
  std::atomic<int> requestIds{kFirstDrawnId};
  std::atomic<int> timerIds{0};
  std::atomic<int64> clock{0};
  std::atomic<bool> cancelled{false};
  detail::DriverProgress progress;

  detail::CodeService codes;
  const std::shared_ptr<detail::GeneralEvents> generalEvents;
  detail::IndexService index;
  const std::shared_ptr<detail::PublisherBook> publishers =
      std::make_shared<detail::PublisherBook>();
  detail::SystemEvents systemEvents;
  detail::MarketStore store;
  detail::Publications publications;
  detail::QuoteService quotes;
  std::atomic<bool> hasTime{false};  ///< Whether the simulated clock shows a time of the data.
  detail::DictionaryService data;
  const std::unique_ptr<detail::SqliteStore> tradeFile;  ///< Null without a store.
  detail::TradeState tradeState;
  detail::TradeService trade;
  const std::shared_ptr<detail::GridDesk> grids;
  detail::TradeDesk desk;
  detail::Maintenance maintenance;
  detail::EventDesk eventDesk;
  std::shared_ptr<detail::TimerQueue> timers = std::make_shared<detail::TimerQueue>();

  /// Whether a task that tells of what was published is on its way: one is enough for all.
  std::atomic<bool> isTellingPosted{false};
  detail::ServiceLoop loop;
  std::unique_ptr<detail::OverdueAnswerer> answerer;  ///< Playback's.
  std::unique_ptr<detail::TimerThread> timerThread;   ///< Live mode's.
  detail::PlaybackDriver playback;
  detail::LiveDriver live;

 private:
  detail::DriverParts parts();
  detail::TradeDesk::Parts deskParts();
  detail::EventDesk::Parts eventParts();
  detail::DictionaryService::Parts dictionaryParts();
  detail::GridDesk::Parts gridParts();
};

}  // namespace orvane
