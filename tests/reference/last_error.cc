// The examples of <korvan/platform/last_error.h>.
#include "reference/reference.h"

int main() {
  char text[8];
  if (LoadString_korvan(nullptr, 0, text, 8) == 0) {
    assert(GetLastError() == ERROR_INVALID_PARAMETER);
  }

  SetLastError(ERROR_INVALID_PARAMETER);
  assert(GetLastError() == 87);
}
