#pragma once

#include <string>

#include "shared/Export.h"

namespace orvane {

/// Conversions of text between code pages. Any thread may call them.
class ORVANE_API CodeConvert {
 public:
  static std::wstring gbk_to_unicode(const std::string& gbk);
};

}  // namespace orvane
