#pragma once

#include <bit>

#include "shared/IndexTradeElement.h"

namespace orvane {

/// Reads the carried value of an index element as the embedded platform fills it. Holds a
/// reference; make it where you use it.
class IndexElementView {
 public:
  explicit IndexElementView(const IndexTradeElement& element) : element_(element) {}

  /// The weight as the file gives it, 0 where it gives none.
  double weight() const { return std::bit_cast<double>(element_.value); }

 private:
  const IndexTradeElement& element_;
};

/// Writes the carried value of an index element.
class IndexElementWriter {
 public:
  explicit IndexElementWriter(IndexTradeElement& element) : element_(element) {}

  void setWeight(double weight) { element_.value = std::bit_cast<Word>(weight); }

 private:
  IndexTradeElement& element_;
};

}  // namespace orvane
