#include <korvan/cryptoapi.h>
#include <korvan/platform/last_error.h>
#include <korvan/string_resources.h>

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "resources/texts.h"

namespace {

// Copies `length` bytes, twice `kBlock` at most and `kBlock` at least.
template <std::size_t kBlock>
void CopyBothEnds(char* to, const char* from, std::size_t length) {
  std::memcpy(to, from, kBlock);
  std::memcpy(to + length - kBlock, from + length - kBlock, kBlock);
}

// Copies `length` bytes, 64 at most. For so few, knowing how few, GCC puts a
// string instruction in memcpy's place that takes three times as long.
void CopyShort(char* to, const char* from, std::size_t length) {
  static_assert(sizeof(korvan::resources::Text::characters) <= 64);
  if (length >= 32) return CopyBothEnds<32>(to, from, length);
  if (length >= 16) return CopyBothEnds<16>(to, from, length);
  if (length >= 8) return CopyBothEnds<8>(to, from, length);
  if (length >= 4) return CopyBothEnds<4>(to, from, length);
  for (std::size_t i = 0; i < length; ++i) to[i] = from[i];
}

}  // namespace

int LoadString_korvan(void* /*hModule*/, unsigned int uID, char* lpBuffer,
                      int cchBufferMax) {
  if (lpBuffer == nullptr) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return 0;
  }
  const korvan::resources::Text* const found = korvan::resources::FindText(uID);
  if (found == nullptr) {
    SetLastError(ERROR_INVALID_PARAMETER);
    lpBuffer[0] = '\0';
    return 0;
  }
  // A negative size becomes the largest there is, and cuts nothing.
  const std::size_t length = std::min<std::size_t>(
      found->length, static_cast<std::size_t>(cchBufferMax));
  CopyShort(lpBuffer, found->characters, length);
  return static_cast<int>(length);
}
