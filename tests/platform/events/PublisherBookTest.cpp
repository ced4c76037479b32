#include "platform/events/PublisherBook.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>

#include "platform/EmbeddedPlatform.h"
#include "platform/events/GeneralEvents.h"
#include "platform/events/Publisher.h"
#include "platform/reference/CodeService.h"

namespace orvane {
namespace {

/// What a publisher stands on.
struct Ground {
  std::shared_ptr<detail::PublisherBook> book = std::make_shared<detail::PublisherBook>();
  detail::CodeService codes{[] { return 0; }, "UTC"};
  detail::MarketStore store{kUnsetTime, kUnsetTime, detail::ZoneRules::find("UTC")};
  detail::Publications market{{store, codes, [] { return 0; }, [] {}, true}};
  detail::GeneralEvents events{{}, true, [] {}};

  const std::atomic<bool> cancelled{false};
  detail::DictionaryService dictionary{{true, "", [] { return int64{0}; }, [] { return false; },
                                        [] { return true; }, [] {}, [] {}, [] { return int64{0}; },
                                        cancelled}};

  IPublisher* make() {
    return new detail::Publisher({book, market, codes, events, dictionary, [] { return 0; }});
  }
};

TEST(PublisherBook, shouldForgetAPublisherThatItsCallerDeletes) {
  Ground ground;
  std::unique_ptr<IPublisher> publisher(ground.make());
  EXPECT_EQ(ground.book->size(), 1u);
  publisher.reset();
  EXPECT_EQ(ground.book->size(), 0u);
}

TEST(PublisherBook, shouldFreeWhatNobodyDeleted) {
  Ground ground;
  ground.make();  // The leak check of the sanitized build watches this one.
  ground.make();
  ground.book->freeAll();
  EXPECT_EQ(ground.book->size(), 0u);
}

TEST(PublisherBook, shouldLetACallerDeleteItsPublisherBesideOneThatIsLeft) {
  EmbeddedPlatform platform;
  const std::unique_ptr<IPublisher> own(platform.createPublisher(0));
  platform.createPublisher(2);
  EXPECT_EQ(own->publisherOp5("", "", 0, 0, "", 0, 0).code, 23);
}

}  // namespace
}  // namespace orvane
