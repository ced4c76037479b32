#pragma once

#include <cstdint>
#include <string>
#include <utility>

namespace orvane {

/// The result of nearly every operation. A value type.
///
/// `code` 0 is success; all codes and their messages stand in `ResultStatusMessages`.
/// `message` is GBK text and is empty on success.
struct ResultStatus {
  std::int32_t code = 0;
  std::string message;

  ResultStatus() = default;
  ResultStatus(std::int32_t statusCode, std::string text)
      : code(statusCode), message(std::move(text)) {}

  friend bool operator==(const ResultStatus&, const ResultStatus&) = default;
};

}  // namespace orvane
