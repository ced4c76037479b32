#pragma once

#include <QJsonObject>
#include <algorithm>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "EventStrategy/ov.strategy.runner/IContext.h"
#include "sdk/Params.h"

namespace orvane {

/// The parameters of a strategy, declared once with the members that hold them, their ranges and
/// what they mean. What a member holds when it is declared is its default.
///
///     MyStrategy() {
///       params_.integer("fast", fast_, 1, 1000);
///       params_.integer("slow", slow_, 2, 1000);
///       params_.below("fast", fast_, "slow", slow_);
///     }
///     void onStart(IContext* context, const QJsonObject& json) override {
///       if (!params_.start(context, json)) return;
///
/// A reading is taken whole or not at all: where anything is wrong with it the members stay as they
/// were. The members must outlive the list, so keep both in the strategy, and declare them in its
/// constructor. For one thread at a time.
class ParamList {
 public:
  ParamList() = default;
  ParamList(const ParamList&) = delete;  // It holds references to its neighbours.
  ParamList& operator=(const ParamList&) = delete;

  /// A whole number; `Integer` is any type of them, and may narrow the range further.
  template <typename Integer>
  void integer(const char* key, Integer& member, int64 lowest = std::numeric_limits<Integer>::min(),
               int64 highest = highestOf<Integer>()) {
    lowest = std::max<int64>(lowest, std::numeric_limits<Integer>::min());
    highest = std::min<int64>(highest, highestOf<Integer>());
    declare(member, [=](Params& params, const Integer& now) {
      return static_cast<Integer>(params.integer(key, static_cast<int64>(now), lowest, highest));
    });
  }
  /// A number from `lowest` to `highest`.
  void number(const char* key, double& member,
              double lowest = -std::numeric_limits<double>::infinity(),
              double highest = std::numeric_limits<double>::infinity()) {
    declare(member,
            [=](Params& params, double now) { return params.number(key, now, lowest, highest); });
  }
  /// True or false.
  void flag(const char* key, bool& member) {
    declare(member, [=](Params& params, bool now) { return params.flag(key, now); });
  }
  /// A text, GBK in the member.
  void text(const char* key, std::string& member) {
    declare(member, [=](Params& params, const std::string& now) { return params.text(key, now); });
  }
  /// One of some texts, plain ASCII.
  void choice(const char* key, std::string& member, std::vector<std::string> choices) {
    declare(member, [key, choices = std::move(choices)](Params& params, const std::string& now) {
      return params.choice(key, now, choices);
    });
  }
  /// An array of texts, GBK in the member.
  void texts(const char* key, std::vector<std::string>& member) {
    declare(member, [=](Params& params, const std::vector<std::string>& now) {
      return params.texts(key, now);
    });
  }

  /// Makes a key that is missing in the reading of `start` an error.
  void require(const char* key) { required_.push_back(key); }

  /// Makes it an error if one number is not below another, of which both were declared.
  template <typename Number, typename Other>
  void below(const char* key, const Number& member, const char* otherKey, const Other& other) {
    check([key, &member, otherKey, &other]() -> std::string {
      if (static_cast<double>(member) < static_cast<double>(other)) return {};
      return "parameter \"" + std::string(key) + "\" (" + Params::textOf(member) +
             ") must be below \"" + otherKey + "\" (" + Params::textOf(other) + ")";
    });
  }

  /// What else must hold between members, asked with the new values in them: answers what is wrong,
  /// UTF-8, or an empty text. Any number of them.
  void check(std::function<std::string()> rule) { rules_.push_back(std::move(rule)); }

  /// Reads the parameters of a run's start. If anything is wrong, ends the run with all of it
  /// (`IContext::setError`) and answers false.
  bool start(IContext* context, const QJsonObject& json) {
    const std::string errors = read(json, true);
    if (!errors.empty()) context->setError(gbk(errors));
    return errors.empty();
  }

  /// Reads those of an update: what it does not name stays as it is. Answers what is wrong, UTF-8;
  /// then nothing was changed, and the run may go on.
  std::string update(const QJsonObject& json) { return read(json, false); }

 private:
  struct Entry {
    std::function<void(Params&)> read;  ///< Puts the new value into the member, and keeps the old.
    std::function<void()> restore;
  };

  template <typename Integer>
  static constexpr int64 highestOf() {
    // Of an unsigned 64-bit number, what a JSON number can hold.
    if constexpr (sizeof(Integer) >= sizeof(int64))
      return std::numeric_limits<int64>::max();
    else
      return std::numeric_limits<Integer>::max();
  }

  template <typename Value, typename Read>
  void declare(Value& member, Read readOne) {
    const auto before = std::make_shared<Value>(member);
    entries_.push_back({[&member, before, readOne](Params& params) {
                          *before = member;
                          member = readOne(params, member);
                        },
                        [&member, before] { member = *before; }});
  }

  std::string read(const QJsonObject& json, bool isStart) {
    Params params(json);
    if (isStart)
      for (const char* key : required_) params.require(key);
    for (const Entry& entry : entries_) entry.read(params);
    // A rule looks at values that are good by themselves.
    if (params.close().empty())
      for (const auto& rule : rules_)
        if (const std::string error = rule(); !error.empty()) params.addError(error);
    if (!params.errors().empty())
      for (const Entry& entry : entries_) entry.restore();
    return params.errors();
  }

  std::vector<Entry> entries_;
  std::vector<const char*> required_;
  std::vector<std::function<std::string()>> rules_;
};

}  // namespace orvane
