#include "tests/support/FakeModuleLoader.h"

#include <utility>

#include "shared/TextCodec.h"

namespace orvane::support {
namespace {

// "createStrategy" takes no argument, so what it stands for travels beside the call: a loader's
// user calls the address on the thread that looked it up.
thread_local ModuleShelf::Create created;

IStrategy* createFound() { return created(); }

}  // namespace

/// One loader over the shelf.
class FakeModuleLoader final : public IModuleLoader {
 public:
  explicit FakeModuleLoader(ModuleShelf& shelf) : shelf_(shelf) {}
  ~FakeModuleLoader() override { shelf_.calls_.record("module.gone"); }

  std::string load(const std::wstring& path) override {
    shelf_.calls_.record("module.load", gbkToUtf8(wideToGbk(path)));
    const std::lock_guard lock(shelf_.mutex_);
    const auto it = shelf_.modules_.find(path);
    if (it == shelf_.modules_.end()) return "no such module";
    module_ = it->second;
    return module_.loadError;
  }

  std::string find(const std::string& symbol, void*& address) override {
    shelf_.calls_.record("module.find", symbol);
    if (!module_.findError.empty()) return module_.findError;
    created = module_.create;
    address = reinterpret_cast<void*>(&createFound);
    return {};
  }

 private:
  ModuleShelf& shelf_;
  ModuleShelf::Module module_;
};

void ModuleShelf::put(const std::string& path, Create create) {
  const std::lock_guard lock(mutex_);
  modules_[gbkToWide(path)] = {std::move(create), {}, {}};
}

void ModuleShelf::putBroken(const std::string& path, const std::string& error) {
  const std::lock_guard lock(mutex_);
  modules_[gbkToWide(path)] = {{}, error, {}};
}

void ModuleShelf::putWithoutExport(const std::string& path, const std::string& error) {
  const std::lock_guard lock(mutex_);
  modules_[gbkToWide(path)] = {{}, {}, error};
}

std::unique_ptr<IModuleLoader> ModuleShelf::createLoader() {
  return std::make_unique<FakeModuleLoader>(*this);
}

}  // namespace orvane::support
