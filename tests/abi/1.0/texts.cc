// A program compiled with version 1.0 reads texts by their numbers.
#include <korvan/string_resources.h>

#include <cstdio>
#include <cstring>

int main() {
  char text[64] = "";
  if (LoadString_korvan(nullptr, 30, text, sizeof(text) - 1) != 17 ||
      std::strncmp(text, "GOST R 34.10-2001", 17) != 0) {
    std::printf("text 30 is another: %s\n", text);
    return 1;
  }
  if (LoadString_korvan(nullptr, 0xFFFFFFFF, text, 1) != 0) {
    std::puts("a text that is none has a length");
    return 1;
  }
  return 0;
}
