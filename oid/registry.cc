// The records that callers get, laid down statically, and oid_registry over
// them. Loading the library registers the cleanup and runs nothing else here.
#include "oid/registry.h"

#include <korvan/oid_info.h>

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "oid/rows.h"
#include "resources/texts.h"

namespace korvan {

// A program may address the fields of a record by offset.
static_assert(std::is_standard_layout_v<COidData>);

namespace oid {
namespace {

constexpr DWORD kMarked = 0x1;

// The words of extra information: read-only, and the same for all rows that
// have the same words.
template <DWORD... words>
struct Extra {
  static constexpr DWORD kWords[] = {words...};
  static constexpr DWORD kSize = sizeof(kWords);
  static constexpr const DWORD* kFirst = kWords;
};
template <>
struct Extra<> {
  static constexpr DWORD kSize = 0;
  static constexpr const DWORD* kFirst = nullptr;
};
static_assert(std::endian::native == std::endian::little,
              "words of extra information lie low byte first");

}  // namespace

// A cast from a number to a pointer is no constant expression, so `constinit`
// can't stand here; in plain rows both compilers lay it down statically. The
// interface keeps numbers in pointers.
// NOLINTBEGIN(performance-no-int-to-ptr)
COidData records[kRowCount] = {
#define NAME(text) L"" text
#define RES(number, text) reinterpret_cast<LPCWSTR>(std::uintptr_t{number})
#define MISSING(number) reinterpret_cast<LPCWSTR>(std::uintptr_t{number})
// clang-format off
#define EXTRA(...) (__VA_ARGS__)
#define BLOB(...)             \
  {Extra<__VA_ARGS__>::kSize, \
   reinterpret_cast<BYTE*>(const_cast<DWORD*>(Extra<__VA_ARGS__>::kFirst))}
#define RECORD(group, oid, name, algid, extra, cng, cng_extra, mark) \
  {sizeof(CRYPT_OID_INFO), oid, name, group, {algid}, BLOB extra,    \
   L"" cng, L"" cng_extra, mark},
// clang-format on
#include "oid/tables/registry.inc"
#undef RECORD
#undef BLOB
#undef EXTRA
#undef MISSING
#undef RES
#undef NAME
};
// NOLINTEND(performance-no-int-to-ptr)

namespace {

// A search by name goes by the names that the rows state, so a row states the
// text that the string table has for its number, and none where it has none.
static_assert(std::ranges::all_of(
    kRows,
    [](const RowName& name) {
      if (name.number == 0) {
        return true;
      }
      const auto row = resources::FindTextRow(name.number);
      return row == resources::kNoTextRow
                 ? name.text.empty()
                 : name.text == resources::kTextRows[row].Text();
    },
    &Row::name));

consteval OID_TABLE_INFO TableOf(const Group& group) {
  const auto [begin, end] = group.rows;
  return {group.id, static_cast<int>(end - begin), records + begin};
}

}  // namespace
}  // namespace oid

constinit const OID_TABLE_INFO oid_registry[9] = {
    oid::TableOf(oid::kGroups[0]), oid::TableOf(oid::kGroups[1]),
    oid::TableOf(oid::kGroups[2]), oid::TableOf(oid::kGroups[3]),
    oid::TableOf(oid::kGroups[4]), oid::TableOf(oid::kGroups[5]),
    oid::TableOf(oid::kGroups[6]), oid::TableOf(oid::kGroups[7]),
    oid::TableOf(oid::kGroups[8]),
};

COidInfoCleanupHelper::~COidInfoCleanupHelper() { CleanupOidInfo(); }

namespace {

constinit COidInfoCleanupHelper cleanup_at_unload;

}  // namespace
}  // namespace korvan
