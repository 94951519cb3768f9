// Prints a display text by its number.
#include <korvan/korvan.h>
#include <korvan/platform/last_error.h>

#include <cstdio>

int main() {
  // No terminator is written, so one more byte is there and stays 0.
  char text[256] = {};
  const int length = LoadString_korvan(nullptr, 8048, text, sizeof(text) - 1);
  std::printf("text 8048 has %d characters: %s\n", length, text);

  if (LoadString_korvan(nullptr, 4, text, sizeof(text) - 1) == 0) {
    std::printf("there is no text 4: last error %u\n", GetLastError());
  }
  return std::fflush(stdout) == 0 ? 0 : 1;
}
// It prints:
// text 8048 has 11 characters: Common Name
// there is no text 4: last error 87
