#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "tests/EventStrategy/LibraryTest.h"
#include "tests/EventStrategy/model/Dice.h"

namespace orvane::support {

/// How often something happened that a random test would be worth little without.
struct HostileSeen {
  int delivered = 0;  ///< Call-backs that were wanted.
  int dropped = 0;    ///< Call-backs that were not.
  int inside = 0;     ///< Call-backs from within a call of the source's.
  int thrown = 0;     ///< Steps that ended with an exception of the service.
  int refused = 0;    ///< Refusals that the caller was told.
  int replaced = 0;   ///< Sources whose owner went while the service still held them.
};

/// One random schedule of what an owner does with its source and a service to it, against a model.
/// Each step draws the service's mood first: inside every call that it then gets it stays calm,
/// refuses, throws, or calls back, on the same thread or on one of its own.
///
/// A subclass says what the steps are, keeps the model, and notes in `expectedCalls` what the
/// service must be asked and in `expectedDeliveries` what the owner must hear.
class HostileSchedule : protected Dice {
 public:
  using Lines = std::vector<std::string>;

  HostileSchedule(const HostileSchedule&) = delete;
  HostileSchedule& operator=(const HostileSchedule&) = delete;
  virtual ~HostileSchedule() {
    for (const std::string& operation : operations_) {
      platform_.calls.onCall(operation, {});
      platform_.calls.answer(operation, {});
    }
    platform_.forgetSpis();
  }

  /// Takes one step; false after a failure, which is told with the whole story.
  bool step() {
    platform_.calls.clear();
    expectedCalls.clear();
    expectedDeliveries.clear();
    expectedThrow.reset();
    mood_ = static_cast<Mood>(std::min(below(10), 4));
    for (const std::string& operation : operations_) platform_.calls.answer(operation, answer());
    const std::optional<std::string> thrown = thrownBy([this] { takeStep(); });
    if (beside_.joinable()) beside_.join();
    afterStep();
    EXPECT_EQ(thrown, expectedThrow);
    EXPECT_EQ(platform_.calls.entries(prefix_), expectedCalls);
    EXPECT_EQ(takeDeliveries(), expectedDeliveries);
    expectTables();
    seen_.delivered += static_cast<int>(expectedDeliveries.size());
    seen_.thrown += thrown ? 1 : 0;
    if (::testing::Test::HasFailure()) ADD_FAILURE() << story_;
    return !::testing::Test::HasFailure();
  }

 protected:
  enum class Mood { Refuses, Throws, CallsAtOnce, CallsFromAThread, Calm };

  /// `operations` are the calls that the service is hostile in, `prefix` what all its calls begin
  /// with.
  HostileSchedule(FakePlatform& platform, std::uint64_t seed, HostileSeen& seen,
                  const std::string& prefix, const Lines& operations)
      : Dice(seed), platform_(platform), seen_(seen), prefix_(prefix), operations_(operations) {
    for (const std::string& operation : operations_)
      platform_.calls.onCall(operation, [this] { act(); });
  }

  /// Draws what happens in this step and does it, to the model first.
  virtual void takeStep() = 0;
  /// Once the step is over, whether or not it threw.
  virtual void afterStep() {}
  /// One call-back of any kind, for anything, whether or not anybody wants it.
  virtual void callBack() = 0;
  virtual Lines takeDeliveries() = 0;
  /// Compares the source's tables with the model's.
  virtual void expectTables() = 0;
  /// What else holds inside a call of the source's.
  virtual void expectInside() {}

  /// What the service does inside a call.
  virtual void act() {
    expectInside();
    if (mood_ == Mood::Throws && !oneIn(4)) throwNow();
    if (mood_ == Mood::CallsAtOnce) callBackInside();
    if (mood_ == Mood::CallsFromAThread && oneIn(3)) onAnotherThread([this] { callBackInside(); });
  }

  /// Calls back once from a thread that is awaited after the step: a source that holds its lock
  /// across the present call is in nobody's reach before.
  void callBackBeside(std::function<void()> call) {
    ++seen_.inside;
    beside_ = std::thread(std::move(call));
  }
  bool isCalledBeside() const { return beside_.joinable(); }

  void throwNow() {
    const std::string what = "call " + std::to_string(platform_.calls.entries().size());
    if (!expectedThrow) expectedThrow = what;
    throw std::runtime_error(what);
  }

  void callBackInside() {
    ++seen_.inside;
    callBack();
    callBack();
  }

  Mood mood() const { return mood_; }
  /// What every operation answers in this step.
  ResultStatus answer() const {
    return mood_ == Mood::Refuses ? ResultStatus{30, "not yet"} : ResultStatus();
  }

  /// Whether the caller was told what the service answered, or well done where it was not asked.
  void expectStatus(const ResultStatus& status, bool isAsked) {
    EXPECT_EQ(status, isAsked ? answer() : ResultStatus());
    seen_.refused += status.code != 0 ? 1 : 0;
  }

  /// A call-back that the owner hears if `isWanted`.
  void expectDelivery(bool isWanted, const std::string& line) {
    if (isWanted)
      expectedDeliveries.push_back(line);
    else
      ++seen_.dropped;
  }

  void expectCalls(const Lines& calls) {
    expectedCalls.insert(expectedCalls.end(), calls.begin(), calls.end());
  }

  void tell(const std::string& text) { story_ += text + "\n"; }

  FakePlatform& platform_;
  HostileSeen& seen_;
  Lines expectedCalls;
  Lines expectedDeliveries;
  std::optional<std::string> expectedThrow;  ///< The first that the service threw in this step.

 private:
  const std::string prefix_;
  const Lines operations_;
  Mood mood_ = Mood::Calm;
  std::thread beside_;
  std::string story_;
};

}  // namespace orvane::support
