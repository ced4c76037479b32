#include "host/Digest.h"

#include <xxhash.h>

#include <new>

namespace orvane {

Digest::Digest() : state_(XXH3_createState()), buffer_(kBufferBytes) {
  if (state_ == nullptr) throw std::bad_alloc();
  XXH3_128bits_reset(state_);
}

Digest::~Digest() { XXH3_freeState(state_); }

void Digest::spill(const void* bytes, std::size_t count) {
  flush();
  if (count > kBufferBytes) {
    XXH3_128bits_update(state_, bytes, count);
    return;
  }
  std::memcpy(buffer_.data(), bytes, count);
  used_ = count;
}

void Digest::flush() {
  if (used_ != 0) XXH3_128bits_update(state_, buffer_.data(), used_);
  used_ = 0;
}

std::string Digest::text() {
  flush();
  XXH128_canonical_t canonical;
  XXH128_canonicalFromHash(&canonical, XXH3_128bits_digest(state_));
  static constexpr char kDigits[] = "0123456789abcdef";
  std::string result;
  for (const unsigned char byte : canonical.digest) {
    result += kDigits[byte >> 4];
    result += kDigits[byte & 15];
  }
  return result;
}

}  // namespace orvane
