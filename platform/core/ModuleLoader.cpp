#include "platform/core/ModuleLoader.h"

#include <dlfcn.h>

#include <QFile>
#include <QString>

#include "shared/TextCodec.h"

namespace orvane::detail {
namespace {

/// The last failure of the dynamic linker, GBK and never empty.
std::string lastError() {
  const char* text = dlerror();
  return utf8ToGbk(text != nullptr ? text : "unknown error of the dynamic linker");
}

}  // namespace

std::string ModuleLoader::load(const std::wstring& path) {
  const QByteArray name = QFile::encodeName(QString::fromStdWString(path));
  // An empty name would open the program itself.
  if (name.isEmpty()) return "empty module path";
  module_ = dlopen(name.constData(), RTLD_NOW | RTLD_LOCAL);
  return module_ == nullptr ? lastError() : std::string();
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
