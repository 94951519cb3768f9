// Loads any characters into a wide document and compares with the plain model.
#include <korvan/ini_file.h>

#include <clocale>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>

#include "ini/compare_with_plain.h"

// A byte of ASCII stands for itself, the others for characters that the ASCII
// ones are not: letters with two cases, the character that equals the end of
// text, and the highest.
static wchar_t CharacterOf(std::uint8_t byte) {
  constexpr wchar_t kOthers[] = {0x416, 0x436, 0x130, 0x131,   -1,
                                 0xE9,  0xC9,  0x85,  0x10FFFF};
  return byte < 0x80 ? wchar_t{byte} : kOthers[byte % std::size(kOthers)];
}

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  std::setlocale(LC_ALL, "C.UTF-8");
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data,
                                      std::size_t size) {
  if (size != 0) {
    std::wstring text;
    for (const std::uint8_t* byte = data + 1; byte != data + size; ++byte) {
      text += CharacterOf(*byte);
    }
    LoadSaveLoad<korvan::CIniFileW>(data[0], text);
  }
  return 0;
}
