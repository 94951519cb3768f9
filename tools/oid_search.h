// Searches in the OID registry that give every record which has a key, where
// the library's own lookup gives the first.
#ifndef KORVAN_TOOLS_OID_SEARCH_H_
#define KORVAN_TOOLS_OID_SEARCH_H_

#include <korvan/oid_info.h>

#include <optional>
#include <string>
#include <vector>

namespace korvan::tools {

// What a record is looked up by.
struct Key {
  DWORD type = 0;      // as for FindOIDInfo
  std::string text;    // as it was given
  std::wstring name;   // of a key that is a name
  ALG_ID algids[2]{};  // of one that is an ALG_ID, or a pair of them

  // The key as FindOIDInfo takes it, valid as long as this is.
  void* Data();
};

// The key of a type that stands in `text`. Throws a Failure where there is
// none, such as an ALG_ID that is no number.
Key KeyOfType(DWORD type, const std::string& text);

// The key that `text` looks like: an OID, an ALG_ID, a pair of these, or else a
// name.
Key KeyByForm(const std::string& text);

// The whole of `text` as an unsigned 32-bit number: decimal, or hexadecimal
// after 0x.
std::optional<DWORD> Number(const std::string& text);

using Records = std::vector<COidData*>;

// The records of a group, or of all for 0, in the order in which the library
// searches them. Their names are loaded.
Records RecordsOf(DWORD group);

// Those of them that have the key. The library judges each.
Records Matches(Key& key, DWORD group);

// The names that the key has where the current locale's rules for upper and
// lower case do not hide them.
std::vector<std::wstring> HiddenNames(Key& key, DWORD group);

// At most three OIDs or names that are like the key.
std::vector<std::wstring> Nearest(const Key& key, DWORD group);

// The name of the first record that the library finds, or nothing.
std::optional<std::wstring> NameOfOid(std::string oid, DWORD group);
std::optional<std::wstring> NameOfAlgid(ALG_ID algid);

// ASCII, such as an OID.
std::wstring Wide(const std::string& ascii);

// A number as ALG_IDs are written, 0x2E23.
std::string Hex(DWORD number);

}  // namespace korvan::tools

#endif  // KORVAN_TOOLS_OID_SEARCH_H_
