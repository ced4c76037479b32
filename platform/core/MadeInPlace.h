#pragma once

#include <type_traits>
#include <utility>

namespace orvane::detail {

/// Stands for what `make` answers where a container makes an element of it: made there, a large
/// record need not be moved.
template <typename Make>
class MadeInPlace {
 public:
  explicit MadeInPlace(Make make) : make_(std::move(make)) {}
  operator std::invoke_result_t<const Make&>() const { return make_(); }

 private:
  const Make make_;
};

}  // namespace orvane::detail
