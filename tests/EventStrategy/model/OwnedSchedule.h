#pragma once

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>

#include "tests/EventStrategy/model/HostileSchedule.h"

namespace orvane::support {

/// A schedule of one owner with its source: what is alike for all that an owner can attach to and
/// leave. `Owner` keeps what it hears and has a hook; `Model` knows whether it listens.
template <typename Source, typename Owner, typename Model>
class OwnedSchedule : public HostileSchedule {
 protected:
  OwnedSchedule(FakePlatform& platform, std::uint64_t seed, HostileSeen& seen,
                const std::string& prefix, const Lines& operations)
      : HostileSchedule(platform, seed, seen, prefix, operations) {
    source_->setNotify(&owner_);
  }
  ~OwnedSchedule() override { source_->setNotify(nullptr); }

  static std::shared_ptr<Source> makeSource() {
    if constexpr (std::is_default_constructible_v<Source>)
      return std::make_shared<Source>();
    else
      return std::make_shared<Source>(0);
  }

  void listen(bool listens) {
    tell(listens ? "listen" : "do not listen");
    model_.listens = listens;
    source_->setNotify(listens ? &owner_ : nullptr);
  }

  /// The owner goes and another comes; the service still has the old source's pointers. `calls` are
  /// those of the old one's release.
  void replace(const Lines& calls) {
    tell("replace");
    ++seen_.replaced;
    listen(false);
    expectCalls(calls);
    const auto old = std::exchange(source_, makeSource());
    listen(true);
    old->release();
  }

  /// The owner may throw: the service gets it, and the source is as it was.
  template <typename Call>
  void tellOwner(bool isWanted, const std::string& line, Call&& call) {
    expectDelivery(isWanted, line);
    const bool fails = isWanted && oneIn(20);
    if (fails) owner_.hook = [] { throw std::runtime_error("owner"); };
    EXPECT_EQ(thrownBy(std::forward<Call>(call)),
              fails ? std::optional<std::string>("owner") : std::nullopt);
    owner_.hook = {};
  }

  Lines takeDeliveries() override { return owner_.take(); }

  Owner owner_;
  std::shared_ptr<Source> source_ = makeSource();
  Model model_;
};

}  // namespace orvane::support
