#pragma once

#include <deque>
#include <functional>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

namespace orvane::support {

/// What one thread has still to do, as a model sees it: the calls that come out of the library, in
/// order, and between them the changes that happen once the thread has come so far.
class Flow {
 public:
  struct Part {
    enum class Kind {
      Call,      ///< The library calls out; `text` tells what.
      Act,       ///< The model changes; it may put further parts in front.
      OpEnd,     ///< The end of one operation that was called from outside.
      EventEnd,  ///< Where an exception ends up; changes the model as well.
    };
    Kind kind;
    std::string text;
    std::function<void()> act;
  };
  using Parts = std::vector<Part>;

  static Part call(std::string text) { return {Part::Kind::Call, std::move(text), {}}; }
  static Part act(std::function<void()> act) { return {Part::Kind::Act, {}, std::move(act)}; }
  static Part eventEnd(std::function<void()> act) {
    return {Part::Kind::EventEnd, {}, std::move(act)};
  }

  /// Puts parts before all that is left.
  void first(Parts parts) {
    parts_.insert(parts_.begin(), std::make_move_iterator(parts.begin()),
                  std::make_move_iterator(parts.end()));
  }

  /// Puts an operation's parts and its end before all that is left.
  void firstOp(Parts parts) {
    parts.push_back({Part::Kind::OpEnd, {}, {}});
    first(std::move(parts));
  }

  /// The library called out. Empty if that was what had to come, else what is wrong with it.
  std::string hear(const std::string& text) {
    advance();
    if (parts_.empty() || parts_.front().kind != Part::Kind::Call) return "unexpected: " + text;
    if (parts_.front().text != text)
      return "expected: " + parts_.front().text + "\n     got: " + text;
    parts_.pop_front();
    return {};
  }

  /// The operation that was put in last has returned. Empty if it had nothing left to do.
  std::string opReturned() {
    advance();
    if (!parts_.empty() && parts_.front().kind == Part::Kind::OpEnd) {
      parts_.pop_front();
      return {};
    }
    return "missing at the end of an operation: " + next();
  }

  /// The whole task has returned. Empty if it had nothing left to do.
  std::string taskReturned() {
    advance();
    return parts_.empty() ? std::string() : "missing at the end of a task: " + next();
  }

  /// The call that was heard last ended in an exception, which costs the event in hand and is told
  /// by one call of `logged`.
  void thrown(const std::string& logged) {
    while (!parts_.empty() && parts_.front().kind != Part::Kind::EventEnd) parts_.pop_front();
    first({call(logged)});
  }

 private:
  /// Makes the changes that come before the next call.
  void advance() {
    while (!parts_.empty() && parts_.front().act) {
      const std::function<void()> act = std::move(parts_.front().act);
      parts_.pop_front();
      act();
    }
  }

  std::string next() const {
    return parts_.empty() || parts_.front().text.empty() ? "nothing" : parts_.front().text;
  }

  std::deque<Part> parts_;
};

}  // namespace orvane::support
