#include "host/sweep/BatchWorker.h"

#include <QDataStream>
#include <QIODevice>

#include "host/Console.h"
#include "host/StopTeller.h"

namespace orvane {
namespace {

// Both ends of the stream are the same program, so nothing in it says what comes.

QDataStream& operator<<(QDataStream& to, const std::string& text) {
  return to << QByteArray::fromStdString(text);
}

QDataStream& operator>>(QDataStream& from, std::string& text) {
  QByteArray bytes;
  from >> bytes;
  text = bytes.toStdString();
  return from;
}

void put(QDataStream& to, const SweepRow& row) {
  to << static_cast<quint64>(row.key.number) << row.status << row.message << row.digest
     << row.isRefused;
  for (const std::optional<double>& value : row.figures)
    to << value.has_value() << value.value_or(0);
}

void get(QDataStream& from, SweepRow& row) {
  quint64 number = 0;
  from >> number >> row.status >> row.message >> row.digest >> row.isRefused;
  row.key.number = number;
  for (std::optional<double>& value : row.figures) {
    bool isThere = false;
    double its = 0;
    from >> isThere >> its;
    if (isThere) value = its;
  }
}

}  // namespace

void BatchWorker::setOpen(SweepStore* store, std::shared_ptr<LineAppender> log) {
  store_ = store;
  log_ = std::move(log);
}

QByteArray BatchWorker::playHere(std::span<const std::uint64_t> numbers,
                                 const std::optional<TimeSpan>& span, int stopDescriptor) {
  if (store_ != nullptr) store_->leaveToParent();
  StopTeller::setOnceMore(store_ == nullptr
                              ? "Ctrl-C once more ends the sweep at once, without a table"
                              : "Ctrl-C once more ends the sweep at once, without table and page; "
                                "batches that are done are kept");
  InterruptWatcher interrupts(stopDescriptor);
  const std::uint64_t lostBefore = log_->lost().lines;
  std::vector<SweepRow> rows;
  const bool isWhole =
      runner_.run(numbers, span, interrupts, [&](std::uint64_t number, const RunnerOutcome& its) {
        rows.push_back({{0, SweepSample::Whole, number},
                        runnerStatusName(its.state.status),
                        its.state.message,
                        figureValues(figuresOf(its)),
                        its.digest,
                        its.isOverAtStart && its.state.status == RunnerError});
      });
  QByteArray answer;
  QDataStream to(&answer, QIODevice::WriteOnly);
  const LineAppender::Lost lost = log_->lost();
  to << isWhole << runner_.isOneByOne() << outputFailure()
     << static_cast<quint64>(lost.lines - lostBefore) << qint32{lost.error}
     << static_cast<quint64>(rows.size());
  for (const SweepRow& row : rows) put(to, row);
  return answer;
}

BatchResult BatchWorker::play(std::span<const std::uint64_t> numbers,
                              const std::optional<TimeSpan>& span) {
  const JobEnd end =
      jobs_.run([&](int stopDescriptor) { return playHere(numbers, span, stopDescriptor); });
  BatchResult result;
  result.isInterrupted = jobs_.isInterrupted();
  result.crash = end.fault;
  if (!end.answer) return result;
  QDataStream from(*end.answer);
  bool isWhole = false, isOneByOne = false;
  quint64 lostLines = 0, count = 0;
  qint32 lostError = 0;
  std::string failure;
  from >> isWhole >> isOneByOne >> failure >> lostLines >> lostError >> count;
  if (!isWhole) result.isInterrupted = true;
  for (quint64 i = 0; i < count && !result.isInterrupted; ++i)
    get(from, result.rows.emplace_back());
  if (isOneByOne) runner_.setOneByOne();
  if (outputFailure_.empty()) outputFailure_ = std::move(failure);
  log_->addLost({lostLines, lostError});
  return result;
}

void BatchWorker::check() {
  // There as well: making a platform starts threads, which a process that forks must not have.
  const JobEnd end = jobs_.run([this](int) {
    runner_.check();
    return QByteArray();
  });
  if (!end.answer) throw std::runtime_error("the data could not be checked: " + end.fault);
  runner_.trustOrder();
}

}  // namespace orvane
