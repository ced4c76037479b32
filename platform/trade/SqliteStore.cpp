#include "platform/trade/SqliteStore.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "platform/core/SqliteFile.h"
#include "platform/trade/SqliteTables.h"

namespace orvane::detail {
namespace {

/// What went wrong, also where there is no memory to say it in.
std::string textOf(const std::exception& failure) noexcept {
  try {
    return failure.what();
  } catch (const std::exception&) {
    return "out of memory";  // Short enough to need none.
  }
}

}  // namespace

SqliteStore::SqliteStore(const std::string& path) : path_(path) {
  try {
    tables_ = std::make_unique<Tables>(path);
  } catch (const std::exception& error) {
    failToOpen("store " + path, error);
  }
  thread_ = std::thread([this] { work(); });
}

SqliteStore::~SqliteStore() {
  {
    const std::lock_guard lock(mutex_);
    closing_ = true;
    changed_.notify_all();
  }
  thread_.join();
}

void SqliteStore::beginRun(StoredRun run) {
  // A transaction of its own: if it fails, it takes nothing of the run before with it.
  awaitWritten();
  post(std::move(run));
  awaitWritten();
}

void SqliteStore::awaitWritten() {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return jobs_.empty() && !isWriting_; });
}
void SqliteStore::write(StoredNews news) { post(std::move(news)); }
void SqliteStore::completeRun() { post(Completion{}); }

void SqliteStore::post(Job job) {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return jobs_.size() < kMostJobs; });
  jobs_.push_back(std::move(job));
  changed_.notify_all();
}

void SqliteStore::flush() {
  std::unique_lock lock(mutex_);
  wantsSync_ = true;
  changed_.notify_all();
  changed_.wait(lock, [this] { return jobs_.empty() && !isWriting_ && !wantsSync_; });
  if (error_.empty()) return;
  throw std::runtime_error("store " + path_ + ": " + std::exchange(error_, {}));
}

bool SqliteStore::isBeginning(const Job& job) { return std::holds_alternative<StoredRun>(job); }

void SqliteStore::work() {
  std::unique_lock lock(mutex_);
  while (true) {
    changed_.wait(lock, [this] { return closing_ || wantsSync_ || !jobs_.empty(); });
    if (closing_ && jobs_.empty()) return;
    writeWaiting(lock);
  }
}

void SqliteStore::writeWaiting(std::unique_lock<std::mutex>& lock) {
  room_.swap(jobs_);
  const bool syncs = std::exchange(wantsSync_, false);
  isWriting_ = true;
  lock.unlock();
  std::string error;
  try {
    if (!room_.empty()) {
      tables_->begin();
      for (const Job& job : room_)
        std::visit([this](const auto& each) { tables_->add(each); }, job);
      tables_->commit();
    }
    if (syncs) tables_->sync();
  } catch (const std::exception& failure) {
    tables_->rollback();
    if (std::any_of(room_.begin(), room_.end(), isBeginning)) tables_->forgetRun();
    error = textOf(failure);
  }
  room_.clear();
  lock.lock();
  if (error_.empty()) error_ = std::move(error);
  isWriting_ = false;
  changed_.notify_all();
}

}  // namespace orvane::detail
