#pragma once

#include <cstddef>
#include <cstring>

namespace orvane::support {

/// The place of a virtual operation in its class's table, counted from 0, or -1 for an operation
/// that is not virtual.
///
/// In the C++ ABI of the supported compilers a pointer to a virtual member function holds 1 plus
/// the byte offset into the table; a virtual destructor takes the two places 0 and 1 where it
/// comes first.
template <typename Function>
int slotOf(Function function) {
  std::ptrdiff_t word = 0;
  static_assert(sizeof(function) >= sizeof(word));
  std::memcpy(&word, &function, sizeof(word));
  if (word % 2 == 0) return -1;
  return static_cast<int>((word - 1) / static_cast<std::ptrdiff_t>(sizeof(void*)));
}

}  // namespace orvane::support
