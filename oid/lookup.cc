#include <korvan/cryptoapi.h>
#include <korvan/oid_info.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <cwchar>
#include <cwctype>
#include <optional>

#include "oid/hash_codes.h"
#include "oid/index.h"
#include "oid/names.h"
#include "oid/registry.h"
#include "oid/rows.h"

namespace korvan {
namespace oid {
namespace {

constexpr DWORD kHighestGroupId = kGroups.back().id;

// The rows of each group by its id; those of group 0 are all. The ids between
// the last two groups have none.
consteval std::array<RowRange, kHighestGroupId + 1> RowsByGroupId() {
  std::array<RowRange, kHighestGroupId + 1> rows{};
  rows[0] = kWholeRegistry;
  for (const Group& group : kGroups) rows[group.id] = group.rows;
  return rows;
}
constexpr auto kRowsByGroupId = RowsByGroupId();

// What wcscasecmp says of equality. Equal characters fold alike in every
// locale, so the locale is only asked about others.
bool EqualInAnyCase(const wchar_t* name, const wchar_t* wanted) {
  for (;
       *name == *wanted || std::towlower(static_cast<std::wint_t>(*name)) ==
                               std::towlower(static_cast<std::wint_t>(*wanted));
       ++name, ++wanted) {
    if (*name == L'\0') return true;
  }
  return false;
}

bool IsNamed(LPCWSTR name, const wchar_t* wanted) {
  return name != nullptr && EqualInAnyCase(name, wanted);
}

bool HasOid(const COidData& record, const char* oid) {
  return record.pszOID != nullptr && std::strcmp(record.pszOID, oid) == 0;
}

struct AlgidPair {
  ALG_ID first;
  ALG_ID second;
};

// Callers' words may lie anywhere.
template <class Words>
Words Read(const void* place) {
  Words words;
  std::memcpy(&words, place, sizeof words);
  return words;
}

// A record without extra information counts as 0: so a hash or a cipher can be
// asked for as a pair. This is intended.
bool HasPair(const COidData& record, AlgidPair pair) {
  const CRYPT_DATA_BLOB& extra = record.ExtraInfo;
  const bool has_word =
      extra.pbData != nullptr && extra.cbData >= sizeof(DWORD);
  return record.Algid == pair.first &&
         (has_word ? Read<DWORD>(extra.pbData) : 0) == pair.second;
}

// The plain search: record after record, loading names on the way when the key
// is a name. Like every search it hands out a record with its name resolved.
COidData* Walk(COidData* records, int count, unsigned int key_type, void* key) {
  for (COidData* record = records; count > 0; ++record, --count) {
    if (MatchOidInfo(*record, key_type, key)) return &EnsureLoaded(*record);
  }
  return nullptr;
}

// The first of `rows` that the index gives for `key` and that is wanted, or
// null.
template <class AnyIndex, class IsWanted>
COidData* FindIndexed(const AnyIndex& index, std::uint64_t key, RowRange rows,
                      IsWanted is_wanted) {
  for (RowNumber row = index.First(key); row < rows.end;
       row = index.Next(row)) {
    if (row >= rows.begin && is_wanted(row)) return &EnsureLoaded(records[row]);
  }
  return nullptr;
}

// The searches by the four kinds of key are kept apart: put into one function,
// the shortest would set up the stack of the longest.
[[gnu::noinline]] COidData* FindByOid(RowRange rows, const char* oid) {
  const std::size_t length = ::strnlen(oid, kLongestOid + 1);
  if (length < kShortestOid) return nullptr;
  const OidWords words = WordsOf(oid, length);
  return FindIndexed(kByOid, OidHashCode(words, length), rows,
                     [&](RowNumber row) {
                       return kOidLengths[row] == length &&
                              WordsOf(records[row].pszOID, length) == words;
                     });
}

// The index knows the names that the rows state. Where a walk would pass a row
// whose name is not indexed, it has no answer.
std::optional<COidData*> FindByIndexedName(RowRange rows, const wchar_t* name) {
  const std::size_t length = ::wcsnlen(name, kLongestName + 1);
  if (length <= kLongestName) {
    const std::optional<std::uint64_t> key = NameHashCode(name, length);
    if (!key) return std::nullopt;
    for (RowNumber row = kByName.First(*key); row < rows.end;
         row = kByName.Next(row)) {
      if (row < rows.begin) continue;
      if (!AreIndexed({rows.begin, row + 1})) {
        return std::nullopt;
      }
      const LPCWSTR stated = NameOf(records[row]);
      if (stated != nullptr && kNameLengths[row] == length &&
          (std::wmemcmp(stated, name, length) == 0 ||
           EqualInAnyCase(stated, name))) {
        return &records[row];
      }
    }
  }
  if (!AreIndexed(rows)) return std::nullopt;
  return nullptr;
}

[[gnu::noinline]] COidData* FindByName(RowRange rows, wchar_t* name) {
  const std::optional<COidData*> found = FindByIndexedName(rows, name);
  return found ? *found
               : Walk(records + rows.begin, rows.size(),
                      CRYPT_OID_INFO_NAME_KEY, name);
}

[[gnu::noinline]] COidData* FindByAlgid(RowRange rows, ALG_ID algid) {
  return FindIndexed(kByAlgid, AlgidHashCode(algid), rows, [=](RowNumber row) {
    return records[row].Algid == algid;
  });
}

[[gnu::noinline]] COidData* FindByPair(RowRange rows, AlgidPair pair) {
  return FindIndexed(
      kByPair, PairHashCode(pair.first, pair.second), rows,
      [=](RowNumber row) { return HasPair(records[row], pair); });
}

COidData* FindInRegistry(RowRange rows, unsigned int key_type, void* key) {
  switch (key_type) {
    case CRYPT_OID_INFO_OID_KEY:
      return FindByOid(rows, static_cast<const char*>(key));
    case CRYPT_OID_INFO_NAME_KEY:
      return FindByName(rows, static_cast<wchar_t*>(key));
    case CRYPT_OID_INFO_ALGID_KEY:
      return FindByAlgid(rows, Read<ALG_ID>(key));
    case CRYPT_OID_INFO_SIGN_KEY:
      return FindByPair(rows, Read<AlgidPair>(key));
    default:
      return nullptr;
  }
}

}  // namespace
}  // namespace oid

bool MatchOidInfo(COidData& record, unsigned int dwKeyType, void* pvKey) {
  if (pvKey == nullptr) return false;
  switch (dwKeyType) {
    case CRYPT_OID_INFO_OID_KEY:
      return oid::HasOid(record, static_cast<const char*>(pvKey));
    case CRYPT_OID_INFO_NAME_KEY:
      return oid::IsNamed(oid::NameOf(oid::EnsureLoaded(record)),
                          static_cast<const wchar_t*>(pvKey));
    case CRYPT_OID_INFO_ALGID_KEY:
      return record.Algid == oid::Read<ALG_ID>(pvKey);
    case CRYPT_OID_INFO_SIGN_KEY:
      return oid::HasPair(record, oid::Read<oid::AlgidPair>(pvKey));
    default:
      return false;
  }
}

COidData* FindOIDInfoInternal(const OID_TABLE_INFO& table,
                              unsigned int dwKeyType, void* pvKey) {
  if (pvKey == nullptr || table.rgRecords == nullptr) return nullptr;
  for (std::size_t i = 0; i < oid::kGroupCount; ++i) {
    if (&table == &oid_registry[i]) {
      return oid::FindInRegistry(oid::kGroups[i].rows, dwKeyType, pvKey);
    }
  }
  return oid::Walk(table.rgRecords, table.cRecords, dwKeyType, pvKey);
}

COidData* FindOIDInfoInternal(unsigned int dwKeyType, void* pvKey,
                              unsigned int dwGroupId) {
  const DWORD group = dwGroupId & ~CRYPT_OID_DISABLE_SEARCH_DS_FLAG;
  if (pvKey == nullptr || group > oid::kHighestGroupId) return nullptr;
  return oid::FindInRegistry(oid::kRowsByGroupId[group], dwKeyType, pvKey);
}

COidData* FindOIDInfo(unsigned int dwKeyType, void* pvKey,
                      unsigned int dwGroupId) {
  return FindOIDInfoInternal(dwKeyType, pvKey, dwGroupId);
}

}  // namespace korvan
