#pragma once

#include <clocale>

namespace orvane {

/// While it lives, the thread that made it takes characters as UTF-8 has them, whatever locale the
/// process has, which is left alone. Where the system has no such locale, nothing is changed.
class FixedLocale {
 public:
  FixedLocale() : former_(uselocale(shared())) {}
  ~FixedLocale() { uselocale(former_); }
  FixedLocale(const FixedLocale&) = delete;
  FixedLocale& operator=(const FixedLocale&) = delete;

 private:
  static locale_t shared() {
    static const locale_t made = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    return made;  // Null asks for the present one only.
  }

  locale_t former_;
};

}  // namespace orvane
