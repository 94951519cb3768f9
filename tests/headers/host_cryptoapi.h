// CryptoAPI as a host declares it itself.
#ifndef KORVAN_TESTS_HEADERS_HOST_CRYPTOAPI_H_
#define KORVAN_TESTS_HEADERS_HOST_CRYPTOAPI_H_

#include <cstdint>

typedef std::uint8_t BYTE;
typedef std::uint16_t WORD;
typedef unsigned int DWORD;
typedef const char* LPCSTR;
typedef char* LPSTR;
typedef const wchar_t* LPCWSTR;
typedef unsigned int ALG_ID;

typedef struct _CRYPTOAPI_BLOB {
  DWORD cbData;
  BYTE* pbData;
} CRYPT_DATA_BLOB, CRYPT_OBJID_BLOB;
typedef struct _CRYPT_BIT_BLOB {
  DWORD cbData;
  BYTE* pbData;
  DWORD cUnusedBits;
} CRYPT_BIT_BLOB;
typedef struct _CRYPT_ALGORITHM_IDENTIFIER {
  LPSTR pszObjId;
  CRYPT_OBJID_BLOB Parameters;
} CRYPT_ALGORITHM_IDENTIFIER;
typedef struct _CERT_PUBLIC_KEY_INFO {
  CRYPT_ALGORITHM_IDENTIFIER Algorithm;
  CRYPT_BIT_BLOB PublicKey;
} CERT_PUBLIC_KEY_INFO;
typedef struct _PUBLICKEYSTRUC {
  BYTE bType;
  BYTE bVersion;
  WORD reserved;
  ALG_ID aiKeyAlg;
} PUBLICKEYSTRUC;
typedef struct _CRYPT_OID_INFO {
  DWORD cbSize;
  LPCSTR pszOID;
  LPCWSTR pwszName;
  DWORD dwGroupId;
  union {
    DWORD dwValue;
    ALG_ID Algid;
    DWORD dwLength;
  };
  CRYPT_DATA_BLOB ExtraInfo;
  LPCWSTR pwszCNGAlgid;
  LPCWSTR pwszCNGExtraAlgid;
} CRYPT_OID_INFO;

#define CALG_SHA1 0x8004
#define ERROR_INVALID_PARAMETER 87L
#define CRYPT_OID_INFO_OID_KEY 1
#define CRYPT_OID_INFO_NAME_KEY 2
#define PUBLICKEYBLOB 0x6

#endif  // KORVAN_TESTS_HEADERS_HOST_CRYPTOAPI_H_
