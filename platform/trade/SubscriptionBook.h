#pragma once

#include <array>
#include <atomic>
#include <compare>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "services/Common/ITradeService.h"

namespace orvane::detail {

enum class TradeTopic : std::uint8_t { Status, Capital, Order, Fill, Position, SourcePosition };
inline constexpr std::size_t kTradeTopics = 6;

/// What one subscription asks for.
struct TradeSelector {
  static constexpr int64 kEveryCode = 0;

  TradeTopic topic{};
  std::int32_t account = 0;
  int64 codeId = kEveryCode;
  EventSourceId eventSource = 0;  ///< 0: the source's text selects, if anything.
  std::string source;

  friend auto operator<=>(const TradeSelector&, const TradeSelector&) = default;
};

/// What a call-back is about.
struct TradeSubject {
  TradeTopic topic{};
  std::int32_t account = 0;
  int64 codeId = 0;
  EventSourceId eventSources = 0;  ///< All bits of its source.
  std::string source;

  friend bool operator==(const TradeSubject&, const TradeSubject&) = default;
};

/// One receiver of call-backs. `calledIn` is for the thread that calls it.
struct TradeReceiver {
  std::shared_ptr<TradeEventSpi> spi;
  std::uint64_t order = 0;     ///< Counts receivers by their first subscription.
  std::uint64_t calledIn = 0;  ///< See `CallRounds`.
};
using TradeReceivers = std::vector<std::shared_ptr<TradeReceiver>>;

/// Who wants to be told what. Guarded by its owner.
///
/// A receiver is held as long as a subscription of it stands. Subscriptions and the things told
/// are numbered by one count, so that what happened before a subscription is not told to it: the
/// subscriber fetched a picture of it already.
class SubscriptionBook {
 public:
  /// Answers whether the subscription is new.
  bool subscribe(const std::shared_ptr<TradeEventSpi>& spi, const TradeSelector& selector,
                 std::uint64_t number);
  /// These answer the receiver, so that whoever holds a lock lets go of it afterwards.
  std::shared_ptr<TradeReceiver> unsubscribe(const TradeEventSpi* spi,
                                             const TradeSelector& selector);
  std::shared_ptr<TradeReceiver> unsubscribeAccount(const TradeEventSpi* spi, std::int32_t account);
  std::shared_ptr<TradeReceiver> unsubscribeAll(const TradeEventSpi* spi);

  /// Who subscribed to a subject before `number`: each once, by their first subscription. The other
  /// form fills `found`, whose room is used again.
  TradeReceivers receiversOf(const TradeSubject& subject, std::uint64_t number) const;
  void receiversOf(const TradeSubject& subject, std::uint64_t number, TradeReceivers& found) const;
  /// Whether a subscription that lets the subject through to the receiver stands.
  bool reaches(const TradeReceiver& receiver, const TradeSubject& subject) const;
  /// How often subscriptions were ended: as long as it is the same, whom `receiversOf` answered the
  /// subject reaches still. To be read without the owner's lock, too.
  std::uint64_t endings() const { return endings_.load(); }
  /// The receiver of a spi; null without a subscription.
  std::shared_ptr<TradeReceiver> receiverOf(const TradeEventSpi* spi) const;

 private:
  struct Entry {
    std::shared_ptr<TradeReceiver> receiver;
    std::uint64_t number;
  };
  struct Holder {
    std::shared_ptr<TradeReceiver> receiver;
    std::vector<TradeSelector> selectors;
  };
  /// A selector to look for, without a text of its own.
  struct Wanted {
    TradeTopic topic{};
    std::int32_t account = 0;
    int64 codeId = 0;
    EventSourceId eventSource = 0;
    std::string_view source;

    friend auto operator<=>(const Wanted&, const Wanted&) = default;
  };
  struct Less {
    using is_transparent = void;
    static Wanted wanted(const TradeSelector& selector) {
      return {selector.topic, selector.account, selector.codeId, selector.eventSource,
              selector.source};
    }
    static const Wanted& wanted(const Wanted& selector) { return selector; }
    bool operator()(const auto& a, const auto& b) const { return wanted(a) < wanted(b); }
  };
  template <typename Visit>
  void eachSelector(const TradeSubject& subject, Visit visit) const;
  template <typename Ends>
  std::shared_ptr<TradeReceiver> endWhere(const TradeEventSpi* spi, Ends ends);
  void forgetAnswers();

  /// What was answered last of a topic: what is told of it next is of the same mostly.
  struct Answer {
    bool isKnown = false;
    TradeSubject subject;
    TradeReceivers receivers;
  };

  std::map<TradeSelector, std::vector<Entry>, Less> bySelector_;
  std::map<const TradeEventSpi*, Holder> bySpi_;
  mutable std::array<Answer, kTradeTopics> answers_;
  std::uint64_t receivers_ = 0;
  std::atomic<std::uint64_t> endings_{0};
};

}  // namespace orvane::detail
