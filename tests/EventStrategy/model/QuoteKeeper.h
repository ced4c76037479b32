#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "EventStrategy/QuoteNotify.h"

namespace orvane::support {

// One line for each call-back, with every field that a schedule fills.

inline std::string lineOf(const IDepthMarketData& quote) {
  return "quote " + std::to_string(quote.code.id) + quote.code.code + " " +
         std::to_string(quote.block1[0]);
}
inline std::string lineOf(const IKLine& bar) { return "bar " + std::to_string(bar.words[0]); }
inline std::string lineOf(const KLineProgress& progress) {
  return "progress " + std::to_string(progress.value1);
}
inline std::string lineOf(const RolloverCoefficient& coefficient) {
  return "rollover " + std::to_string(coefficient.value);
}

/// The head of a call-back of a request.
inline std::string headOf(int requestId, const ICodeID& code) {
  return "request " + std::to_string(requestId) + " of " + std::to_string(code.id) + code.code +
         ": ";
}

template <typename Row>
std::string batchLine(const std::vector<Row>& rows, const ResultStatus& status, int flags) {
  std::string line =
      "flags=" + std::to_string(flags) + " status=" + std::to_string(status.code) + status.message;
  for (const Row& row : rows) line += ", " + lineOf(row);
  return line;
}

/// The owner's side of a quote source: keeps what it hears, in order. Any thread may call it.
class QuoteKeeper final : public QuoteNotify {
 public:
  void onQuote(const IDepthMarketData& quote) override { keep(lineOf(quote)); }
  void onKLine(int requestId, const ICodeID& code, const std::vector<IKLine>& bars,
               const ResultStatus& status, int flags) override {
    keep(headOf(requestId, code) + "bars " + batchLine(bars, status, flags));
  }
  void onTick(int requestId, const ICodeID& code, const std::vector<IDepthMarketData>& ticks,
              const ResultStatus& status, int flags) override {
    keep(headOf(requestId, code) + "ticks " + batchLine(ticks, status, flags));
  }
  void onKLineProgress(int requestId, const ICodeID& code, const KLineProgress& progress) override {
    keep(headOf(requestId, code) + lineOf(progress));
  }
  void onRollover(int requestId, const ICodeID& code,
                  const RolloverCoefficient& coefficient) override {
    keep(headOf(requestId, code) + lineOf(coefficient));
  }

  std::vector<std::string> take() {
    const std::lock_guard lock(mutex_);
    return std::exchange(lines_, {});
  }

  /// Runs inside every call, after the note. Set it before calls come.
  std::function<void()> hook;

 private:
  void keep(std::string line) {
    {
      const std::lock_guard lock(mutex_);
      lines_.push_back(std::move(line));
    }
    if (hook) hook();
  }

  std::mutex mutex_;
  std::vector<std::string> lines_;
};

}  // namespace orvane::support
