// A host's own declarations of the last-error functions.
#ifndef HOST_PLATFORM_LAST_ERROR_H_
#define HOST_PLATFORM_LAST_ERROR_H_

// The last-error code of a host process such as the library is loaded into.
extern "C" void SetLastError(unsigned int code);
extern "C" unsigned int GetLastError();

#endif  // HOST_PLATFORM_LAST_ERROR_H_
