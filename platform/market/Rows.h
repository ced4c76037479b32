#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <new>
#include <span>
#include <type_traits>
#include <utility>
#include <vector>

#include "shared/Export.h"

namespace orvane {

namespace detail {

/// Memory that lives as long as the last copy of the pointer. Throws `std::bad_alloc`.
ORVANE_API std::shared_ptr<void> memoryForRows(std::size_t bytes);

}  // namespace detail

/// The rows of a series: plain records one after the other, as in a vector. Unlike a vector's, the
/// memory may also be somebody else's, such as a file that is mapped, so that no row is copied
/// before it is used. Growing moves the rows into memory of their own. Not thread-safe.
template <typename T>
class Rows {
  static_assert(std::is_trivially_copyable_v<T>);

 public:
  using value_type = T;
  using size_type = std::size_t;
  using difference_type = std::ptrdiff_t;
  using reference = T&;
  using const_reference = const T&;
  using pointer = T*;
  using const_pointer = const T*;
  using iterator = T*;
  using const_iterator = const T*;

  Rows() noexcept = default;
  explicit Rows(std::size_t count) { resize(count); }
  Rows(std::initializer_list<T> rows) { append({rows.begin(), rows.size()}); }
  Rows(const std::vector<T>& rows) { append(rows); }
  Rows(const Rows& other) { append(other); }
  Rows(Rows&& other) noexcept { swap(other); }
  Rows& operator=(Rows other) noexcept {
    swap(other);
    return *this;
  }
  ~Rows() = default;

  /// The `count` rows at `data`, which `keeper` keeps alive. They may be written to.
  static Rows over(std::shared_ptr<void> keeper, T* data, std::size_t count) {
    Rows rows;
    rows.keeper_.swap(keeper);
    rows.data_ = data;
    rows.size_ = rows.capacity_ = count;
    return rows;
  }

  /// The same rows in the same memory, which both keep alive: what is written to one is written to
  /// the other. Growing parts them.
  Rows shared() const { return over(keeper_, data_, size_); }

  T* data() noexcept { return data_; }
  const T* data() const noexcept { return data_; }
  std::size_t size() const noexcept { return size_; }
  std::size_t capacity() const noexcept { return capacity_; }
  bool empty() const noexcept { return size_ == 0; }
  T* begin() noexcept { return data_; }
  T* end() noexcept { return data_ + size_; }
  const T* begin() const noexcept { return data_; }
  const T* end() const noexcept { return data_ + size_; }
  T& operator[](std::size_t at) noexcept { return data_[at]; }
  const T& operator[](std::size_t at) const noexcept { return data_[at]; }
  T& front() noexcept { return data_[0]; }
  const T& front() const noexcept { return data_[0]; }
  T& back() noexcept { return data_[size_ - 1]; }
  const T& back() const noexcept { return data_[size_ - 1]; }

  void clear() noexcept { size_ = 0; }
  void reserve(std::size_t count) {
    if (count > capacity_) moveTo(count);
  }
  void resize(std::size_t count) {
    const std::size_t before = size_;
    resizeForWriting(count);
    if (count > before) std::fill(data_ + before, data_ + count, T{});
  }
  /// Like `resize`, but what is new has no value until it is written.
  void resizeForWriting(std::size_t count) {
    reserve(count);
    size_ = count;
  }
  void push_back(T row) {
    if (size_ == capacity_) moveTo(std::max<std::size_t>(2 * capacity_, 8));
    data_[size_++] = row;
  }
  template <typename... Parts>
  T& emplace_back(Parts&&... parts) {
    push_back(T(std::forward<Parts>(parts)...));
    return back();
  }
  void pop_back() noexcept { --size_; }

  /// Adds rows that are not its own.
  void append(std::span<const T> rows) {
    if (rows.empty()) return;
    if (size_ + rows.size() > capacity_) moveTo(std::max(2 * capacity_, size_ + rows.size()));
    std::memcpy(data_ + size_, rows.data(), rows.size() * sizeof(T));
    size_ += rows.size();
  }
  template <std::forward_iterator Iterator>
  iterator insert(const_iterator before, Iterator first, Iterator last) {
    const auto at = static_cast<std::size_t>(before - data_);
    const auto count = static_cast<std::size_t>(std::distance(first, last));
    if (size_ + count > capacity_) moveTo(std::max(2 * capacity_, size_ + count));
    std::copy_backward(data_ + at, data_ + size_, data_ + size_ + count);
    std::copy(first, last, data_ + at);
    size_ += count;
    return data_ + at;
  }
  iterator insert(const_iterator before, std::initializer_list<T> rows) {
    return insert(before, rows.begin(), rows.end());
  }
  iterator erase(const_iterator at) noexcept {
    T* const place = data_ + (at - data_);
    std::copy(place + 1, end(), place);
    --size_;
    return place;
  }
  void assign(std::size_t count, T row) {
    resizeForWriting(count);
    std::fill(begin(), end(), row);
  }

  /// Room for `count` rows, `first` rows behind its own first one: part of what is reserved here,
  /// to be filled by another thread and then joined.
  Rows roomAt(std::size_t first, std::size_t count) const {
    Rows room = over(keeper_, data_ + first, count);
    room.size_ = 0;
    return room;
  }
  /// Adds the rows of a room of its own, moving them up to the last row.
  void join(const Rows& room) {
    if (room.data_ != data_ + size_)
      std::memmove(data_ + size_, room.data_, room.size_ * sizeof(T));
    size_ += room.size_;
  }

  friend bool operator==(const Rows& a, const Rows& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end());
  }
  void swap(Rows& other) noexcept {
    keeper_.swap(other.keeper_);
    std::swap(data_, other.data_);
    std::swap(size_, other.size_);
    std::swap(capacity_, other.capacity_);
  }

 private:
  void moveTo(std::size_t count) {
    if (count > static_cast<std::size_t>(-1) / 2 / sizeof(T)) throw std::bad_alloc();
    std::shared_ptr<void> memory = detail::memoryForRows(count * sizeof(T));
    T* const data = static_cast<T*>(memory.get());
    if (size_ > 0) std::memcpy(data, data_, size_ * sizeof(T));
    keeper_ = std::move(memory);
    data_ = data;
    capacity_ = count;
  }

  std::shared_ptr<void> keeper_;
  T* data_ = nullptr;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};

}  // namespace orvane
