// What the way back from a blob looks at, and what it passes over.
#include <korvan/korvan.h>
#include <korvan/platform/last_error.h>

#include <cstdio>
#include <cstdlib>

// Asks for the sizes of the parts alone.
static void Show(const char* what, const unsigned char* blob,
                 unsigned int size) {
  unsigned int key = 0;
  unsigned int parameters = 0;
  if (korvan::KRVEncodePublicKeyAndParametrs(
          0, nullptr, blob, size, 0, 0, nullptr, &key, nullptr, &parameters)) {
    std::printf("%s: %u of key, %u of parameters\n", what, key, parameters);
  } else {
    std::printf("%s: last error 0x%X\n", what, GetLastError());
  }
}

int main() {
  unsigned char blob[16 + 8 + 64] = {0x06, 0x20, 0,    0,    0x23, 0x2E, 0, 0,
                                     0x4D, 0x41, 0x47, 0x31, 0x00, 0x02, 0, 0};
  Show("64 bytes of key behind 8", blob, sizeof(blob));
  blob[0] = 0x77;
  blob[1] = 0x77;
  blob[8] = 'X';
  Show("another type, version and magic", blob, sizeof(blob));
  blob[12] = 0x07;
  Show("519 bits", blob, sizeof(blob));
  blob[13] = 0;
  Show("7 bits", blob, sizeof(blob));
  Show("no key", blob, 15);
  Show("no bytes", blob, 0);

  // An output pointer that is not null on entry is freed: call by call it
  // holds one buffer.
  unsigned char* key = nullptr;
  unsigned int key_size = 0;
  unsigned int parameters_size = 0;
  int calls = 0;
  while (calls < 3 && korvan::KRVEncodePublicKeyAndParametrs(
                          0, nullptr, blob, sizeof(blob), 0, 0, &key, &key_size,
                          nullptr, &parameters_size)) {
    ++calls;
  }
  std::printf("%d calls, one buffer to free\n", calls);
  std::free(key);
  return std::fflush(stdout) == 0 ? 0 : 1;
}
// It prints:
// 64 bytes of key behind 8: 66 of key, 8 of parameters
// another type, version and magic: 66 of key, 8 of parameters
// 519 bits: 66 of key, 8 of parameters
// 7 bits: 2 of key, 72 of parameters
// no key: last error 0x80090003
// no bytes: last error 0x57
// 3 calls, one buffer to free
