#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iterator>

#include "platform/trade/ChunkedList.h"

namespace orvane {

/// Records one after the other, in a fraction of the memory that they take by themselves: what many
/// of them have in common, such as account, code and source, is kept once for all. `Part` is what
/// each has for itself: it is made of a record, puts itself into one, and tells whether two have
/// the same rest (`hasSameRest`).
///
/// Iterators make one record after the other in place: what one refers to is good until it goes on.
/// Not thread-safe; any thread may read what nobody writes to.
template <typename Record, typename Part>
class RecordList {
 public:
  using value_type = Record;
  class Reader;
  class const_iterator;

  RecordList() = default;
  RecordList(std::initializer_list<Record> records) {
    for (const Record& record : records) push_back(record);
  }

  std::size_t size() const { return kept_.size(); }
  bool empty() const { return kept_.empty(); }
  Record operator[](std::size_t at) const {
    const Kept& kept = kept_[at];
    Record record = rests_[kept.rest];
    kept.part.putInto(record);
    return record;
  }
  Record front() const { return (*this)[0]; }
  Record back() const { return (*this)[size() - 1]; }
  const_iterator begin() const { return const_iterator(*this); }
  std::default_sentinel_t end() const { return {}; }

  void push_back(const Record& record) {
    const std::uint32_t rest = restLike(record);
    kept_.push_back({Part(record), rest});
  }
  void replace(std::size_t at, const Record& record) {
    const std::uint32_t rest = restLike(record);
    kept_[at] = {Part(record), rest};
  }

  /// What a record has for itself, and a record that has the same rest.
  Part& partAt(std::size_t at) { return kept_[at].part; }
  const Record& restAt(std::size_t at) const { return rests_[kept_[at].rest]; }

 private:
  struct Kept {
    Part part;
    std::uint32_t rest = 0;  ///< Its place in `rests_`.
  };

  /// Where the rest of a record is kept, from now on at the latest.
  std::uint32_t restLike(const Record& record) {
    // Where each has another rest, to look at all of them would take longer and longer.
    constexpr std::size_t kLooks = 8;
    const std::size_t count = rests_.size();
    if (count > last_ && Part::hasSameRest(rests_[last_], record)) return last_;
    for (std::size_t i = 1; i <= std::min(count, kLooks); ++i)
      if (Part::hasSameRest(rests_[count - i], record))
        return last_ = static_cast<std::uint32_t>(count - i);
    rests_.push_back(record);
    return last_ = static_cast<std::uint32_t>(count);
  }

  ChunkedList<Kept> kept_;
  ChunkedList<Record> rests_;  ///< Of each the first record that has it.
  std::uint32_t last_ = 0;     ///< The rest that was found last.
};

/// Reads records of one list or of several; quickly where one after the other has the same rest.
template <typename Record, typename Part>
class RecordList<Record, Part>::Reader {
 public:
  /// Good until the next one is read.
  const Record& read(const RecordList& list, std::size_t at) {
    const Kept& kept = list.kept_[at];
    const Record& rest = list.rests_[kept.rest];
    if (rest_ != &rest) {
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
  const_iterator(const_iterator&&) = default;
  const_iterator& operator=(const_iterator&&) = default;

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
