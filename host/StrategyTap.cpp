#include "host/StrategyTap.h"

#include <exception>
#include <memory>
#include <stdexcept>

#include "EventStrategy/ov.strategy.runner/IStrategy.h"
#include "host/TapStrategy.h"

namespace orvane {
namespace {

RunRecords* currentRecords = nullptr;

// A runner looks the function up and calls it at once on the same thread, and the function takes
// no argument: this is how the stand-in learns which module it stands for.
thread_local CreateStrategyFunction pendingFunction = nullptr;

// A module that throws or gives nothing would leave its runner without a strategy and without a
// status; a tap without one inside ends the run with a clear error instead.
extern "C" IStrategy* orvaneHostCreateTapped() {
  const CreateStrategyFunction create = pendingFunction;
  pendingFunction = nullptr;
  std::unique_ptr<IStrategy> inner;
  std::string failure;
  try {
    inner.reset(create());
    if (!inner) failure = "createStrategy returned no object";
  } catch (const std::exception& error) {
    failure = std::string("createStrategy threw: ") + error.what();
  } catch (...) {
    failure = "createStrategy threw an exception that is not a standard one";
  }
  return new TapStrategy(std::move(inner), std::move(failure), *currentRecords);
}

}  // namespace

StrategyTap::StrategyTap(RunRecords& records) {
  if (currentRecords != nullptr) throw std::logic_error("a strategy tap exists already");
  currentRecords = &records;
}

StrategyTap::~StrategyTap() { currentRecords = nullptr; }

void* StrategyTap::hook(const std::string& symbol, void* address) {
  if (symbol != kCreateStrategyName || address == nullptr) return address;
  pendingFunction = reinterpret_cast<CreateStrategyFunction>(address);
  return reinterpret_cast<void*>(&orvaneHostCreateTapped);
}

}  // namespace orvane
