#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>
#include <thread>
#include <vector>

#include "platform/market/files/DataFiles.h"
#include "platform/market/files/Parallel.h"
#include "platform/market/files/Table.h"
#include "platform/market/files/TableRows.h"

namespace orvane::detail {

/// Some ten thousand rows: a share of any file worth sharing, and one that the caches hold.
inline constexpr std::size_t kUsualChunkBytes = std::size_t{1} << 20;

/// A part of a text, cut at line ends.
struct Chunk {
  std::string_view text;
  std::size_t lines = 0;
};

inline std::vector<Chunk> cutAtLines(std::string_view text, std::size_t bytes) {
  std::vector<Chunk> chunks;
  while (!text.empty()) {
    const std::size_t end = text.size() <= bytes ? text.npos : text.find('\n', bytes - 1);
    chunks.push_back({text.substr(0, end == text.npos ? end : end + 1)});
    text.remove_prefix(chunks.back().text.size());
  }
  return chunks;
}

inline std::size_t linesOf(std::string_view text) {
  // Rows are short: looking for each end costs more than counting them in blocks of a fixed length.
  constexpr std::size_t kBlock = 64;
  std::size_t lines = 0;
  std::size_t at = 0;
  for (; at + kBlock <= text.size(); at += kBlock) {
    std::uint8_t count = 0;
    for (std::size_t i = 0; i < kBlock; ++i)
      count = static_cast<std::uint8_t>(count + (text[at + i] == '\n' ? 1 : 0));
    lines += count;
  }
  for (; at < text.size(); ++at) lines += text[at] == '\n' ? 1 : 0;
  return lines + (text.empty() || text.back() == '\n' ? 0 : 1);
}

/// Reads all rows of a table with `whole`, in chunks on several threads. The result is what one
/// reader makes of all rows in turn, to the byte: chunks are read for themselves and joined in
/// their order; a chunk that fails, or does not fit what stands before it, is read again by
/// `whole`, which then meets the fault as if it had been alone.
///
/// A `Reader` has: `reserve(rows)`; `chunkReader(row, rows)`, a reader of its own kind whose rows
/// have their place in what is reserved; `read(TableRows&)`; `isSure()`, whether nothing depended
/// on rows before the first; `takes(chunk)`, whether a chunk may follow; `join(chunk,
/// linesBefore)`.
///
/// With `onFault` one reader reads all, and a row with a fault is told and passed over.
template <typename Reader>
void readAllRows(const Table& table, const ReadPace& pace, Reader& whole,
                 const std::function<void(double)>& progress, const FaultTaker& onFault) {
  if (onFault) {
    whole.reserve(linesOf(table.data()));
    TableRows rows(table, table.data(), table.linesBeforeData());
    for (bool isRead = false; !isRead;) {
      try {
        whole.read(rows);
        isRead = true;
      } catch (const DataFileError& fault) {
        onFault(fault.what());
      }
    }
    return;
  }
  struct Read {
    std::optional<Reader> reader;
    bool isGood = false;
  };
  const int threads = pace.threads > 0 ? pace.threads : usualReadThreads();
  const std::size_t bytes = pace.chunkBytes > 0 ? pace.chunkBytes : kUsualChunkBytes;
  std::vector<Chunk> chunks = cutAtLines(table.data(), bytes);
  forEachOf(chunks.size(), threads,
            [&](std::size_t i) { chunks[i].lines = linesOf(chunks[i].text); });
  std::size_t rows = 0;
  for (const Chunk& chunk : chunks) rows += chunk.lines;
  whole.reserve(rows);

  std::vector<Read> reads(chunks.size());
  if (chunks.size() > 1) {
    std::vector<std::size_t> firstRows(chunks.size(), 0);
    for (std::size_t i = 1; i < chunks.size(); ++i)
      firstRows[i] = firstRows[i - 1] + chunks[i - 1].lines;
    const auto caller = std::this_thread::get_id();
    std::atomic<std::size_t> firstBad = chunks.size();
    std::atomic<std::size_t> done = 0;
    forEachOf(chunks.size(), threads, [&](std::size_t i) {
      if (i > firstBad.load()) return;  // Nobody will ask for it.
      Read& one = reads[i];
      one.reader.emplace(whole.chunkReader(firstRows[i], chunks[i].lines));
      try {
        TableRows part(table, chunks[i].text, 0);
        one.reader->read(part);
        one.isGood = one.reader->isSure();
      } catch (const DataFileError&) {
        for (std::size_t bad = firstBad.load(); i < bad && !firstBad.compare_exchange_weak(bad, i);)
          continue;
      }
      done += chunks[i].text.size();
      if (progress && std::this_thread::get_id() == caller)
        progress(static_cast<double>(done.load()) / static_cast<double>(table.data().size()));
    });
  }
  std::size_t lines = table.linesBeforeData();
  for (std::size_t i = 0; i < chunks.size(); ++i) {
    Read& one = reads[i];
    if (one.isGood && whole.takes(*one.reader)) {
      whole.join(*one.reader, lines);
    } else {
      TableRows again(table, chunks[i].text, lines);
      whole.read(again);
    }
    one.reader.reset();
    lines += chunks[i].lines;
  }
}

}  // namespace orvane::detail
