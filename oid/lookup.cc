// The searches: in the registry by the index, in a caller's own table record by
// record.
#include <korvan/cryptoapi.h>
#include <korvan/oid_info.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <cwchar>
#include <cwctype>
#include <optional>
#include <span>

#include "oid/hash_codes.h"
#include "oid/index.h"
#include "oid/keys.h"
#include "oid/names.h"
#include "oid/registry.h"
#include "oid/rows.h"

namespace korvan {
namespace oid {
namespace {

// Whether the record has the key. If that is a name, the record's is loaded.
bool Matches(COidData& record, OidKey key);
bool Matches(COidData& record, NameKey key);
bool Matches(COidData& record, AlgidKey key);
bool Matches(COidData& record, PairKey key);

// The first record of the registry that has the key, its name loaded, or null.
COidData* FindInRegistry(RowRange rows, DWORD key_type, const void* key);

// The first record of all that has the key, its name loaded, or null: asks one
// after the other.
template <class Key>
COidData* Walk(std::span<COidData> walked, Key key);

constexpr DWORD kHighestGroupId = kGroups.back().id;

// The rows of each group by its id; those of group 0 are all. The ids between
// the last two groups have none.
consteval std::array<RowRange, kHighestGroupId + 1> RowsByGroupId() {
  std::array<RowRange, kHighestGroupId + 1> rows{};
  rows[0] = kWholeRegistry;
  for (const Group& group : kGroups) {
    rows[group.id] = group.rows;
  }
  return rows;
}
constexpr auto kRowsByGroupId = RowsByGroupId();

}  // namespace
}  // namespace oid

COidData* FindOIDInfo(unsigned int dwKeyType, void* pvKey,
                      unsigned int dwGroupId) {
  return FindOIDInfoInternal(dwKeyType, pvKey, dwGroupId);
}

COidData* FindOIDInfoInternal(unsigned int dwKeyType, void* pvKey,
                              unsigned int dwGroupId) {
  const DWORD group = dwGroupId & ~CRYPT_OID_DISABLE_SEARCH_DS_FLAG;
  if (group > oid::kHighestGroupId) {
    return nullptr;
  }
  return oid::FindInRegistry(oid::kRowsByGroupId[group], dwKeyType, pvKey);
}

COidData* FindOIDInfoInternal(const OID_TABLE_INFO& table,
                              unsigned int dwKeyType, void* pvKey) {
  if (table.rgRecords == nullptr || table.cRecords <= 0) {
    return nullptr;
  }
  for (std::size_t i = 0; i < oid::kGroupCount; ++i) {
    if (&table == &oid_registry[i]) {
      return oid::FindInRegistry(oid::kGroups[i].rows, dwKeyType, pvKey);
    }
  }
  return oid::VisitKey(dwKeyType, pvKey, [&](auto key) {
    const auto count = static_cast<std::size_t>(table.cRecords);
    return oid::Walk({table.rgRecords, count}, key);
  });
}

bool MatchOidInfo(COidData& record, unsigned int dwKeyType, void* pvKey) {
  return oid::VisitKey(dwKeyType, pvKey,
                       [&](auto key) { return oid::Matches(record, key); });
}

namespace oid {
namespace {

template <class Key>
COidData* Walk(std::span<COidData> walked, Key key) {
  for (COidData& record : walked) {
    if (Matches(record, key)) {
      return &EnsureLoaded(record);
    }
  }
  return nullptr;
}

// The first of `rows` that the index gives for `code` and that `is_wanted`, its
// name loaded, or null.
template <class AnyIndex, class IsWanted>
COidData* FindByIndex(const AnyIndex& index, HashCode code, RowRange rows,
                      IsWanted is_wanted) {
  for (RowNumber row = index.First(code); row < rows.end;
       row = index.Next(row)) {
    if (row >= rows.begin && is_wanted(row)) {
      return &EnsureLoaded(records[row]);
    }
  }
  return nullptr;
}

bool Matches(COidData& record, OidKey key) {
  return record.pszOID != nullptr && std::strcmp(record.pszOID, key.oid) == 0;
}

// The searches by the four kinds of key are kept apart: put into one function,
// the shortest would set up the stack of the longest.
[[gnu::noinline]] COidData* Find(RowRange rows, OidKey key) {
  const std::size_t length = ::strnlen(key.oid, kLongestOid + 1);
  if (length < kShortestOid) {
    return nullptr;
  }
  const OidWords words = WordsOf(key.oid, length);
  return FindByIndex(kByOid, OidHashCode(words, length), rows,
                     [&](RowNumber row) {
                       return kOidLengths[row] == length &&
                              WordsOf(records[row].pszOID, length) == words;
                     });
}

// Whether wcscasecmp finds the names equal. Equal characters fold alike in
// every locale, so the locale is only asked about others.
bool EqualInAnyCase(const wchar_t* name, const wchar_t* wanted) {
  while (*name == *wanted ||
         std::towlower(static_cast<std::wint_t>(*name)) ==
             std::towlower(static_cast<std::wint_t>(*wanted))) {
    if (*name == L'\0') {
      return true;
    }
    ++name;
    ++wanted;
  }
  return false;
}

bool Matches(COidData& record, NameKey key) {
  const LPCWSTR name = NameOf(EnsureLoaded(record));
  return name != nullptr && EqualInAnyCase(name, key.name);
}

// Walks where the index can't answer: it knows no characters but ASCII, and a
// name on the way that is not indexed may be the wanted one.
[[gnu::noinline]] COidData* Find(RowRange rows, NameKey key) {
  const auto walk = [=] {
    return Walk(std::span(records + rows.begin, records + rows.end), key);
  };
  const std::size_t length = ::wcsnlen(key.name, kLongestName + 1);
  const std::optional<HashCode> code = NameHashCode(key.name, length);
  if (!code) {
    return walk();
  }
  for (RowNumber row = kByName.First(*code); row < rows.end;
       row = kByName.Next(row)) {
    if (row < rows.begin) {
      continue;
    }
    if (!AreIndexed({rows.begin, row + 1})) {
      return walk();
    }
    const LPCWSTR name = NameOf(records[row]);
    if (name != nullptr && kNameLengths[row] == length &&
        (std::wmemcmp(name, key.name, length) == 0 ||
         EqualInAnyCase(name, key.name))) {
      return &records[row];
    }
  }
  return AreIndexed(rows) ? nullptr : walk();
}

bool Matches(COidData& record, AlgidKey key) {
  return record.Algid == key.algid;
}

[[gnu::noinline]] COidData* Find(RowRange rows, AlgidKey key) {
  return FindByIndex(kByAlgid, AlgidHashCode(key.algid), rows,
                     [=](RowNumber row) { return Matches(records[row], key); });
}

// A record without extra information counts as 0 in the second, so that a hash
// or a cipher can be found by a pair.
bool Matches(COidData& record, PairKey key) {
  const CRYPT_DATA_BLOB& extra = record.ExtraInfo;
  const bool has_word =
      extra.pbData != nullptr && extra.cbData >= sizeof(AlgidKey);
  return record.Algid == key.algid &&
         (has_word ? ReadKey<AlgidKey>(extra.pbData).algid : 0) ==
             key.second_algid;
}

[[gnu::noinline]] COidData* Find(RowRange rows, PairKey key) {
  return FindByIndex(kByPair, PairHashCode(key.algid, key.second_algid), rows,
                     [=](RowNumber row) { return Matches(records[row], key); });
}

COidData* FindInRegistry(RowRange rows, DWORD key_type, const void* key) {
  return VisitKey(key_type, key,
                  [=](auto decoded) { return Find(rows, decoded); });
}

}  // namespace
}  // namespace oid
}  // namespace korvan
