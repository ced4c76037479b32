#include "platform/events/PublisherBook.h"

#include <gtest/gtest.h>

#include <memory>

#include "platform/EmbeddedPlatform.h"
#include "platform/events/NoPublisher.h"

namespace orvane {
namespace {

TEST(PublisherBook, shouldForgetAPublisherThatItsCallerDeletes) {
  const auto book = std::make_shared<detail::PublisherBook>();
  auto publisher = std::make_unique<detail::NoPublisher>(book);
  EXPECT_EQ(book->size(), 1u);
  publisher.reset();
  EXPECT_EQ(book->size(), 0u);
}

TEST(PublisherBook, shouldFreeWhatNobodyDeleted) {
  const auto book = std::make_shared<detail::PublisherBook>();
  new detail::NoPublisher(book);  // The leak check of the sanitized build watches this one.
  new detail::NoPublisher(book);
  book->freeAll();
  EXPECT_EQ(book->size(), 0u);
}

TEST(PublisherBook, shouldLetACallerDeleteItsPublisherBesideOneThatIsLeft) {
  EmbeddedPlatform platform;
  const std::unique_ptr<IPublisher> own(platform.createPublisher(0));
  platform.createPublisher(2);
  EXPECT_EQ(own->publishOp5("key", "text", 0).code, 23);
}

}  // namespace
}  // namespace orvane
