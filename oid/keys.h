// What callers search by: a key of one of four types, behind a pointer. It is
// decoded here and nowhere else.
#ifndef KORVAN_OID_KEYS_H_
#define KORVAN_OID_KEYS_H_

#include <korvan/cryptoapi.h>

#include <cstring>

namespace korvan::oid {

struct OidKey {
  const char* oid;
};

struct NameKey {
  const wchar_t* name;
};

struct AlgidKey {
  ALG_ID algid;
};

struct PairKey {
  ALG_ID algid;
  ALG_ID second_algid;
};

// A key of that layout, from a place that need not be aligned.
template <class Key>
Key ReadKey(const void* place) {
  Key key;
  std::memcpy(&key, place, sizeof key);
  return key;
}

// Returns what `visit` returns for the key. A null key and an unknown type are
// no key: then it returns the empty result, null or false.
template <class Visit>
auto VisitKey(DWORD type, const void* key, Visit visit) {
  using Result = decltype(visit(AlgidKey{}));
  if (key == nullptr) {
    return Result{};
  }
  switch (type) {
    case CRYPT_OID_INFO_OID_KEY:
      return visit(OidKey{static_cast<const char*>(key)});
    case CRYPT_OID_INFO_NAME_KEY:
      return visit(NameKey{static_cast<const wchar_t*>(key)});
    case CRYPT_OID_INFO_ALGID_KEY:
      return visit(ReadKey<AlgidKey>(key));
    case CRYPT_OID_INFO_SIGN_KEY:
      return visit(ReadKey<PairKey>(key));
    default:
      return Result{};
  }
}

}  // namespace korvan::oid

#endif  // KORVAN_OID_KEYS_H_
