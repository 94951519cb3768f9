// How a key conversion reports that it failed.
#ifndef KORVAN_PUBKEY_FAILURE_H_
#define KORVAN_PUBKEY_FAILURE_H_

#include <korvan/platform/last_error.h>

namespace korvan::pubkey {

// Sets the last error, and returns what a conversion then returns.
inline int Fail(unsigned int code) {
  SetLastError(code);
  return 0;
}

}  // namespace korvan::pubkey

#endif  // KORVAN_PUBKEY_FAILURE_H_
