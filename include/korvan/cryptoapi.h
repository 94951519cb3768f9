/// @file
/// The CryptoAPI types, layouts and values that the library's interface uses,
/// under their published names and at global scope.
///
/// A program that has these declarations from its host already defines
/// `KORVAN_HOST_CRYPTOAPI` before it includes any header of the library: then
/// this header declares none of them, and only checks that the host's have
/// the sizes and offsets that the library was built with.
///
/// All values and layouts are those of the published `wincrypt.h` on a 64-bit
/// platform, with 32-bit `DWORD` and native pointers.
#ifndef KORVAN_CRYPTOAPI_H_
#define KORVAN_CRYPTOAPI_H_

#include <korvan/export.h>

#include <cstddef>
#include <cstdint>

#ifndef KORVAN_HOST_CRYPTOAPI

// Every name that is declared below, in that order.
#if defined(BYTE) || defined(WORD) || defined(DWORD) || defined(ULONG) ||      \
    defined(LONG) || defined(BOOL) || defined(LPSTR) || defined(LPCSTR) ||     \
    defined(LPWSTR) || defined(LPCWSTR) || defined(ALG_ID) ||                  \
    defined(_CRYPTOAPI_BLOB) || defined(CRYPT_DATA_BLOB) ||                    \
    defined(CRYPT_OBJID_BLOB) || defined(_CRYPT_BIT_BLOB) ||                   \
    defined(CRYPT_BIT_BLOB) || defined(_CRYPT_ALGORITHM_IDENTIFIER) ||         \
    defined(CRYPT_ALGORITHM_IDENTIFIER) || defined(_CERT_PUBLIC_KEY_INFO) ||   \
    defined(CERT_PUBLIC_KEY_INFO) || defined(_PUBLICKEYSTRUC) ||               \
    defined(PUBLICKEYSTRUC) || defined(_CRYPT_OID_INFO) ||                     \
    defined(CRYPT_OID_INFO) || defined(CALG_MD2) || defined(CALG_MD4) ||       \
    defined(CALG_MD5) || defined(CALG_SHA1) || defined(CALG_DES) ||            \
    defined(CALG_RC2) || defined(CALG_3DES) || defined(CALG_RC4) ||            \
    defined(CALG_NO_SIGN) || defined(CALG_DSS_SIGN) ||                         \
    defined(CALG_RSA_SIGN) || defined(CALG_RSA_KEYX) || defined(CALG_DH_SF) || \
    defined(CALG_DH_EPHEM) || defined(CRYPT_OID_INFO_OID_KEY) ||               \
    defined(CRYPT_OID_INFO_NAME_KEY) || defined(CRYPT_OID_INFO_ALGID_KEY) ||   \
    defined(CRYPT_OID_INFO_SIGN_KEY) ||                                        \
    defined(CRYPT_HASH_ALG_OID_GROUP_ID) ||                                    \
    defined(CRYPT_ENCRYPT_ALG_OID_GROUP_ID) ||                                 \
    defined(CRYPT_PUBKEY_ALG_OID_GROUP_ID) ||                                  \
    defined(CRYPT_SIGN_ALG_OID_GROUP_ID) ||                                    \
    defined(CRYPT_RDN_ATTR_OID_GROUP_ID) ||                                    \
    defined(CRYPT_EXT_OR_ATTR_OID_GROUP_ID) ||                                 \
    defined(CRYPT_ENHKEY_USAGE_OID_GROUP_ID) ||                                \
    defined(CRYPT_POLICY_OID_GROUP_ID) ||                                      \
    defined(CRYPT_OID_DISABLE_SEARCH_DS_FLAG) ||                               \
    defined(CRYPT_OID_INHIBIT_SIGNATURE_FORMAT_FLAG) ||                        \
    defined(CRYPT_OID_NO_NULL_ALGORITHM_PARA_FLAG) ||                          \
    defined(CERT_RDN_NUMERIC_STRING) || defined(CERT_RDN_PRINTABLE_STRING) ||  \
    defined(CERT_RDN_IA5_STRING) || defined(CERT_RDN_UTF8_STRING) ||           \
    defined(PUBLICKEYBLOB) || defined(ERROR_INVALID_PARAMETER) ||              \
    defined(NTE_BAD_KEY) || defined(NTE_BAD_ALGID) ||                          \
    defined(NTE_NO_MEMORY) || defined(DIGSIG_E_ENCODE)
#error "a name of CryptoAPI is a macro: #undef it, or see KORVAN_HOST_CRYPTOAPI"
#endif

/// @name Basic types
/// @{
using BYTE = std::uint8_t;       ///< An 8-bit unsigned number.
using WORD = std::uint16_t;      ///< A 16-bit unsigned number.
using DWORD = std::uint32_t;     ///< A 32-bit unsigned number.
using ULONG = std::uint32_t;     ///< A 32-bit unsigned number.
using LONG = std::int32_t;       ///< A 32-bit signed number.
using BOOL = int;                ///< 1 for true, 0 for false.
using LPSTR = char*;             ///< A NUL-terminated string.
using LPCSTR = const char*;      ///< A NUL-terminated constant string.
using LPWSTR = wchar_t*;         ///< A NUL-terminated wide string.
using LPCWSTR = const wchar_t*;  ///< A constant wide string.
using ALG_ID = unsigned int;     ///< An algorithm.
/// @}

/// Bytes that stand elsewhere, and how many.
typedef struct _CRYPTOAPI_BLOB {
  DWORD cbData;  ///< Length of `pbData` in bytes.
  BYTE* pbData;  ///< The bytes; may be null when `cbData` is 0.
} CRYPT_DATA_BLOB;

/// Encoded parameters of an algorithm.
typedef CRYPT_DATA_BLOB CRYPT_OBJID_BLOB;

/// The content of an ASN.1 BIT STRING.
typedef struct _CRYPT_BIT_BLOB {
  DWORD cbData;       ///< Length of `pbData` in bytes.
  BYTE* pbData;       ///< The bytes; may be null when `cbData` is 0.
  DWORD cUnusedBits;  ///< Unused bits of the last byte, 0 to 7.
} CRYPT_BIT_BLOB;

/// X.509's AlgorithmIdentifier.
typedef struct _CRYPT_ALGORITHM_IDENTIFIER {
  LPSTR pszObjId;               ///< Dotted OID, NUL-terminated.
  CRYPT_OBJID_BLOB Parameters;  ///< The parameters as they are encoded.
} CRYPT_ALGORITHM_IDENTIFIER;

/// X.509's SubjectPublicKeyInfo.
typedef struct _CERT_PUBLIC_KEY_INFO {
  CRYPT_ALGORITHM_IDENTIFIER Algorithm;  ///< The key's algorithm.
  CRYPT_BIT_BLOB PublicKey;              ///< The bit string's content.
} CERT_PUBLIC_KEY_INFO;

/// The header that every key blob begins with.
typedef struct _PUBLICKEYSTRUC {
  BYTE bType;       ///< Kind of blob, `PUBLICKEYBLOB` for a public key.
  BYTE bVersion;    ///< Version of the blob's form.
  WORD reserved;    ///< 0.
  ALG_ID aiKeyAlg;  ///< Algorithm of the key.
} PUBLICKEYSTRUC;

/// What CryptoAPI knows of an OID.
typedef struct _CRYPT_OID_INFO {
  DWORD cbSize;      ///< Size of this structure in bytes.
  LPCSTR pszOID;     ///< Dotted OID, NUL-terminated.
  LPCWSTR pwszName;  ///< Display name, NUL-terminated.
  DWORD dwGroupId;   ///< One of the `*_OID_GROUP_ID` values.
  union {
    DWORD dwValue;   ///< The value under its general name,
    ALG_ID Algid;    ///< as the algorithm of an algorithm group,
    DWORD dwLength;  ///< as a length.
  };
  CRYPT_DATA_BLOB ExtraInfo;  ///< Little-endian 32-bit words, by group.
  LPCWSTR pwszCNGAlgid;       ///< Name of the algorithm in CNG.
  LPCWSTR pwszCNGExtraAlgid;  ///< Name of the second algorithm in CNG.
} CRYPT_OID_INFO;

/// @name Algorithm identifiers
/// Class in bits 13 to 15, type in bits 9 to 12, sub-identifier in bits 0 to 8.
/// @{
constexpr ALG_ID CALG_MD2 = 0x8001;       ///< MD2 hash
constexpr ALG_ID CALG_MD4 = 0x8002;       ///< MD4 hash
constexpr ALG_ID CALG_MD5 = 0x8003;       ///< MD5 hash
constexpr ALG_ID CALG_SHA1 = 0x8004;      ///< SHA-1 hash
constexpr ALG_ID CALG_DES = 0x6601;       ///< DES
constexpr ALG_ID CALG_RC2 = 0x6602;       ///< RC2
constexpr ALG_ID CALG_3DES = 0x6603;      ///< Triple DES
constexpr ALG_ID CALG_RC4 = 0x6801;       ///< RC4
constexpr ALG_ID CALG_NO_SIGN = 0x2000;   ///< no signature
constexpr ALG_ID CALG_DSS_SIGN = 0x2200;  ///< DSA signature
constexpr ALG_ID CALG_RSA_SIGN = 0x2400;  ///< RSA signature
constexpr ALG_ID CALG_RSA_KEYX = 0xA400;  ///< RSA key exchange
constexpr ALG_ID CALG_DH_SF = 0xAA01;     ///< Diffie-Hellman, static
constexpr ALG_ID CALG_DH_EPHEM = 0xAA02;  ///< Diffie-Hellman, ephemeral
/// @}

/// @name Key types of an OID lookup
/// @{
constexpr DWORD CRYPT_OID_INFO_OID_KEY = 1;    ///< a dotted OID
constexpr DWORD CRYPT_OID_INFO_NAME_KEY = 2;   ///< a wide name
constexpr DWORD CRYPT_OID_INFO_ALGID_KEY = 3;  ///< one `ALG_ID`
constexpr DWORD CRYPT_OID_INFO_SIGN_KEY = 4;   ///< two `ALG_ID`s
/// @}

/// @name Groups of OIDs
/// @{
constexpr DWORD CRYPT_HASH_ALG_OID_GROUP_ID = 1;      ///< hashes
constexpr DWORD CRYPT_ENCRYPT_ALG_OID_GROUP_ID = 2;   ///< ciphers
constexpr DWORD CRYPT_PUBKEY_ALG_OID_GROUP_ID = 3;    ///< public keys
constexpr DWORD CRYPT_SIGN_ALG_OID_GROUP_ID = 4;      ///< signatures
constexpr DWORD CRYPT_RDN_ATTR_OID_GROUP_ID = 5;      ///< name attributes
constexpr DWORD CRYPT_EXT_OR_ATTR_OID_GROUP_ID = 6;   ///< extensions
constexpr DWORD CRYPT_ENHKEY_USAGE_OID_GROUP_ID = 7;  ///< key usages
constexpr DWORD CRYPT_POLICY_OID_GROUP_ID = 8;        ///< policies
/// Bit of a group id that asks to keep off directory services.
constexpr DWORD CRYPT_OID_DISABLE_SEARCH_DS_FLAG = 0x80000000;
/// @}

/// @name Flags in the extra information of algorithm records
/// @{

/// Signatures are used as they stand, not reversed.
constexpr DWORD CRYPT_OID_INHIBIT_SIGNATURE_FORMAT_FLAG = 0x1;
/// Absent parameters are left out, not encoded as NULL.
constexpr DWORD CRYPT_OID_NO_NULL_ALGORITHM_PARA_FLAG = 0x4;
/// @}

/// @name Value types of relative distinguished names
/// @{
constexpr DWORD CERT_RDN_NUMERIC_STRING = 3;    ///< NumericString
constexpr DWORD CERT_RDN_PRINTABLE_STRING = 4;  ///< PrintableString
constexpr DWORD CERT_RDN_IA5_STRING = 7;        ///< IA5String
constexpr DWORD CERT_RDN_UTF8_STRING = 13;      ///< UTF8String
/// @}

/// Kind of key blob that holds a public key.
constexpr BYTE PUBLICKEYBLOB = 0x06;

/// @name Last-error codes
/// @{
constexpr DWORD ERROR_INVALID_PARAMETER = 87;  ///< an argument is wrong
constexpr DWORD NTE_BAD_KEY = 0x80090003;      ///< a blob holds no key
constexpr DWORD NTE_BAD_ALGID = 0x80090008;    ///< an algorithm is unknown
constexpr DWORD NTE_NO_MEMORY = 0x8009000E;    ///< no memory
constexpr DWORD DIGSIG_E_ENCODE = 0x800B0005;  ///< encoding failed
/// @}

#endif  // KORVAN_HOST_CRYPTOAPI

static_assert(sizeof(DWORD) == 4, "DWORD has 32 bits");
static_assert(sizeof(*LPCWSTR()) == 4, "LPCWSTR is of 32-bit characters");
static_assert(sizeof(ALG_ID) == 4, "ALG_ID has 32 bits");
static_assert(sizeof(CRYPT_DATA_BLOB) == 16 &&
                  offsetof(CRYPT_DATA_BLOB, cbData) == 0 &&
                  offsetof(CRYPT_DATA_BLOB, pbData) == 8,
              "CRYPT_DATA_BLOB has the published layout");
static_assert(sizeof(CRYPT_BIT_BLOB) == 24 &&
                  offsetof(CRYPT_BIT_BLOB, cbData) == 0 &&
                  offsetof(CRYPT_BIT_BLOB, pbData) == 8 &&
                  offsetof(CRYPT_BIT_BLOB, cUnusedBits) == 16,
              "CRYPT_BIT_BLOB has the published layout");
static_assert(sizeof(CRYPT_ALGORITHM_IDENTIFIER) == 24 &&
                  offsetof(CRYPT_ALGORITHM_IDENTIFIER, pszObjId) == 0 &&
                  offsetof(CRYPT_ALGORITHM_IDENTIFIER, Parameters) == 8,
              "CRYPT_ALGORITHM_IDENTIFIER has the published layout");
static_assert(sizeof(CERT_PUBLIC_KEY_INFO) == 48 &&
                  offsetof(CERT_PUBLIC_KEY_INFO, Algorithm) == 0 &&
                  offsetof(CERT_PUBLIC_KEY_INFO, PublicKey) == 24,
              "CERT_PUBLIC_KEY_INFO has the published layout");
static_assert(sizeof(PUBLICKEYSTRUC) == 8 &&
                  offsetof(PUBLICKEYSTRUC, bType) == 0 &&
                  offsetof(PUBLICKEYSTRUC, bVersion) == 1 &&
                  offsetof(PUBLICKEYSTRUC, reserved) == 2 &&
                  offsetof(PUBLICKEYSTRUC, aiKeyAlg) == 4,
              "PUBLICKEYSTRUC has the published layout");
static_assert(sizeof(CRYPT_OID_INFO) == 64 &&
                  offsetof(CRYPT_OID_INFO, cbSize) == 0 &&
                  offsetof(CRYPT_OID_INFO, pszOID) == 8 &&
                  offsetof(CRYPT_OID_INFO, pwszName) == 16 &&
                  offsetof(CRYPT_OID_INFO, dwGroupId) == 24 &&
                  offsetof(CRYPT_OID_INFO, Algid) == 28 &&
                  offsetof(CRYPT_OID_INFO, ExtraInfo) == 32 &&
                  offsetof(CRYPT_OID_INFO, pwszCNGAlgid) == 48 &&
                  offsetof(CRYPT_OID_INFO, pwszCNGExtraAlgid) == 56,
              "CRYPT_OID_INFO has the published layout");

#endif  // KORVAN_CRYPTOAPI_H_
