// Texts of both widths from the bytes of an input.
#ifndef KORVAN_FUZZ_INI_CHARACTERS_H_
#define KORVAN_FUZZ_INI_CHARACTERS_H_

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string>
#include <string_view>

#include "ini/width.h"

namespace korvan::test {

// Which characters wide texts have. Of the widest, the C library makes no order
// (<korvan/ini_file.h>): where names have some, what a document holds is not
// compared.
enum class Alphabet { kOrdered, kWidest };

// A byte of ASCII stands for itself, the others for characters that the ASCII
// ones are not: letters with two cases, some of them with one in ASCII, the
// character that equals the end of text, and the highest.
inline Char CharacterOf(char byte, Alphabet alphabet) {
  constexpr unsigned kOthers[] = {0x416, 0x436, 0x130,  0x131,    0xE9,
                                  0xC9,  0x85,  0x212A, 0x10FFFF, 0xFFFFFFFF};
  constexpr unsigned kWidest[] = {0x60000000, 0x7FFFFFFF, 0x80000000,
                                  0xC0000000};
  const auto number = static_cast<unsigned char>(byte);
  if (sizeof(Char) == 1 || number < 0x80) {
    return static_cast<Char>(byte);
  }
  if (alphabet == Alphabet::kWidest && number >= 0xF0) {
    return static_cast<Char>(kWidest[number % std::size(kWidest)]);
  }
  return static_cast<Char>(kOthers[number % std::size(kOthers)]);
}

inline String TextOf(std::string_view bytes,
                     Alphabet alphabet = Alphabet::kOrdered) {
  String text(bytes.size(), Char{});
  std::ranges::transform(bytes, text.begin(), [=](char byte) {
    return CharacterOf(byte, alphabet);
  });
  return text;
}

// The bytes, with so many letters in the place of each byte 0x1A: an input of
// some bytes gives long lines.
inline std::string Stretched(std::string_view bytes, std::size_t length) {
  constexpr std::size_t kMost = 600000;
  std::string stretched;
  for (const char byte : bytes) {
    if (byte != '\x1A') {
      stretched += byte;
    } else if (stretched.size() + length < kMost) {
      stretched.append(length, 'x');
    }
  }
  return stretched;
}

}  // namespace korvan::test

#endif  // KORVAN_FUZZ_INI_CHARACTERS_H_
