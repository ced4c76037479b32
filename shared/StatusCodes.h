#pragma once

namespace orvane::status {

/// The codes of a `ResultStatus` that this code answers itself; `statusMessage` has their texts.
inline constexpr int kTimedOut = -23;
inline constexpr int kNotConnected = -6;
inline constexpr int kBadArgument = -2;
inline constexpr int kStorageFailed = 20;
inline constexpr int kNoMoney = 21;
inline constexpr int kNotThere = 22;
inline constexpr int kClosedSession = 37;
inline constexpr int kNoPosition = 38;
inline constexpr int kNotAllowed = 42;
inline constexpr int kIgnored = 48;
inline constexpr int kTooMany = 52;

/// The states of an account's connection.
inline constexpr int kConnected = 16;
inline constexpr int kDisconnected = 17;

}  // namespace orvane::status
