/// @file
/// The OID registry: 259 records in nine groups that translate between dotted
/// OIDs, display names and algorithm identifiers.
///
/// Names. Many records are named by a number of the string table
/// (<korvan/string_resources.h>). Such a number, 1 to 0xFFFF, stands in
/// `pwszName` until a lookup first needs the name; then the lookup loads the
/// text, and from there on `pwszName` points to it. A number without a text
/// leaves the name null for good. EVERY RECORD THAT A LOOKUP RETURNS HAS ITS
/// NAME RESOLVED: to text or to null, never a number. A caller who walks
/// `oid_registry` meets the numbers too.
///
/// Errors. A lookup reports failure by null and sets no last-error code of its
/// own. Loading a name whose text is missing leaves behind the 87,
/// `ERROR_INVALID_PARAMETER`, of `LoadString_korvan`, also where the lookup
/// succeeds. The library throws `std::bad_alloc` alone, when allocation for a
/// name fails; where a process defines `SetLastError` or `LoadString_korvan`
/// itself, what these throw passes, too. The record's name then stays null for
/// good, unless another thread has loaded it meanwhile.
///
/// Threads. Lookups may run on any number of threads at once, first use of a
/// name included: all come back with the one name that is kept. Lookups of
/// resolved records take no lock and write nothing. NO LOOKUP MAY OVERLAP
/// `CleanupOidInfo`, which also runs when the library is unloaded and when the
/// process exits; only at exit may threads still look up, by other keys than
/// names, and they must not read the names.
///
/// Walking. A caller who walks `oid_registry` while other threads look up must
/// READ `pwszName` AND `dwOidFlags` ATOMICALLY, because a lookup may write them
/// at that moment; all other fields never change:
///
///     LPCWSTR name = __atomic_load_n(&record.pwszName, __ATOMIC_ACQUIRE);
///     DWORD flags = __atomic_load_n(&record.dwOidFlags, __ATOMIC_ACQUIRE);
///
/// A name that was loaded is whole when it is seen, and flags that are read
/// after it have bit 0x2. A record that a lookup returned to this thread needs
/// no such care. A walk, too, must not overlap `CleanupOidInfo`.
///
/// Forks. A process may fork at any time, but in a handler of a signal that can
/// interrupt a lookup only by `_Fork`. Lookups go on in the child, with the
/// names that were loaded at that moment.
#ifndef KORVAN_OID_INFO_H_
#define KORVAN_OID_INFO_H_

#include <korvan/cryptoapi.h>
#include <korvan/export.h>

#include <cstddef>

#ifdef PARAMSET_OID_GROUP_ID
#error "a name of korvan is a macro: #undef PARAMSET_OID_GROUP_ID"
#endif

namespace korvan {

/// Group of GOST R 34.10 and Diffie-Hellman parameter sets; the provider's
/// own, beside CryptoAPI's groups 1 to 8.
constexpr DWORD PARAMSET_OID_GROUP_ID = 20;

/// One record: CryptoAPI's `CRYPT_OID_INFO`, then the library's own flags. It
/// can be handed to any code that expects a `CRYPT_OID_INFO`.
///
/// All strings and bytes that the registry's records point to are read-only.
/// The registry writes `pwszName` and bit 0x2 of `dwOidFlags`, and nothing
/// else; callers write nothing.
struct COidData {
  DWORD cbSize;      ///< 64, the size of the `CRYPT_OID_INFO` part in bytes.
  LPCSTR pszOID;     ///< Dotted OID; never null in the registry.
  LPCWSTR pwszName;  ///< Display name, number of a text, or null.
  DWORD dwGroupId;   ///< Id of the group that holds the record.
  union {
    DWORD dwValue;   ///< `Algid` under CryptoAPI's general name.
    ALG_ID Algid;    ///< The algorithm in groups 1 to 4, 0 in the others.
    DWORD dwLength;  ///< `Algid` under CryptoAPI's other name.
  };
  /// Little-endian 32-bit words. Group 3: flags. Group 4: `ALG_ID` of the
  /// public key, then flags if there are any. Group 5: acceptable value types,
  /// ended by a 0. Elsewhere, and where a record has none, 0 bytes and null.
  CRYPT_DATA_BLOB ExtraInfo;
  LPCWSTR pwszCNGAlgid;       ///< Name in CNG; empty where there is none.
  LPCWSTR pwszCNGExtraAlgid;  ///< Second name in CNG; empty where none.
  /// Bit 0x1, the mark, is for callers: set on the GOST and own algorithms
  /// and on some other records; the library does not read it. Bit 0x2 says
  /// that `pwszName` belongs to the registry.
  DWORD dwOidFlags;
};

static_assert(sizeof(COidData) == 72 && offsetof(COidData, cbSize) == 0 &&
                  offsetof(COidData, pszOID) == 8 &&
                  offsetof(COidData, pwszName) == 16 &&
                  offsetof(COidData, dwGroupId) == 24 &&
                  offsetof(COidData, Algid) == 28 &&
                  offsetof(COidData, ExtraInfo) == 32 &&
                  offsetof(COidData, pwszCNGAlgid) == 48 &&
                  offsetof(COidData, pwszCNGExtraAlgid) == 56 &&
                  offsetof(COidData, dwOidFlags) == sizeof(CRYPT_OID_INFO),
              "COidData begins as a CRYPT_OID_INFO does");

/// One group of records.
struct OID_TABLE_INFO {
  DWORD dwGroupId;      ///< Id of the group.
  int cRecords;         ///< Number of records; 0 or less is an empty table.
  COidData* rgRecords;  ///< The first of the records; they lie in a row.
};

static_assert(sizeof(OID_TABLE_INFO) == 16 &&
                  offsetof(OID_TABLE_INFO, dwGroupId) == 0 &&
                  offsetof(OID_TABLE_INFO, cRecords) == 4 &&
                  offsetof(OID_TABLE_INFO, rgRecords) == 8,
              "OID_TABLE_INFO has the layout of the library");

/// The nine groups, in the order in which they are searched: 1 to 8, then 20.
/// The array is constant, the records are written as `COidData` says.
KORVAN_API extern const OID_TABLE_INFO oid_registry[9];

/// Finds the first record that matches a key, in one group or in all.
///
///     char oid[] = "1.2.643.2.2.19";
///     const korvan::COidData* found = korvan::FindOIDInfo(
///         CRYPT_OID_INFO_OID_KEY, oid, CRYPT_PUBKEY_ALG_OID_GROUP_ID);
///     assert(found != nullptr && found->Algid == 0x2E23);
///
/// A search by name loads the name of every record that it passes, up to and
/// including the match; a search by name in all groups that finds nothing
/// loads every name there is.
///
/// @param dwKeyType  what `pvKey` points to, as in CryptoAPI's
///                   `CryptFindOIDInfo`; any other value matches nothing:
///   - 1, `CRYPT_OID_INFO_OID_KEY`: a NUL-terminated dotted OID, compared byte
///     for byte;
///   - 2, `CRYPT_OID_INFO_NAME_KEY`: a NUL-terminated wide name, compared
///     without regard to case as the current C locale folds it;
///   - 3, `CRYPT_OID_INFO_ALGID_KEY`: one 32-bit `ALG_ID`;
///   - 4, `CRYPT_OID_INFO_SIGN_KEY`: two 32-bit `ALG_ID`s, of the hash and of
///     the public key. RECORDS WITHOUT EXTRA INFORMATION COUNT AS 0 in the
///     second: {0x8004, 0} finds the hash "sha1".
///
/// @param pvKey      the key; only read. Null matches nothing.
/// @param dwGroupId  id of the group to search, 0 for all in the order of
///                   `oid_registry`. The top bit,
///                   `CRYPT_OID_DISABLE_SEARCH_DS_FLAG`, is ignored.
/// @return the first record in array order that matches, its name resolved;
///         null when there is none.
/// @par Errors
/// Null, and no last-error code but the 87, `ERROR_INVALID_PARAMETER`,
/// that a name without a text leaves behind.
/// @par Ownership
/// The record belongs to the registry, and so does all that it
/// points to. It is valid until the library is unloaded.
/// @par Threads
/// Any thread, but not while `CleanupOidInfo` runs or while another changes the
/// process's locale.
/// @throws std::bad_alloc when allocation for a name fails: that name then
///         stays null for good, unless another thread has loaded it meanwhile.
KORVAN_API COidData* FindOIDInfo(unsigned int dwKeyType, void* pvKey,
                                 unsigned int dwGroupId);

/// Does what `FindOIDInfo` does; that one only calls it.
///
///     wchar_t text[] = L"common name";
///     const korvan::COidData* named =
///         korvan::FindOIDInfoInternal(CRYPT_OID_INFO_NAME_KEY, text, 0);
///     assert(named != nullptr && std::strcmp(named->pszOID, "2.5.4.3") == 0);
///
/// @param dwKeyType  as for `FindOIDInfo`.
/// @param pvKey      as for `FindOIDInfo`.
/// @param dwGroupId  as for `FindOIDInfo`.
/// @return as `FindOIDInfo`.
/// @errors{As for `FindOIDInfo`.}
/// @ownership{As for `FindOIDInfo`.}
/// @threads{As for `FindOIDInfo`.}
/// @throws std::bad_alloc as `FindOIDInfo`.
KORVAN_API COidData* FindOIDInfoInternal(unsigned int dwKeyType, void* pvKey,
                                         unsigned int dwGroupId);

/// Finds the first record of one table that matches a key.
///
///     char own_oid[] = "2.999.1";
///     korvan::COidData own = {};
///     own.pszOID = own_oid;
///     own.pwszName = L"An algorithm of our own";
///     const korvan::OID_TABLE_INFO table = {3, 1, &own};
///     assert(korvan::FindOIDInfoInternal(table, 1, own_oid) == &own);
///
/// @param table      the table: one of `oid_registry`, or a caller's own. Its
///                   group id is not looked at. A table with no records, by
///                   its count or by a null pointer, matches nothing, and the
///                   key is not looked at.
/// @param dwKeyType  as for `FindOIDInfo`.
/// @param pvKey      as for `FindOIDInfo`; null matches nothing.
/// @return the first record in array order that matches, its name resolved;
///         null when there is none.
/// @errors{As for `FindOIDInfo`.}
/// @par Ownership
/// The record is the table's. Names loaded into a caller's own
/// records are the caller's, see `InitOidInfoWorker`.
/// @threads{As for `FindOIDInfo`.}
/// @throws std::bad_alloc when allocation for a name fails.
KORVAN_API COidData* FindOIDInfoInternal(const OID_TABLE_INFO& table,
                                         unsigned int dwKeyType, void* pvKey);

/// Tells whether a record matches a key.
///
///     ALG_ID wanted = CALG_RSA_KEYX;
///     korvan::COidData& first = korvan::oid_registry[2].rgRecords[0];
///     assert(!korvan::MatchOidInfo(first, CRYPT_OID_INFO_ALGID_KEY, &wanted));
///
/// With key type 2, a number in the record's name is first replaced by its
/// text, as `InitOidInfoWorker` does; no other key type loads a name.
///
/// @param record     the record: one of the registry's, or a caller's own.
/// @param dwKeyType  as for `FindOIDInfo`.
/// @param pvKey      as for `FindOIDInfo`; null matches nothing.
/// @return true when the record matches. A record without an OID matches no
///         OID, one without a name no name.
/// @errors{As for `FindOIDInfo`.}
/// @ownership{As for `InitOidInfoWorker`, where it loads a name.}
/// @threads{As for `FindOIDInfo`.}
/// @throws std::bad_alloc when allocation for a name fails.
KORVAN_API bool MatchOidInfo(COidData& record, unsigned int dwKeyType,
                             void* pvKey);

/// Gives a record the name that has a number in the string table.
///
///     korvan::COidData mine = {};
///     korvan::InitOidInfoWorker(mine, 8048);
///     assert(std::wcscmp(mine.pwszName, L"Common Name") == 0);
///     delete[] mine.pwszName;
///
/// Afterwards bit 0x2 of `dwOidFlags` is set, and `pwszName` is the text, as a
/// `new[]` array that ends in a zero; or null, when no text has that number,
/// when the current C locale can't convert it, or when an exception passes.
/// The lookups call this themselves.
///
/// @param record       the record: one of the registry's, or a caller's own.
/// @param uResourceId  number of the text, see <korvan/string_resources.h>.
/// @par Errors
/// A missing text leaves the name null and the last error at 87,
/// `ERROR_INVALID_PARAMETER`.
/// @par Ownership
/// WHAT `pwszName` HELD BEFORE IS NOT FREED. `CleanupOidInfo` frees
/// the name of a registry's record. The name of a caller's own record belongs
/// to the caller, who frees it with `delete[]`.
/// @par Threads
/// Any thread, but NOTHING ELSE MAY USE THE SAME RECORD meanwhile.
/// (The lookups take care of that for themselves.)
/// @throws std::bad_alloc when allocation for the name fails.
KORVAN_API void InitOidInfoWorker(COidData& record, unsigned int uResourceId);

/// Frees every name that was loaded into the registry's records.
///
///     korvan::CleanupOidInfo();
///     assert(named->pwszName == nullptr);
///
/// A record whose name was loaded, or whose load failed, HAS NO NAME FROM THEN
/// ON and never loads it again; a record that was not yet used keeps its
/// number and loads normally. Calling it again does nothing. The library calls
/// it when it is unloaded or the process exits; others need not.
///
/// @errors{None; the last-error code stays.}
/// @ownership{Names that a lookup returned are gone.}
/// @par Threads
/// NO LOOKUP, and no use of a name that a lookup returned, may overlap
/// it.
/// @nothrow
KORVAN_API void CleanupOidInfo();

/// Calls `CleanupOidInfo` when it is destroyed. The library holds one, whose
/// destruction is the unloading of the library or the end of the process.
class KORVAN_API COidInfoCleanupHelper {
 public:
  /// Calls `CleanupOidInfo`.
  ///
  ///     { const korvan::COidInfoCleanupHelper cleanup; }
  ///
  /// @errors{As for `CleanupOidInfo`.}
  /// @ownership{As for `CleanupOidInfo`.}
  /// @threads{As for `CleanupOidInfo`.}
  /// @nothrow
  ~COidInfoCleanupHelper();
};

}  // namespace korvan

#endif  // KORVAN_OID_INFO_H_
