/// @file
/// The display texts of the provider: 169 ASCII texts, compiled in, each known
/// by a number. The OID registry names many of its records by these numbers.
///
/// A process may define `LoadString_korvan` itself, and the registry then calls
/// that one. SUCH A FUNCTION MUST NOT LOOK NAMES UP IN THE REGISTRY, nor call
/// what does: the lookup would meet a name that is not loaded yet and call the
/// function again, without end.
#ifndef KORVAN_STRING_RESOURCES_H_
#define KORVAN_STRING_RESOURCES_H_

#include <korvan/export.h>

/// Copies the text numbered `uID` into a caller's buffer.
///
/// It NEVER WRITES A TERMINATOR, whether the text fits or is cut. Zero the
/// buffer first and keep one byte back:
///
///     char text[256] = {};
///     assert(LoadString_korvan(nullptr, 8048, text, 255) == 11);
///     assert(std::strcmp(text, "Common Name") == 0);
///
/// @param hModule       ignored; null by custom.
/// @param uID           the text's number.
/// @param lpBuffer      where the text goes; the caller's. Must not be null.
/// @param cchBufferMax  the most bytes to copy. A negative value sets no
///                      limit: then the buffer must hold the whole text. 0
///                      copies nothing and is no error.
/// @return the number of bytes copied: the text's length or `cchBufferMax`,
///         whichever is less; 0 on failure.
/// @par Errors
/// On failure the last error is set to 87, `ERROR_INVALID_PARAMETER`:
///   - `lpBuffer` is null: nothing is written;
///   - no text has the number `uID`: `lpBuffer[0]` becomes 0, EVEN WHERE THE
///     SIZE IS 0.
///
/// Success leaves the last error alone.
/// @ownership{The buffer stays the caller's.}
/// @threads{Any thread at any time.}
/// @par Exceptions
/// What a host's `SetLastError` throws, with nothing written; else none.
KORVAN_API int LoadString_korvan(void* hModule, unsigned int uID,
                                 char* lpBuffer, int cchBufferMax);

#endif  // KORVAN_STRING_RESOURCES_H_
