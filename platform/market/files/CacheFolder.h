#pragma once

#include <functional>

#include "platform/market/files/CacheFile.h"

namespace orvane::detail {

/// To be raised whenever files of the same bytes read otherwise than before: what earlier builds
/// kept in folders of caches is not used then.
inline constexpr int kReadingVersion = 2;

/// Whether a request asks for caches, and its files can have one: not what comes from a pipe.
bool wantsCache(const DataFileRequest& request);

/// Answers a request from its folder of caches, or else with `read`, whose result is then kept
/// there for the next time. A cache serves as long as its files are as they were when it was made,
/// and are asked for in the same way. One that cannot be used is made anew, and one that cannot
/// be made does no harm: both are noted. `read` puts what it reads into the cache it is given.
DataCache loadThroughCache(const DataFileRequest& request,
                           const std::function<void(DataCache&)>& read);

}  // namespace orvane::detail
