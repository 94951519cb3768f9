// The last-error code of each thread, for processes whose host has none.
#include <korvan/platform/last_error.h>

namespace {

thread_local unsigned int last_error = 0;

}  // namespace

void SetLastError(unsigned int code) { last_error = code; }

unsigned int GetLastError() { return last_error; }
