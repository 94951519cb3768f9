/// @file
/// The calling thread's last-error code, as CryptoAPI functions report it.
///
/// A host process that emulates the Windows API has its own definitions of
/// these two functions. The platform library has some for processes that have
/// none. Neither is `noexcept`: a host's own may throw.
///
/// The code is a thread-local variable. Where the platform library came in by
/// `dlopen`, the C library allocates it at its first use in a thread, and ENDS
/// THE PROCESS WHERE IT CAN'T. Where that matters, link the program with the
/// platform library, or let each thread call `SetLastError` once while there is
/// memory.
#ifndef KORVAN_PLATFORM_LAST_ERROR_H_
#define KORVAN_PLATFORM_LAST_ERROR_H_

#include <korvan/export.h>

extern "C" {

/// Sets the calling thread's last-error code.
///
///     SetLastError(ERROR_INVALID_PARAMETER);
///     assert(GetLastError() == 87);
///
/// @param code  the code, one of the published error values; any is taken.
/// @errors{None.}
/// @ownership{Each thread has a code of its own, 0 until it is first set.}
/// @threads{Any thread at any time.}
/// @exceptions{None. A host's own may throw.}
KORVAN_API void SetLastError(unsigned int code);

/// Returns the calling thread's last-error code.
///
///     char text[8];
///     if (LoadString_korvan(nullptr, 0, text, 8) == 0) {
///       assert(GetLastError() == ERROR_INVALID_PARAMETER);
///     }
///
/// @return the code that this thread set last; 0 when it has set none. Reading
///         does not reset it.
/// @errors{None.}
/// @ownership{As for `SetLastError`.}
/// @threads{Any thread at any time.}
/// @exceptions{None. A host's own may throw.}
KORVAN_API unsigned int GetLastError();
}

#endif  // KORVAN_PLATFORM_LAST_ERROR_H_
