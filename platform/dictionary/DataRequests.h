#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "platform/dictionary/DictionaryTables.h"
#include "services/Common/IDataService.h"

namespace orvane::detail {

/// One receiver of dictionary call-backs. `round` is for the service loop alone.
struct DataReceiver {
  explicit DataReceiver(std::shared_ptr<DataSpi> receiver) : spi(std::move(receiver)) {}

  const std::shared_ptr<DataSpi> spi;
  std::uint64_t round = 0;  ///< The round in which it was called last; see `CallRounds`.
};

/// One standing request for records. Immutable but for the mark.
struct DataRequest {
  int id = 0;
  std::shared_ptr<DataReceiver> who;
  DataReq query;
  /// Set by whoever ends it; no call-back of it starts after that.
  std::atomic<bool> ended{false};
};

/// One standing request for the newest record of a target. `told` is for the service loop alone.
struct SnapshotRequest {
  SnapshotKey key;
  std::shared_ptr<DataReceiver> who;
  std::optional<StoredRecord> told;  ///< What the receiver was told last.
  std::atomic<bool> ended{false};
};

/// A range that is to be sent once more to those who subscribe to it.
struct RangeWish {
  DataReq query;
  int64 tag = 0;
  int source = 0;      ///< Who asked.
  int64 sequence = 0;  ///< Counts the wishes of the source.
};

}  // namespace orvane::detail
