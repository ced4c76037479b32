#include "host/RunnerBoard.h"

#include <tuple>
#include <utility>

#include "shared/TextCodec.h"

namespace orvane {

std::string RunnerStanding::callback() const {
  return inside == RunPulse::kOutside ? std::string()
                                      : kCallNames[static_cast<std::size_t>(inside)];
}

void RunnerBoard::add(const std::string& name, std::shared_ptr<const RunnerWatch> watch) {
  const std::lock_guard lock(mutex_);
  entries_.push_back({name, utf8ToGbk(name), std::move(watch)});
}

std::vector<RunnerStanding> RunnerBoard::look() const {
  const std::lock_guard lock(mutex_);
  std::vector<RunnerStanding> result;
  result.reserve(entries_.size());
  for (const Entry& entry : entries_) {
    RunnerStanding& standing = result.emplace_back();
    standing.name = entry.name;
    std::tie(standing.status, standing.message) = entry.watch->standing();
    if (const auto record = records_.find(entry.gbkName)) {
      standing.calls = record->pulse.calls();
      standing.inside = record->pulse.inside();
    }
  }
  return result;
}

}  // namespace orvane
