#pragma once

#include <log4cxx/appenderskeleton.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "host/watch/LogRing.h"

namespace orvane {

/// Writes log lines, UTF-8, to a file descriptor. A line that cannot be written is lost and
/// counted, and nothing else: whoever logs a line, a strategy among them, never hears of a full
/// disk or a closed pipe, and no run ends or waits because of one. Any thread may log.
class LineAppender final : public log4cxx::AppenderSkeleton {
 public:
  /// `name` is what `failure` calls the file; `prefix` stands before each line. Closes
  /// `descriptor` in the end if it owns it.
  LineAppender(std::string name, std::string prefix, int descriptor, bool ownsDescriptor);
  ~LineAppender() override;
  LineAppender(const LineAppender&) = delete;
  LineAppender& operator=(const LineAppender&) = delete;

  void close() override {}
  bool requiresLayout() const override { return false; }

  /// Gives every line to `ring` too; before the first. Null: to none.
  void setRing(std::shared_ptr<LogRing> ring) { ring_ = std::move(ring); }

  /// How many lines got lost and why, as one UTF-8 message; empty if none did. Any thread.
  std::string failure() const;

  /// Lines that got lost, and the errno of the first.
  struct Lost {
    std::uint64_t lines = 0;
    int error = 0;
  };
  Lost lost() const { return {lost_, firstError_}; }
  /// Counts lines that got lost in another process, which writes to the same file. Any thread.
  void addLost(const Lost& lost);

 protected:
  void append(const log4cxx::spi::LoggingEventPtr& event, log4cxx::helpers::Pool& pool) override;

 private:
  const std::string name_, prefix_;
  const int descriptor_;
  const bool ownsDescriptor_;
  std::shared_ptr<LogRing> ring_;
  std::atomic<std::uint64_t> lost_{0};
  std::atomic<int> firstError_{0};  ///< An errno.
};

}  // namespace orvane
