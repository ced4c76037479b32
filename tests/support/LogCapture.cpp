#include "tests/support/LogCapture.h"

#include <log4cxx/appenderskeleton.h>
#include <log4cxx/helpers/transcoder.h>
#include <log4cxx/logger.h>
#include <log4cxx/spi/loggingevent.h>

#include <algorithm>
#include <mutex>
#include <utility>

namespace orvane::support {
namespace {

std::string utf8(const log4cxx::LogString& text) {
  std::string out;
  log4cxx::helpers::Transcoder::encodeUTF8(text, out);
  return out;
}

}  // namespace

struct LogCapture::Store {
  std::mutex mutex;
  std::vector<CapturedLine> lines;
  std::function<void(const CapturedLine&)> hook;
};

struct LogCapture::Appender final : public log4cxx::AppenderSkeleton {
  explicit Appender(std::shared_ptr<Store> target) : store(std::move(target)) {}

  void close() override {}
  bool requiresLayout() const override { return false; }

  void append(const log4cxx::spi::LoggingEventPtr& event, log4cxx::helpers::Pool&) override {
    const log4cxx::spi::LocationInfo& location = event->getLocationInformation();
    const char* file = location.getFileName();
    const std::string function = location.getMethodName();
    const CapturedLine line{utf8(event->getLoggerName()),
                            utf8(event->getLevel()->toString()),
                            utf8(event->getMessage()),
                            file == nullptr ? "" : file,
                            function,
                            location.getLineNumber()};
    std::function<void(const CapturedLine&)> hook;
    {
      const std::lock_guard lock(store->mutex);
      store->lines.push_back(line);
      hook = store->hook;
    }
    if (hook) hook(line);
  }

  const std::shared_ptr<Store> store;
};

LogCapture::LogCapture()
    : store_(std::make_shared<Store>()),
      appender_(std::make_shared<Appender>(store_)),
      formerLevel_(log4cxx::Logger::getRootLogger()->getLevel()) {
  const log4cxx::LoggerPtr root = log4cxx::Logger::getRootLogger();
  root->setLevel(log4cxx::Level::getTrace());
  root->addAppender(appender_);
}

LogCapture::~LogCapture() {
  const log4cxx::LoggerPtr root = log4cxx::Logger::getRootLogger();
  root->removeAppender(log4cxx::AppenderPtr(appender_));
  root->setLevel(formerLevel_);
}

std::vector<CapturedLine> LogCapture::lines() const {
  const std::lock_guard lock(store_->mutex);
  return store_->lines;
}

std::vector<std::string> LogCapture::messages(const std::string& logger) const {
  std::vector<std::string> found;
  for (const CapturedLine& line : lines())
    if (logger.empty() || line.logger == logger) found.push_back(line.message);
  return found;
}

int LogCapture::count(const std::string& logger, const std::string& level,
                      const std::string& text) const {
  const std::string wanted = message(logger, level, text);
  const std::vector<CapturedLine> all = lines();
  return static_cast<int>(std::count_if(all.begin(), all.end(), [&](const CapturedLine& line) {
    return line.logger == logger && line.level == level && line.message == wanted;
  }));
}

int LogCapture::countContaining(const std::string& part) const {
  const std::vector<CapturedLine> all = lines();
  return static_cast<int>(std::count_if(all.begin(), all.end(), [&](const CapturedLine& line) {
    return line.message.find(part) != std::string::npos;
  }));
}

void LogCapture::clear() {
  const std::lock_guard lock(store_->mutex);
  store_->lines.clear();
}

void LogCapture::onLine(std::function<void(const CapturedLine&)> hook) {
  const std::lock_guard lock(store_->mutex);
  store_->hook = std::move(hook);
}

std::string LogCapture::message(const std::string& logger, const std::string& level,
                                const std::string& text) {
  std::string prefix = "[" + level;
  prefix.resize(6, ' ');
  return prefix + "] " + logger + " " + text;
}

}  // namespace orvane::support
