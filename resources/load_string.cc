// LoadString_korvan: a text of the string table, copied for the caller.
#include <korvan/cryptoapi.h>
#include <korvan/platform/last_error.h>
#include <korvan/string_resources.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string_view>

#include "resources/texts.h"

namespace {

void CopyShort(char* to, const char* from, std::size_t length);

}  // namespace

int LoadString_korvan(void* /*hModule*/, unsigned int uID, char* lpBuffer,
                      int cchBufferMax) {
  namespace resources = korvan::resources;
  if (lpBuffer == nullptr) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return 0;
  }
  const resources::TextRowNumber row = resources::FindTextRow(uID);
  if (row == resources::kNoTextRow) {
    SetLastError(ERROR_INVALID_PARAMETER);
    lpBuffer[0] = '\0';
    return 0;
  }
  // A negative size becomes a huge one and cuts nothing.
  const std::string_view text = resources::kTextRows[row].Text();
  const std::size_t length =
      std::min(text.size(), static_cast<std::size_t>(cchBufferMax));
  CopyShort(lpBuffer, text.data(), length);
  return static_cast<int>(length);
}

namespace {

// Copies `length` bytes, kBlock at least and twice kBlock at most, as two
// blocks that overlap where there are fewer than two.
template <std::size_t kBlock>
void CopyBothEnds(char* to, const char* from, std::size_t length) {
  std::memcpy(to, from, kBlock);
  std::memcpy(to + length - kBlock, from + length - kBlock, kBlock);
}

// Copies at most 64 bytes. Where GCC knows that a memcpy copies so few, it
// writes a string instruction, which takes three times as long.
void CopyShort(char* to, const char* from, std::size_t length) {
  static_assert(sizeof(korvan::resources::TextRow::characters) <= 64);
  if (length >= 32) {
    CopyBothEnds<32>(to, from, length);
  } else if (length >= 16) {
    CopyBothEnds<16>(to, from, length);
  } else if (length >= 8) {
    CopyBothEnds<8>(to, from, length);
  } else if (length >= 4) {
    CopyBothEnds<4>(to, from, length);
  } else {
    std::copy_n(from, length, to);
  }
}

}  // namespace
