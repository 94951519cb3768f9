// Loads any bytes into a narrow document and compares with the plain model.
#include <korvan/ini_file.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "ini/compare_with_plain.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data,
                                      std::size_t size) {
  if (size != 0) {
    LoadSaveLoad<korvan::CIniFileA>(data[0],
                                    std::string(data + 1, data + size));
  }
  return 0;
}
