#include "platform/core/ModuleLoader.h"

#include <dlfcn.h>

#include <QFile>
#include <QString>

#include "shared/InterfaceVersion.h"
#include "shared/TextCodec.h"

namespace orvane::detail {
namespace {

/// The last failure of the dynamic linker, GBK and never empty.
std::string lastError() {
  const char* text = dlerror();
  return utf8ToGbk(text != nullptr ? text : "unknown error of the dynamic linker");
}

}  // namespace

std::string interfaceFault(void* module) {
  void* const found = dlsym(module, kInterfaceVersionName);
  if (found == nullptr) return {};
  const int version = reinterpret_cast<InterfaceVersionFunction>(found)();
  if (version == kInterfaceVersion) return {};
  return "was built for version " + std::to_string(version) +
         " of the interfaces, and here they have version " + std::to_string(kInterfaceVersion);
}

std::string ModuleLoader::load(const std::wstring& path) {
  const QByteArray name = QFile::encodeName(QString::fromStdWString(path));
  // An empty name would open the program itself.
  if (name.isEmpty()) return "empty module path";
  module_ = dlopen(name.constData(), RTLD_NOW | RTLD_LOCAL);
  if (module_ == nullptr) return lastError();
  const std::string fault = interfaceFault(module_);
  if (fault.empty()) return {};
  dlclose(std::exchange(module_, nullptr));
  return "the module " + fault;
}

std::string ModuleLoader::find(const std::string& symbol, void*& address) {
  if (module_ == nullptr) return "no module is loaded";
  dlerror();
  void* const found = dlsym(module_, symbol.c_str());
  if (found == nullptr) return lastError();
  address = hook_ ? hook_(symbol, found) : found;
  return {};
}

}  // namespace orvane::detail
