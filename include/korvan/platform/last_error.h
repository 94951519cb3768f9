/// @file
/// The calling thread's last-error code, as CryptoAPI functions report it.
///
/// A host process that emulates the Windows API has its own definitions of
/// these two functions. The platform library has some for processes that have
/// none. Neither is
/// `noexcept`: a host's own may throw.
#ifndef KORVAN_PLATFORM_LAST_ERROR_H_
#define KORVAN_PLATFORM_LAST_ERROR_H_

#include <korvan/export.h>

extern "C" {

/// Sets the calling thread's last-error code.
///
/// @param code  the code, one of the published error values; any is taken.
///
/// Each thread has a code of its own, 0 until it is first set. Any thread may
/// call this at any time; it cannot fail.
KORVAN_API void SetLastError(unsigned int code);

/// Returns the calling thread's last-error code.
///
/// @return the code that this thread set last; 0 when it has set none. Reading
///         does not reset it.
///
/// Any thread may call this at any time; it cannot fail.
KORVAN_API unsigned int GetLastError();
}

#endif  // KORVAN_PLATFORM_LAST_ERROR_H_
