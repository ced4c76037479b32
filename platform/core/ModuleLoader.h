#pragma once

#include <functional>
#include <string>
#include <utility>

#include "services/Common/DllLoader.h"

namespace orvane::detail {

/// Opens shared objects, at once and with their symbols kept to themselves. A module that was
/// opened stays for the life of the process: threads may still be inside its code.
class ModuleLoader final : public IModuleLoader {
 public:
  using Hook = std::function<void*(const std::string& symbol, void* address)>;

  explicit ModuleLoader(Hook hook) : hook_(std::move(hook)) {}

  std::string load(const std::wstring& path) override;
  std::string find(const std::string& symbol, void*& address) override;

 private:
  Hook hook_;
  void* module_ = nullptr;
};

}  // namespace orvane::detail
