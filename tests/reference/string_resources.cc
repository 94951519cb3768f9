// The examples of <korvan/string_resources.h>.
#include "reference/reference.h"

int main() {
  char text[256] = {};
  assert(LoadString_korvan(nullptr, 8048, text, 255) == 11);
  assert(std::strcmp(text, "Common Name") == 0);
}
