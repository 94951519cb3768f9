// A program of the outer project that uses both libraries of korvan.
#include <korvan/korvan.h>
#include <korvan/platform/last_error.h>

#include <cstdio>

const char* PlatformName();

int main() {
  char missing[1] = {};
  const bool fails = LoadString_korvan(nullptr, 4, missing, 1) == 0 &&
                     GetLastError() == ERROR_INVALID_PARAMETER;
  return fails && std::puts(PlatformName()) >= 0 && std::fflush(stdout) == 0
             ? 0
             : 1;
}
