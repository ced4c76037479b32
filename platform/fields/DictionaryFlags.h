#pragma once

namespace orvane::dictionary {

// Flags of a publication.

/// The records' keys name what is to be deleted; their other parts mean nothing.
inline constexpr int kDeletes = 4;

// Flags of a batch of records.

/// The last batch of a history, or of the answer to a range request.
inline constexpr int kLastBatch = 16;
/// The batch answers a range request: these records may have come before.
inline constexpr int kRangeAnswer = 64;

}  // namespace orvane::dictionary
