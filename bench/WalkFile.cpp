#include "bench/WalkFile.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>
#include <system_error>

namespace orvane::bench {

const std::string& WalkFile::path() {
  static const WalkFile file;
  return file.path_;
}

WalkFile::WalkFile() {
  std::string name = (std::filesystem::temp_directory_path() / "orvane-bench-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no folder for the bench");
  folder_ = name;
  path_ = (folder_ / "walk_1min.csv").string();
  std::mt19937_64 random(7);
  const auto step = [&random](int most) {
    return static_cast<std::int64_t>(random() % static_cast<std::uint64_t>(2 * most + 1)) - most;
  };
  const std::chrono::sys_seconds begin =
      std::chrono::sys_days(std::chrono::year(2020) / std::chrono::January / 1);
  std::string text = "time,open,high,low,close,volume\n";
  std::int64_t cents = 100'000;
  for (std::size_t i = 0; i < kRows; ++i) {
    const auto minute = begin + std::chrono::minutes(i);
    const auto day = std::chrono::floor<std::chrono::days>(minute);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss clock(minute - day);
    const std::int64_t open = cents;
    cents = std::max<std::int64_t>(1000, cents + step(80));
    const std::int64_t high = std::max(open, cents) + std::abs(step(20));
    const std::int64_t low = std::min(open, cents) - std::abs(step(20));
    fmt::format_to(
        std::back_inserter(text), "{}-{:02}-{:02} {:02}:{:02}:00,{:.2f},{:.2f},{:.2f},{:.2f},{}\n",
        int(date.year()), unsigned(date.month()), unsigned(date.day()), clock.hours().count(),
        clock.minutes().count(), static_cast<double>(open) / 100, static_cast<double>(high) / 100,
        static_cast<double>(low) / 100, static_cast<double>(cents) / 100, 1 + random() % 100);
  }
  std::ofstream(path_, std::ios::binary) << text;
}

WalkFile::~WalkFile() {
  std::error_code ignored;
  std::filesystem::remove_all(folder_, ignored);
}

}  // namespace orvane::bench
