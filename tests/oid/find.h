// The lookups by each kind of key, as functions of the key. They take no memory
// of their own, so that tests can count what the library takes.
#ifndef KORVAN_TESTS_OID_FIND_H_
#define KORVAN_TESTS_OID_FIND_H_

#include <korvan/oid_info.h>

namespace korvan::test {

// The id that asks for all groups.
constexpr unsigned int kAllGroups = 0;

// Behind the last of CryptoAPI's.
constexpr unsigned int kUnknownGroup = CRYPT_POLICY_OID_GROUP_ID + 1;
constexpr unsigned int kUnknownKeyType = CRYPT_OID_INFO_SIGN_KEY + 1;

// A key that is only read may be a literal.
inline COidData* FindByOid(const char* oid, unsigned int group) {
  return FindOIDInfo(CRYPT_OID_INFO_OID_KEY, const_cast<char*>(oid), group);
}

inline COidData* FindByName(const wchar_t* name, unsigned int group) {
  return FindOIDInfo(CRYPT_OID_INFO_NAME_KEY, const_cast<wchar_t*>(name),
                     group);
}

inline COidData* FindByAlgid(unsigned int algid, unsigned int group) {
  return FindOIDInfo(CRYPT_OID_INFO_ALGID_KEY, &algid, group);
}

inline COidData* FindByPair(unsigned int first, unsigned int second,
                            unsigned int group) {
  unsigned int pair[2] = {first, second};
  return FindOIDInfo(CRYPT_OID_INFO_SIGN_KEY, pair, group);
}

// Searches for a name that no record has, which loads every name of the group.
inline COidData* FindUnknownName(unsigned int group) {
  return FindByName(L"no such name", group);
}

}  // namespace korvan::test

#endif  // KORVAN_TESTS_OID_FIND_H_
