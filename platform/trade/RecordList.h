#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <limits>
#include <unordered_map>
#include <utility>

#include "platform/trade/ChunkedList.h"

namespace orvane {

/// Records one after the other, in a fraction of the memory that they take by themselves: what many
/// of them have in common, such as account, code and source, is kept once for all. `Part` is what
/// each has for itself: it is made of a record, puts itself into one, and tells whether two have
/// the same rest (`hasSameRest`, `hashOfRest`).
///
/// Iterators make one record after the other in place: what one refers to is good until it goes on,
/// and they are of use as long as the list stays as it is. Not thread-safe; any thread may read
/// what nobody writes to.
template <typename Record, typename Part>
class RecordList {
 public:
  using value_type = Record;
  class Reader;
  class const_iterator;

  RecordList() = default;
  RecordList(const RecordList&) = default;
  RecordList(RecordList&& other) noexcept { swap(other); }
  RecordList& operator=(RecordList other) noexcept {
    swap(other);
    return *this;
  }
  ~RecordList() = default;
  RecordList(std::initializer_list<Record> records) {
    for (const Record& record : records) push_back(record);
  }

  std::size_t size() const { return kept_.size(); }
  bool empty() const { return kept_.empty(); }
  Record operator[](std::size_t at) const {
    const Kept& kept = kept_[at];
    Record record = rests_[kept.rest].record;
    kept.part.putInto(record);
    return record;
  }
  Record front() const { return (*this)[0]; }
  Record back() const { return (*this)[size() - 1]; }
  const_iterator begin() const { return const_iterator(*this); }
  std::default_sentinel_t end() const { return {}; }

  void push_back(const Record& record) {
    Part part(record);
    const std::uint32_t rest = restLike(record);
    kept_.push_back({std::move(part), rest});
    ++rests_[rest].users;
  }
  /// If it throws nothing has changed.
  void replace(std::size_t at, const Record& record) {
    Part part(record);
    const std::uint32_t rest = restLike(record);
    ++rests_[rest].users;
    Kept& kept = kept_[at];
    kept.part = std::move(part);
    release(std::exchange(kept.rest, rest));
  }

  void swap(RecordList& other) noexcept {
    std::swap(kept_, other.kept_);
    std::swap(rests_, other.rests_);
    byHash_.swap(other.byHash_);
    std::swap(firstFree_, other.firstFree_);
    std::swap(last_, other.last_);
  }

  /// What a record has for itself, and a record that has the same rest.
  Part& partAt(std::size_t at) { return kept_[at].part; }
  const Part& partAt(std::size_t at) const { return kept_[at].part; }
  const Record& restAt(std::size_t at) const { return rests_[kept_[at].rest].record; }

 private:
  struct Kept {
    Part part;
    std::uint32_t rest = 0;  ///< Its place in `rests_`.
  };
  static constexpr auto kNone = std::numeric_limits<std::uint32_t>::max();
  struct Rest {
    Record record;  ///< The first one that had it.
    std::uint32_t users = 0;
    std::uint32_t nextFree = kNone;  ///< Of one without users.
  };

  /// Where the rest of a record is kept, from now on at the latest.
  std::uint32_t restLike(const Record& record) {
    // Mostly that of the record before.
    if (last_ != kNone && Part::hasSameRest(rests_[last_].record, record)) return last_;
    const std::size_t hash = Part::hashOfRest(record);
    for (auto [at, end] = byHash_.equal_range(hash); at != end; ++at)
      if (Part::hasSameRest(rests_[at->second].record, record)) return last_ = at->second;
    const bool isUsedAgain = firstFree_ != kNone;
    const auto place = isUsedAgain ? firstFree_ : static_cast<std::uint32_t>(rests_.size());
    if (isUsedAgain)
      rests_[place].record = record;
    else
      rests_.push_back({record});
    byHash_.emplace(hash, place);
    if (isUsedAgain) firstFree_ = rests_[place].nextFree;
    return last_ = place;
  }

  /// One record less has a rest.
  void release(std::uint32_t place) noexcept {
    Rest& rest = rests_[place];
    if (--rest.users != 0) return;
    const auto [first, end] = byHash_.equal_range(Part::hashOfRest(rest.record));
    byHash_.erase(std::find_if(first, end, [&](const auto& at) { return at.second == place; }));
    rest.nextFree = std::exchange(firstFree_, place);
  }

  ChunkedList<Kept> kept_;
  ChunkedList<Rest> rests_;
  std::unordered_multimap<std::size_t, std::uint32_t> byHash_;  ///< Those that are not free.
  std::uint32_t firstFree_ = kNone;
  std::uint32_t last_ = kNone;  ///< The rest that was found last.
};

/// Reads records of one list or of several, which stay as they are meanwhile; quickly where one
/// after the other has the same rest.
template <typename Record, typename Part>
class RecordList<Record, Part>::Reader {
 public:
  Reader() = default;
  Reader(Reader&& other) noexcept
      : record_(std::move(other.record_)), rest_(std::exchange(other.rest_, nullptr)) {}
  Reader& operator=(Reader&& other) noexcept {
    record_ = std::move(other.record_);
    rest_ = std::exchange(other.rest_, nullptr);
    return *this;
  }

  /// Good until the next one is read.
  const Record& read(const RecordList& list, std::size_t at) {
    const Kept& kept = list.kept_[at];
    const Record& rest = list.rests_[kept.rest].record;
    if (rest_ != &rest) {
      rest_ = nullptr;  // Unless all of it is copied.
      record_ = rest;
      rest_ = &rest;
    }
    kept.part.putInto(record_);
    return record_;
  }

 private:
  Record record_;
  const Record* rest_ = nullptr;  ///< That of `record_`.
};

/// An input iterator that holds the record it is at. It may be moved, and not copied.
template <typename Record, typename Part>
class RecordList<Record, Part>::const_iterator {
 public:
  using iterator_concept = std::input_iterator_tag;
  using difference_type = std::ptrdiff_t;
  using value_type = Record;

  explicit const_iterator(const RecordList& list) : list_(&list) {}
  const_iterator(const_iterator&&) noexcept = default;
  const_iterator& operator=(const_iterator&&) noexcept = default;

  const Record& operator*() const { return reader_.read(*list_, at_); }
  const Record* operator->() const { return &**this; }
  const_iterator& operator++() {
    ++at_;
    return *this;
  }
  void operator++(int) { ++at_; }
  friend bool operator==(const const_iterator& at, std::default_sentinel_t) {
    return at.at_ == at.list_->size();
  }

 private:
  const RecordList* list_;
  std::size_t at_ = 0;
  mutable Reader reader_;
};

}  // namespace orvane
