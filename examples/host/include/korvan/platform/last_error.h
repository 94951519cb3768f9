// This host's last-error code, one for each thread.
#ifndef HOST_LAST_ERROR_H_
#define HOST_LAST_ERROR_H_

extern "C" void SetLastError(unsigned int code);
extern "C" unsigned int GetLastError();

#endif  // HOST_LAST_ERROR_H_
