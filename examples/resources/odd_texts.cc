// What the string table does that a caller might not expect.
#include <korvan/korvan.h>
#include <korvan/platform/last_error.h>

#include <cstdio>
#include <cstring>

// Prints what is in a buffer of 32 times "#" after a call for a text.
static void Show(unsigned int number, int size) {
  char buffer[33] = {};
  std::memset(buffer, '#', 32);
  const int copied = LoadString_korvan(nullptr, number, buffer, size);
  if (buffer[0] == '\0') {
    buffer[0] = '0';  // to be seen
  }
  std::printf("text %u, size %d: %d, %s\n", number, size, copied, buffer);
}

int main() {
  Show(8048, 32);  // no terminator
  Show(8048, 6);   // cut, and no terminator
  Show(8048, 0);   // nothing asked for, and no error
  Show(8048, -1);  // no limit
  Show(8023, 32);  // spelled as it is known
  Show(4, 0);      // no such text: a 0, in a buffer of no bytes
  std::printf("last error %u\n", GetLastError());
  return std::fflush(stdout) == 0 ? 0 : 1;
}
// It prints:
// text 8048, size 32: 11, Common Name#####################
// text 8048, size 6: 6, Common##########################
// text 8048, size 0: 0, ################################
// text 8048, size -1: 11, Common Name#####################
// text 8023, size 32: 21, Unstructured Addresss###########
// text 4, size 0: 0, 0###############################
// last error 87
