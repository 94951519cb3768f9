// Hash codes of the four kinds of keys that callers search by: 64 bits that are
// equal for equal keys and almost always differ for others. They are computed
// alike by the compiler, for the index, and by a search.
#ifndef KORVAN_OID_HASH_CODES_H_
#define KORVAN_OID_HASH_CODES_H_

#include <korvan/cryptoapi.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "oid/rows.h"

namespace korvan::oid {

using HashCode = std::uint64_t;

// 2^64 divided by the golden ratio: a product with it, or with an odd multiple
// of it, spreads close numbers over all 64 bits.
inline constexpr HashCode kMixer = 0x9E3779B97F4A7C15;

// The characters from `text` on as one number, as they lie in memory.
template <class Word>
constexpr std::uint64_t WordAt(const char* text) {
  std::array<char, sizeof(Word)> characters;
  std::copy_n(text, sizeof(Word), characters.begin());
  return std::bit_cast<Word>(characters);
}

inline constexpr auto kOidLengthOf = [](const Row& row) {
  return row.oid.size();
};
inline constexpr std::size_t kShortestOid =
    std::ranges::min(OfEachRow<std::size_t>(kOidLengthOf));
inline constexpr std::size_t kLongestOid =
    std::ranges::max(OfEachRow<std::size_t>(kOidLengthOf));

// An OID as four words, which overlap where it is short. It is compared and
// hashed without a loop, whose end the processor would have to guess.
struct OidWords {
  std::uint64_t first, second, third, last;

  constexpr bool operator==(const OidWords& other) const {
    return ((first ^ other.first) | (second ^ other.second) |
            (third ^ other.third) | (last ^ other.last)) == 0;
  }
};

// `length` is kShortestOid or more. Nothing behind it is read; up to 32
// characters, all are.
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

constexpr HashCode OidHashCode(const OidWords& words, std::size_t length) {
  return length + words.first * kMixer + words.second * (kMixer * 3) +
         words.third * (kMixer * 5) + words.last * (kMixer * 7);
}

inline constexpr auto kNameLengthOf = [](const Row& row) {
  return row.name.text.size();
};
inline constexpr std::size_t kLongestName =
    std::ranges::max(OfEachRow<std::size_t>(kNameLengthOf));

// The hash code of a name of `length` characters, narrow or wide. Bit 0x20
// counts as set in every character, so names that differ in the case of ASCII
// letters have one code. A name with other than ASCII characters has none:
// only the locale knows their case.
template <class Name>
constexpr std::optional<HashCode> NameHashCode(const Name& name,
                                               std::size_t length) {
  // Two characters are taken at once, each in one half of 64 bits.
  constexpr std::uint64_t kCaseBits = 0x20'0000'0020;
  constexpr std::uint64_t kAsciiBits = 0x7F'0000'007F;
  const auto character = [&](std::size_t i) {
    return std::uint64_t{static_cast<std::uint32_t>(name[i])};
  };
  HashCode code = length;
  HashCode multiplier = kMixer;
  std::uint64_t bits = 0;
  const auto add = [&](std::uint64_t pair) {
    bits |= pair;
    code += (pair | kCaseBits) * multiplier;
    multiplier += 2 * kMixer;
  };
  std::size_t i = 0;
  for (; i + 1 < length; i += 2) {
    add(character(i) | character(i + 1) << 32);
  }
  if (i < length) {
    add(character(i));
  }
  if ((bits & ~kAsciiBits) != 0) {
    return std::nullopt;
  }
  return code;
}

constexpr HashCode AlgidHashCode(ALG_ID algid) { return algid; }

constexpr HashCode PairHashCode(ALG_ID algid, ALG_ID second_algid) {
  return HashCode{algid} << 32 | second_algid;
}

// Other codes would do as long as they spread the keys as well, so what they
// are is written down: no change of them is by chance.
static_assert(OidHashCode(WordsOf("2.5.4.3", 7), 7) == 0xFA22A1B12746B173);
static_assert(OidHashCode(WordsOf("2.5.29.1", 8), 8) == 0x9EEC0EBB531021A8);
static_assert(OidHashCode(WordsOf("1.2.840.113549.1.9.16.3.6", 25), 25) ==
              0x2948DBA406737FC6);
static_assert(NameHashCode("RSA", 3) == 0x3827D7C560D64D3C);
static_assert(NameHashCode("sha256", 6) == 0x3FDE0830A43B3B11);
static_assert(AlgidHashCode(0x8004) == 0x8004);
static_assert(PairHashCode(0x8004, 0x2E00) == 0x8004'0000'2E00);

}  // namespace korvan::oid

#endif  // KORVAN_OID_HASH_CODES_H_
