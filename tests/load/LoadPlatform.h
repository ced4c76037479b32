#pragma once

#include <QJsonObject>
#include <cstddef>
#include <memory>
#include <string>

#include "EventStrategy/ov.strategy.runner/IRunner.h"
#include "EventStrategy/ov.strategy.runner/IStrategy.h"
#include "platform/EmbeddedPlatform.h"

namespace orvane::load {

/// How much of something a test does: what the environment says, or else `usual`, a tenth of it
/// under a sanitizer.
std::size_t amount(const char* variable, std::size_t usual);

/// Bytes that the process has got from the allocator and not given back; 0 where nobody can tell.
std::size_t usedBytes();

/// The threads of the process.
int threadCount();

/// An installed embedded platform whose strategies come from a function of the test and out of no
/// module; without a function they come from the module.
class LoadPlatform {
 public:
  using Maker = IStrategy* (*)();
  explicit LoadPlatform(Maker maker, PlatformOptions options = {});
  ~LoadPlatform();
  LoadPlatform(const LoadPlatform&) = delete;
  LoadPlatform& operator=(const LoadPlatform&) = delete;

  EmbeddedPlatform* operator->() { return platform_.get(); }

  /// Adds a code of this name with `bars` one-minute bars.
  ICodeID addCode(const std::string& name, std::size_t bars);

  /// Makes a runner on a module that can be opened, under its own name as order source.
  static std::shared_ptr<IRunner> makeRunner(const std::string& name);

  /// The parameters that subscribe the bars of a code, and name an account.
  static QJsonObject paramsOf(const std::string& code, const std::string& account = {});

 private:
  std::unique_ptr<EmbeddedPlatform> platform_;
};

}  // namespace orvane::load
