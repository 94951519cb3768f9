#ifndef KORVAN_OID_ROWS_H_
#define KORVAN_OID_ROWS_H_

#include <korvan/cryptoapi.h>
#include <korvan/oid_info.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string_view>

// The registry's rows as plain constants, for the compiler to check and to
// compute indexes from. The records that callers get are laid down from the
// same pages in registry.cc.

namespace korvan::oid {

// A name as its row states it: a literal, or a number of the string table with
// the text that it yields.
struct RowName {
  std::uint16_t id = 0;
  bool missing = false;
  std::string_view text = {};
  std::wstring_view literal = {};

  constexpr std::size_t size() const { return text.size() + literal.size(); }
  constexpr wchar_t operator[](std::size_t i) const {
    return literal.empty() ? static_cast<unsigned char>(text[i]) : literal[i];
  }
};

struct Row {
  DWORD group;
  std::string_view oid;
  RowName name;
  ALG_ID algid;
  ALG_ID second_algid;  // first word of the extra information, or 0
};

constexpr RowName Text(std::uint16_t id, std::string_view text) {
  return {.id = id, .text = text};
}
constexpr RowName MissingText(std::uint16_t id) {
  return {.id = id, .missing = true};
}
constexpr RowName Named(RowName name) { return name; }
constexpr RowName Named(std::wstring_view literal) {
  return {.literal = literal};
}

constexpr DWORD FirstWord(DWORD first = 0, DWORD = 0, DWORD = 0) {
  return first;
}

inline constexpr Row kRows[] = {
#define RES(number, text) Text(number, text)
#define MISSING(number) MissingText(number)
#define EXTRA(...) FirstWord(__VA_ARGS__)
#define RECORD(group, oid, name, algid, extra, cng, cng_extra, mark) \
  {group, oid, Named(name), algid, extra},
#include "oid/tables/registry.inc"
#undef RECORD
#undef EXTRA
#undef MISSING
#undef RES
};

using RowNumber = std::uint16_t;
inline constexpr RowNumber kRowCount = 259;
inline constexpr RowNumber kNoRow = 0xFFFF;
static_assert(std::size(kRows) == kRowCount);

// Rows `begin` up to but not including `end`.
struct Range {
  constexpr int size() const { return static_cast<int>(end - begin); }

  std::uint32_t begin;
  std::uint32_t end;
};

inline constexpr Range kWholeRegistry = {0, kRowCount};

struct Group {
  DWORD id;
  Range rows;
};

// The groups in the order in which they are searched.
inline constexpr Group kGroups[] = {
    {CRYPT_HASH_ALG_OID_GROUP_ID, {0, 11}},
    {CRYPT_ENCRYPT_ALG_OID_GROUP_ID, {11, 27}},
    {CRYPT_PUBKEY_ALG_OID_GROUP_ID, {27, 45}},
    {CRYPT_SIGN_ALG_OID_GROUP_ID, {45, 64}},
    {CRYPT_RDN_ATTR_OID_GROUP_ID, {64, 99}},
    {CRYPT_EXT_OR_ATTR_OID_GROUP_ID, {99, 213}},
    {CRYPT_ENHKEY_USAGE_OID_GROUP_ID, {213, 247}},
    {CRYPT_POLICY_OID_GROUP_ID, {247, 248}},
    {PARAMSET_OID_GROUP_ID, {248, 259}},
};
inline constexpr std::size_t kGroupCount = std::size(kGroups);

static_assert(std::ranges::all_of(kGroups, [](const Group& group) {
  return std::count_if(kRows + group.rows.begin, kRows + group.rows.end,
                       [&](const Row& row) { return row.group == group.id; }) ==
         group.rows.size();
}));
static_assert(kGroups[0].rows.begin == 0 &&
              std::ranges::adjacent_find(kGroups,
                                         [](const Group& group,
                                            const Group& next) {
                                           return group.rows.end !=
                                                  next.rows.begin;
                                         }) == std::end(kGroups) &&
              kGroups[kGroupCount - 1].rows.end == kRowCount);

constexpr bool IsDottedOid(std::string_view oid) {
  return !oid.empty() && oid.front() != '.' && oid.back() != '.' &&
         oid.find_first_not_of("0123456789.") == oid.npos;
}
static_assert(std::ranges::all_of(kRows, IsDottedOid, &Row::oid));

// The loader reads a text into 256 bytes and takes it for ASCII.
constexpr bool IsShortAscii(const RowName& name) {
  for (std::size_t i = 0; i < name.size(); ++i) {
    if (name[i] < 0x20 || name[i] > 0x7E) return false;
  }
  return name.size() <= 255;
}
static_assert(std::ranges::all_of(kRows, IsShortAscii, &Row::name));
static_assert(std::ranges::all_of(kRows, [](const Row& row) {
  return row.name.missing == (row.name.id != 0 && row.name.size() == 0);
}));

}  // namespace korvan::oid

#endif  // KORVAN_OID_ROWS_H_
