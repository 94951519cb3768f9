// The output buffers of the key conversions: allocated with `malloc`, owned by
// the caller, and freed by `free` or by passing their pointer in again.
#ifndef KORVAN_PUBKEY_OUTPUT_BUFFER_H_
#define KORVAN_PUBKEY_OUTPUT_BUFFER_H_

#include <korvan/cryptoapi.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <span>

#include "pubkey/failure.h"

namespace korvan::pubkey {

using ByteView = std::span<const unsigned char>;

// Frees the buffer that an earlier call left in the caller's pointer.
inline void FreeEarlierBuffer(unsigned char*& buffer) {
  if (buffer != nullptr) {
    std::free(buffer);
    buffer = nullptr;
  }
}

// Stores a new buffer of exactly `size` bytes in the caller's pointer. When
// allocation fails, stores null, sets the last error and returns false.
inline bool Allocate(unsigned char*& buffer, std::size_t size) {
  buffer = static_cast<unsigned char*>(std::malloc(size));
  if (buffer == nullptr) {
    Fail(NTE_NO_MEMORY);
  }
  return buffer != nullptr;
}

// Copies `count` bytes and returns where the next ones go. `bytes` may be null
// if `count` is 0, which memcpy does not allow.
inline unsigned char* Append(unsigned char* to, const void* bytes,
                             unsigned int count) {
  if (count != 0) {
    std::memcpy(to, bytes, count);
  }
  return to + count;
}

// Stores a copy of `bytes` in the caller's pointer, as `Allocate` does.
inline bool AllocateCopy(unsigned char*& buffer, ByteView bytes) {
  if (!Allocate(buffer, bytes.size())) {
    return false;
  }
  Append(buffer, bytes.data(), static_cast<unsigned int>(bytes.size()));
  return true;
}

}  // namespace korvan::pubkey

#endif  // KORVAN_PUBKEY_OUTPUT_BUFFER_H_
