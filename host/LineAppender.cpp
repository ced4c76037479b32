#include "host/LineAppender.h"

#include <fmt/core.h>
#include <log4cxx/helpers/transcoder.h>
#include <log4cxx/spi/loggingevent.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

namespace orvane {
namespace {

/// Writes all of it; answers 0 or the error.
int writeAll(int descriptor, const std::string& bytes) {
  std::size_t written = 0;
  while (written < bytes.size()) {
    const ssize_t count = write(descriptor, bytes.data() + written, bytes.size() - written);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return errno;
    if (count == 0) return EIO;  // It takes nothing and does not say why: never try for ever.
    written += static_cast<std::size_t>(count);
  }
  return 0;
}

}  // namespace

LineAppender::LineAppender(std::string name, std::string prefix, int descriptor,
                           bool ownsDescriptor)
    : name_(std::move(name)),
      prefix_(std::move(prefix)),
      descriptor_(descriptor),
      ownsDescriptor_(ownsDescriptor) {}

LineAppender::~LineAppender() {
  if (ownsDescriptor_) ::close(descriptor_);
}

void LineAppender::append(const log4cxx::spi::LoggingEventPtr& event, log4cxx::helpers::Pool&) {
  std::string text;
  log4cxx::helpers::Transcoder::encodeUTF8(event->getMessage(), text);
  const int error = writeAll(descriptor_, prefix_ + text + '\n');
  if (ring_) ring_->add(std::move(text));
  if (error == 0) return;
  if (lost_++ == 0) firstError_ = error;
}

void LineAppender::addLost(const Lost& lost) {
  if (lost.lines > 0 && lost_.fetch_add(lost.lines) == 0) firstError_ = lost.error;
}

std::string LineAppender::failure() const {
  const std::uint64_t lost = lost_;
  if (lost == 0) return {};
  return fmt::format("{}: {} log line{} could not be written: {}", name_, lost,
                     lost == 1 ? "" : "s", std::generic_category().message(firstError_));
}

}  // namespace orvane
