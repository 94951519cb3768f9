#ifndef KORVAN_OID_KEYS_H_
#define KORVAN_OID_KEYS_H_

#include <korvan/cryptoapi.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <ranges>

#include "oid/rows.h"

// Search keys of every kind as 64 well-mixed bits. Equal keys give equal bits;
// different keys may do so too.

namespace korvan::oid {

inline constexpr std::uint64_t kMixer =
    0x9E3779B97F4A7C15;  // 2^64 / golden ratio

// A product spreads bits upwards only, so the upper half is folded in first.
constexpr std::uint64_t Mixed(std::uint64_t mixed, std::uint64_t word) {
  mixed ^= word;
  return (mixed ^ mixed >> 32) * kMixer;
}

// The characters from `text` on as one little-endian number.
template <class Word>
constexpr std::uint64_t WordAt(const char* text) {
  Word word = 0;
  for (std::size_t i = 0; i < sizeof(Word); ++i) {
    word |= static_cast<Word>(static_cast<unsigned char>(text[i])) << (8 * i);
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
static_assert(kShortestOid >= sizeof(std::uint32_t));

// The key of an OID of `length` characters, from kShortestOid to kLongestOid.
// The last word overlaps the one before it.
constexpr std::uint64_t OidKey(const char* oid, std::size_t length) {
  constexpr std::size_t kWord = sizeof(std::uint64_t);
  if (length < kWord) {
    return Mixed(Mixed(length, WordAt<std::uint32_t>(oid)),
                 WordAt<std::uint32_t>(oid + length - sizeof(std::uint32_t)));
  }
  std::uint64_t mixed = length;
  for (std::size_t i = 0; i + kWord < length; i += kWord) {
    mixed = Mixed(mixed, WordAt<std::uint64_t>(oid + i));
  }
  return Mixed(mixed, WordAt<std::uint64_t>(oid + length - kWord));
}

inline constexpr std::size_t kLongestName =
    std::ranges::max_element(kRows, {}, [](const Row& row) {
      return row.name.size();
    })->name.size();

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
  std::uint64_t mixed = length;
  std::uint64_t bits = 0;
  std::size_t i = 0;
  for (; i + 1 < length; i += 2) {
    const std::uint64_t pair = character(i) | character(i + 1) << 32;
    bits |= pair;
    mixed = Mixed(mixed, pair | kCaseBits);
  }
  if (i < length) {
    bits |= character(i);
    mixed = Mixed(mixed, character(i) | kCaseBits);
  }
  if ((bits & ~kAsciiBits) != 0) return std::nullopt;
  return mixed;
}

constexpr std::uint64_t AlgidKey(ALG_ID algid) { return Mixed(0, algid); }

constexpr std::uint64_t PairKey(ALG_ID algid, ALG_ID second_algid) {
  return Mixed(0, std::uint64_t{algid} << 32 | second_algid);
}

}  // namespace korvan::oid

#endif  // KORVAN_OID_KEYS_H_
