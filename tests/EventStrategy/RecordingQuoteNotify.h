#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "EventStrategy/QuoteNotify.h"

namespace orvane::support {

/// Notes what a quote source delivers. Any thread may call it.
class RecordingQuoteNotify final : public QuoteNotify {
 public:
  void onQuote(const IDepthMarketData& quote) override {
    note("onQuote " + std::to_string(quote.code.id));
  }
  void onKLine(int requestId, const ICodeID& code, const std::vector<IKLine>& bars,
               const ResultStatus& status, int batchFlag) override {
    note("onKLine " + batch(requestId, code, bars.size(), status, batchFlag));
  }
  void onKLineProgress(int requestId, const ICodeID& code, const KLineProgress& progress) override {
    note("onKLineProgress " + head(requestId, code) + " " + std::to_string(progress.value1));
  }
  void onTick(int requestId, const ICodeID& code, const std::vector<IDepthMarketData>& ticks,
              const ResultStatus& status, int batchFlag) override {
    note("onTick " + batch(requestId, code, ticks.size(), status, batchFlag));
  }
  void onRollover(int requestId, const ICodeID& code,
                  const RolloverCoefficient& coefficient) override {
    note("onRollover " + head(requestId, code) + " " + std::to_string(coefficient.value));
  }

  std::vector<std::string> calls() const {
    const std::lock_guard lock(mutex_);
    return calls_;
  }

  /// Runs inside every call, after the note.
  std::function<void()> hook;

 private:
  static std::string head(int requestId, const ICodeID& code) {
    return std::to_string(requestId) + " code=" + std::to_string(code.id);
  }
  static std::string batch(int requestId, const ICodeID& code, std::size_t size,
                           const ResultStatus& status, int batchFlag) {
    return head(requestId, code) + " size=" + std::to_string(size) +
           " status=" + std::to_string(status.code) + status.message +
           " flag=" + std::to_string(batchFlag);
  }
  void note(const std::string& call) {
    {
      const std::lock_guard lock(mutex_);
      calls_.push_back(call);
    }
    if (hook) hook();
  }

  mutable std::mutex mutex_;
  std::vector<std::string> calls_;
};

}  // namespace orvane::support
