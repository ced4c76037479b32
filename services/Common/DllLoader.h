#pragma once

#include <memory>
#include <string>

#include "shared/Export.h"

namespace orvane {

/// What a platform supplies behind one `DllLoader`.
class ORVANE_API IModuleLoader {
 public:
  virtual ~IModuleLoader();

  /// Opens the module. Returns an empty text, or what went wrong (GBK).
  virtual std::string load(const std::wstring& path) = 0;

  /// Looks a symbol up in the opened module and sets `address`. Returns an empty text, or what
  /// went wrong (GBK).
  virtual std::string find(const std::string& symbol, void*& address) = 0;
};

/// A loader for one module. A module that was loaded stays in the process when its loader goes.
/// Not for use by two threads at once.
class ORVANE_API DllLoader {
 public:
  DllLoader();
  ~DllLoader();
  DllLoader(const DllLoader&) = delete;
  DllLoader& operator=(const DllLoader&) = delete;

  /// Opens the module. A failure is remembered, not thrown.
  void load(const std::wstring& path);

  /// Looks a symbol up in the opened module. A failure is remembered; after a failed `load` that
  /// failure stays.
  void seekProcAddress(const std::string& symbol);

  /// True if `load` or `seekProcAddress` failed.
  bool hasError() const;

  /// The text of that failure, GBK.
  std::string getErrorMsg() const;

  /// The address that `seekProcAddress` found, else null.
  void* getProcAddress() const;

 private:
  std::unique_ptr<IModuleLoader> loader_;
  std::string error_;
  void* address_ = nullptr;
};

}  // namespace orvane
