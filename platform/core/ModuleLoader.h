#pragma once

#include <functional>
#include <string>
#include <utility>

#include "services/Common/DllLoader.h"

namespace orvane::detail {

/// Why an opened module does not fit the interfaces of this process; empty if it does. ASCII; goes
/// on after "the module ".
std::string interfaceFault(void* module);

/// Opens shared objects, at once and with their symbols kept to themselves. A module that was
/// opened stays for the life of the process: threads may still be inside its code. One that was
/// built for another version of the interfaces is refused.
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
