// A program whose host declares CryptoAPI itself: the library's headers must
// compile on the host's declarations, macros among them.

#include "headers/host_cryptoapi.h"

#define KORVAN_HOST_CRYPTOAPI
#include <korvan/korvan.h>
