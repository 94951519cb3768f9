#ifndef KORVAN_OID_KEYS_H_
#define KORVAN_OID_KEYS_H_

#include <korvan/cryptoapi.h>

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <type_traits>

#include "oid/rows.h"

// Search keys of every kind as 64 bits. Equal keys give equal bits; different
// keys may do so too.

namespace korvan::oid {

inline constexpr std::uint64_t kMixer =
    0x9E3779B97F4A7C15;  // 2^64 / golden ratio

// The characters from `text` on as one number, as they lie in memory.
template <class Word>
constexpr std::uint64_t WordAt(const char* text) {
  static_assert(std::endian::native == std::endian::little);
  Word word = 0;
  if (std::is_constant_evaluated()) {
    for (std::size_t i = 0; i < sizeof(Word); ++i) {
      word |= static_cast<Word>(static_cast<unsigned char>(text[i])) << (8 * i);
    }
  } else {
    std::memcpy(&word, text, sizeof word);
  }
  return word;
}

inline constexpr std::size_t kShortestOid =
    std::ranges::min_element(kRows, {}, [](const Row& row) {
      return row.oid.size();
    })->oid.size();
inline constexpr std::size_t kLongestOid =
    std::ranges::max_element(kRows, {}, [](const Row& row) {
      return row.oid.size();
    })->oid.size();

// An OID of `length` characters, kShortestOid or more, as four words that
// overlap where it is shorter: no branch to guess wrong.
struct OidWords {
  std::uint64_t first, second, third, last;

  constexpr bool operator==(const OidWords& other) const {
    return ((first ^ other.first) | (second ^ other.second) |
            (third ^ other.third) | (last ^ other.last)) == 0;
  }
};

constexpr OidWords WordsOf(const char* oid, std::size_t length) {
  constexpr std::size_t kWord = sizeof(std::uint64_t);
  constexpr std::size_t kHalf = sizeof(std::uint32_t);
  static_assert(kShortestOid >= kHalf && kLongestOid <= 4 * kWord);
  if (length < kWord) {
    return {WordAt<std::uint32_t>(oid),
            WordAt<std::uint32_t>(oid + length - kHalf), 0, 0};
  }
  const std::size_t last = length - kWord;
  return {WordAt<std::uint64_t>(oid),
          WordAt<std::uint64_t>(oid + std::min(kWord, last)),
          WordAt<std::uint64_t>(oid + std::min(2 * kWord, last)),
          WordAt<std::uint64_t>(oid + last)};
}

constexpr std::uint64_t OidKey(const OidWords& words, std::size_t length) {
  return length + words.first * kMixer + words.second * (kMixer * 3) +
         words.third * (kMixer * 5) + words.last * (kMixer * 7);
}

inline constexpr std::size_t kLongestName =
    std::ranges::max_element(kRows, {}, [](const Row& row) {
      return row.name.text.size();
    })->name.text.size();

// The key of a name of `length` characters, the same for names that differ in
// the case of ASCII letters only: bit 0x20 counts as set in every character.
// None for a name with other characters, whose case only the locale knows.
template <class Name>
constexpr std::optional<std::uint64_t> NameKey(const Name& name,
                                               std::size_t length) {
  constexpr std::uint64_t kCaseBits = 0x20'0000'0020;
  constexpr std::uint64_t kAsciiBits = 0x7F'0000'007F;
  const auto character = [&](std::size_t i) {
    return std::uint64_t{static_cast<std::uint32_t>(name[i])};
  };
  std::uint64_t key = length;
  std::uint64_t multiplier = kMixer;
  std::uint64_t bits = 0;
  const auto add = [&](std::uint64_t pair) {
    bits |= pair;
    key += (pair | kCaseBits) * multiplier;
    multiplier += 2 * kMixer;
  };
  std::size_t i = 0;
  for (; i + 1 < length; i += 2) add(character(i) | character(i + 1) << 32);
  if (i < length) add(character(i));
  if ((bits & ~kAsciiBits) != 0) return std::nullopt;
  return key;
}

constexpr std::uint64_t AlgidKey(ALG_ID algid) { return algid; }

constexpr std::uint64_t PairKey(ALG_ID algid, ALG_ID second_algid) {
  return std::uint64_t{algid} << 32 | second_algid;
}

}  // namespace korvan::oid

#endif  // KORVAN_OID_KEYS_H_
