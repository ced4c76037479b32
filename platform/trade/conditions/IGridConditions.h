#pragma once

#include <string>
#include <vector>

#include "platform/trade/conditions/GridOptions.h"
#include "shared/Export.h"
#include "shared/ResultStatus.h"
#include "shared/Types.h"

namespace orvane {

/// What a grid condition is doing. Texts are GBK; amounts are exact decimal texts.
struct GridState {
  enum class Mode {
    Waiting,  ///< For the run to begin, or for the first price of its code.
    Working,
    Paused,
    Stopped,  ///< For good.
  };
  int64 id = 0;
  GridOptions options;
  Mode mode = Mode::Waiting;
  std::string held;          ///< The volume that it bought and did not sell yet.
  std::string closedProfit;  ///< Of what it sold, before fees.
  int64 sales = 0;           ///< How often a step sold all that it held.
  int openOrders = 0;        ///< Its orders that are not over.
  std::string trouble;       ///< Why steps wait that would place an order; empty when none does.
};

/// The grid conditions of an embedded platform, which owns them. Any thread may call it; nothing
/// waits. What is asked for takes effect when the platform is quiet next, in playback at the
/// present simulated time. Errors: -2 with the field and the value, 22 for an id that is not there.
class ORVANE_API IGridConditions {
 public:
  IGridConditions() = default;
  IGridConditions(const IGridConditions&) = delete;
  IGridConditions& operator=(const IGridConditions&) = delete;
  virtual ~IGridConditions();

  /// Adds a condition and gives its id; it works from the present on, or from the run's begin. A
  /// `rewind` of the platform drops it: then those of the options are there again, as at the start.
  virtual ResultStatus create(const GridOptions& options, int64& id) = 0;
  /// Gives it another range or volume; account, code and name stay. Its orders are withdrawn first.
  /// What it holds stays for sale at the prices that it had.
  virtual ResultStatus change(int64 id, const GridOptions& options) = 0;
  /// Withdraws its orders; what it holds stays. `resume` ends that.
  virtual ResultStatus pause(int64 id) = 0;
  virtual ResultStatus resume(int64 id) = 0;
  /// Withdraws its orders for good. What it holds stays on the account.
  virtual ResultStatus stop(int64 id) = 0;
  /// Stops it, and forgets it once its last order is over.
  virtual ResultStatus remove(int64 id) = 0;

  virtual ResultStatus find(int64 id, GridState& state) const = 0;
  virtual std::vector<GridState> all() const = 0;  ///< By id.

  /// Finds the codes of the options' grids; `run` does so too. Throws `std::invalid_argument`, in
  /// UTF-8, that names grid, field and value.
  virtual void prepare() = 0;
};

}  // namespace orvane
