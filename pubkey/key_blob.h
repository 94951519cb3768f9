// The public key blob. Its layout stands here and nowhere else:
//
//     offset  size  field
//          0     1  bType       0x06, PUBLICKEYBLOB
//          1     1  bVersion    0x20
//          2     2  reserved    0
//          4     4  aiKeyAlg    ALG_ID of the key
//          8     4  magic       "MAG1"
//         12     4  bitLen      8 times the length of the key in bytes
//         16     P  parameters  of the algorithm, in their ASN.1 encoding
//       16+P     K  key         bytes in the order of the certificate
//
// Numbers are little-endian. There is no padding, and nothing follows the key.
// The header is the same for every algorithm, RSA and DSA included. One
// conversion makes a blob of a certificate's key, the other splits a blob; both
// see keys only through the platform's record classes, which a host may define
// itself, so the order of their calls is part of the interface.
#ifndef KORVAN_PUBKEY_KEY_BLOB_H_
#define KORVAN_PUBKEY_KEY_BLOB_H_

#include <korvan/cryptoapi.h>

#include <bit>
#include <cstddef>

namespace korvan::pubkey {

struct KeyBlobHeader {
  PUBLICKEYSTRUC head;
  DWORD magic;
  DWORD bitLen;
};

static_assert(std::endian::native == std::endian::little,
              "the header is copied to and from the blob as it stands");
static_assert(sizeof(KeyBlobHeader) == 16 &&
              offsetof(KeyBlobHeader, magic) == 8 &&
              offsetof(KeyBlobHeader, bitLen) == 12);

constexpr BYTE kBlobVersion = 0x20;
constexpr DWORD kMagic = 0x3147414D;

}  // namespace korvan::pubkey

#endif  // KORVAN_PUBKEY_KEY_BLOB_H_
