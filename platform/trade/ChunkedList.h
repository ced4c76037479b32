#pragma once

#include <algorithm>
#include <bit>
#include <compare>
#include <cstddef>
#include <initializer_list>
#include <iterator>
#include <type_traits>
#include <utility>
#include <vector>

#include "shared/Export.h"

namespace orvane {

namespace detail {

/// Makes memory that is about to be written from its begin to its end ready at once, which takes
/// less than page by page as it is touched. Does nothing where the system cannot do that.
ORVANE_API void makeReady(void* memory, std::size_t bytes) noexcept;

}  // namespace detail

/// Elements one after the other, which stay where they are while others are added behind them; in
/// blocks, the first ones small, of up to some hundred kilobytes. A deque of the standard library
/// has a block for each record that is larger than half a kilobyte. Iterators are of the list:
/// those of one that was moved from, cleared or assigned to are of no use. Not thread-safe; any
/// thread may read what nobody writes to.
template <typename T>
class ChunkedList {
  static_assert(!std::is_same_v<T, bool>, "a vector of bool has no elements of its own");

  template <bool isConst>
  class Iterator;

 public:
  using value_type = T;
  using size_type = std::size_t;
  using difference_type = std::ptrdiff_t;
  using reference = T&;
  using const_reference = const T&;
  using iterator = Iterator<false>;
  using const_iterator = Iterator<true>;

  ChunkedList() = default;
  ChunkedList(std::initializer_list<T> elements) : ChunkedList(elements.begin(), elements.end()) {}
  template <std::input_iterator From>
  ChunkedList(From first, From last) {
    for (; first != last; ++first) push_back(*first);
  }
  ChunkedList(const ChunkedList& other) : ChunkedList(other.begin(), other.end()) {}
  ChunkedList(ChunkedList&& other) noexcept
      : blocks_(std::move(other.blocks_)), size_(std::exchange(other.size_, 0)) {
    other.blocks_.clear();
  }
  ChunkedList& operator=(ChunkedList other) noexcept {
    blocks_.swap(other.blocks_);
    std::swap(size_, other.size_);
    return *this;
  }
  ~ChunkedList() = default;

  std::size_t size() const { return size_; }
  bool empty() const { return size_ == 0; }
  T& operator[](std::size_t at) { return *placeOf(*this, at); }
  const T& operator[](std::size_t at) const { return *placeOf(*this, at); }
  T& front() { return blocks_.front().front(); }
  const T& front() const { return blocks_.front().front(); }
  T& back() { return lastOf(*this); }
  const T& back() const { return lastOf(*this); }

  iterator begin() { return {this, 0}; }
  iterator end() { return {this, size_}; }
  const_iterator begin() const { return {this, 0}; }
  const_iterator end() const { return {this, size_}; }
  const_iterator cbegin() const { return begin(); }
  const_iterator cend() const { return end(); }
  auto rbegin() const { return std::make_reverse_iterator(end()); }
  auto rend() const { return std::make_reverse_iterator(begin()); }

  template <typename... Args>
  T& emplace_back(Args&&... args) {
    if (blocks_.empty() || blocks_.back().size() == roomOf(blocks_.size() - 1)) addBlock();
    T& element = blocks_.back().emplace_back(std::forward<Args>(args)...);
    ++size_;
    return element;
  }
  void push_back(const T& element) { emplace_back(element); }
  void push_back(T&& element) { emplace_back(std::move(element)); }
  void clear() {
    blocks_.clear();
    size_ = 0;
  }

 private:
  // Each block is twice as large as the one before it, up to the largest. All are powers of two.
  static constexpr std::size_t kFirst = std::bit_floor(std::max<std::size_t>(4096 / sizeof(T), 1));
  static constexpr std::size_t kLargest =
      std::max(kFirst, std::bit_floor(std::size_t{320 * 1024} / sizeof(T)));
  static constexpr std::size_t kGrowing =
      static_cast<std::size_t>(std::countr_zero(kLargest / kFirst));
  static constexpr std::size_t kInGrowing = kLargest - kFirst;  ///< Elements before the largest.

  static constexpr std::size_t roomOf(std::size_t block) {
    return kFirst << std::min(block, kGrowing);
  }

  void addBlock() {
    std::vector<T> block;
    block.reserve(roomOf(blocks_.size()));
    blocks_.push_back(std::move(block));
    if (blocks_.size() > kGrowing) detail::makeReady(blocks_.back().data(), kLargest * sizeof(T));
  }

  template <typename List>
  static auto& lastOf(List& list) {
    // A block is empty if memory or an element failed when it was begun.
    auto& block = list.blocks_.back();
    return block.empty() ? list[list.size_ - 1] : block.back();
  }

  template <typename List>
  static auto placeOf(List& list, std::size_t at) {
    if (at >= kInGrowing) {
      const std::size_t behind = at - kInGrowing;
      return list.blocks_[kGrowing + behind / kLargest].data() + behind % kLargest;
    }
    const auto block = static_cast<std::size_t>(std::bit_width(at / kFirst + 1)) - 1;
    return list.blocks_[block].data() + (at - kFirst * ((std::size_t{1} << block) - 1));
  }

  /// How many places of its block there are from one on.
  static constexpr std::size_t leftOf(std::size_t at) {
    if (at >= kInGrowing) return kLargest - (at - kInGrowing) % kLargest;
    const auto block = static_cast<std::size_t>(std::bit_width(at / kFirst + 1)) - 1;
    return kFirst * ((std::size_t{2} << block) - 1) - at;
  }

  template <bool isConst>
  class Iterator {
   public:
    using iterator_category = std::random_access_iterator_tag;
    using value_type = T;
    using difference_type = std::ptrdiff_t;
    using reference = std::conditional_t<isConst, const T&, T&>;
    using pointer = std::conditional_t<isConst, const T*, T*>;
    using List = std::conditional_t<isConst, const ChunkedList, ChunkedList>;

    Iterator() = default;
    Iterator(List* list, std::size_t at) : list_(list), at_(at) { seek(); }
    template <bool isOtherConst>
    requires(isConst && !isOtherConst) Iterator(const Iterator<isOtherConst>& other)
        : list_(other.list_), at_(other.at_), place_(other.place_), left_(other.left_) {}

    // It had no place at the end of the list, and may have one by now.
    reference operator*() const { return left_ != 0 ? *place_ : (*list_)[at_]; }
    pointer operator->() const { return &**this; }
    reference operator[](difference_type by) const { return *(*this + by); }
    Iterator& operator++() {
      ++at_;
      if (left_ > 1) {
        ++place_;
        --left_;
      } else {
        seek();
      }
      return *this;
    }
    Iterator operator++(int) {
      const Iterator before = *this;
      ++*this;
      return before;
    }
    Iterator& operator--() { return *this += -1; }
    Iterator operator--(int) {
      const Iterator before = *this;
      --*this;
      return before;
    }
    Iterator& operator+=(difference_type by) {
      at_ += static_cast<std::size_t>(by);
      seek();
      return *this;
    }
    Iterator& operator-=(difference_type by) { return *this += -by; }
    friend Iterator operator+(Iterator a, difference_type by) { return a += by; }
    friend Iterator operator+(difference_type by, Iterator a) { return a += by; }
    friend Iterator operator-(Iterator a, difference_type by) { return a -= by; }
    friend difference_type operator-(Iterator a, Iterator b) {
      return static_cast<difference_type>(a.at_) - static_cast<difference_type>(b.at_);
    }
    friend bool operator==(Iterator a, Iterator b) { return a.at_ == b.at_; }
    friend auto operator<=>(Iterator a, Iterator b) { return a.at_ <=> b.at_; }

   private:
    friend Iterator<true>;

    /// Finds its place anew: at the begin of a block, and where it jumped.
    void seek() {
      left_ = list_ != nullptr && at_ < list_->size_ ? leftOf(at_) : 0;
      place_ = left_ == 0 ? nullptr : placeOf(*list_, at_);
    }

    List* list_ = nullptr;
    std::size_t at_ = 0;
    pointer place_ = nullptr;
    std::size_t left_ = 0;  ///< Places of its block from there on; 0: it has none.
  };

  std::vector<std::vector<T>> blocks_;
  std::size_t size_ = 0;
};

}  // namespace orvane
