#include "services/Common/DllLoader.h"

#include "services/IPlatform.h"

namespace orvane {

DllLoader::DllLoader() : loader_(installedPlatform().createModuleLoader()) {}
DllLoader::~DllLoader() = default;

void DllLoader::load(const std::wstring& path) { error_ = loader_->load(path); }

void DllLoader::seekProcAddress(const std::string& symbol) {
  if (error_.empty()) error_ = loader_->find(symbol, address_);
}

bool DllLoader::hasError() const { return !error_.empty(); }

std::string DllLoader::getErrorMsg() const { return error_; }

void* DllLoader::getProcAddress() const { return address_; }

}  // namespace orvane
