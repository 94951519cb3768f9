#include <korvan/cryptoapi.h>
#include <korvan/platform/last_error.h>
#include <korvan/string_resources.h>

#include <cstddef>

#include "resources/texts.h"

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
  return static_cast<int>(
      found->view().copy(lpBuffer, static_cast<std::size_t>(cchBufferMax)));
}
