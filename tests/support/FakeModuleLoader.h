#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "services/Common/DllLoader.h"
#include "tests/support/CallLog.h"

namespace orvane {
class IStrategy;
}

namespace orvane::support {

/// The strategy modules of a fake platform: a path names a function of the test's own, or a
/// failure; no file is touched. Notes "module.load", "module.find" and "module.gone" in the call
/// log, paths in UTF-8. Any thread may use it.
class ModuleShelf {
 public:
  using Create = std::function<IStrategy*()>;

  explicit ModuleShelf(CallLog& calls) : calls_(calls) {}

  /// A module whose "createStrategy" is `create`. Paths are GBK, as the library's are.
  void put(const std::string& path, Create create);

  /// A module that cannot be opened, for the reason `error` (GBK). Paths that were never put
  /// fail with "no such module".
  void putBroken(const std::string& path, const std::string& error);

  /// A module that opens but has no "createStrategy".
  void putWithoutExport(const std::string& path, const std::string& error);

  std::unique_ptr<IModuleLoader> createLoader();

 private:
  friend class FakeModuleLoader;

  struct Module {
    Create create;
    std::string loadError;
    std::string findError;
  };

  CallLog& calls_;
  std::mutex mutex_;
  std::map<std::wstring, Module> modules_;
};

}  // namespace orvane::support
