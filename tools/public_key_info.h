// Public key infos (RFC 5280, 4.1): found in certificates and in files of their
// own, taken apart, put together.
#ifndef KORVAN_TOOLS_PUBLIC_KEY_INFO_H_
#define KORVAN_TOOLS_PUBLIC_KEY_INFO_H_

#include <optional>
#include <string>
#include <vector>

namespace korvan::tools {

using Bytes = std::vector<unsigned char>;

struct PublicKeyInfo {
  std::optional<std::wstring> subject;  // of the certificate that it is from
  Bytes encoded;                        // the whole, in DER
  std::string oid;                      // of its algorithm
  Bytes parameters;                     // of its algorithm, in DER, if any
  Bytes bits;                           // the bit string's content
  unsigned int unused_bits = 0;         // of the last byte
};

// The public key infos in a file: certificates and bare infos, in DER one after
// the other, or in PEM among whatever else stands there. Throws a Failure where
// there is none, or one is damaged.
std::vector<PublicKeyInfo> ReadPublicKeyInfos(const Bytes& file);

// A public key info in DER. Throws a Failure where the parameters are not one
// value in DER, or the OID can't be encoded.
Bytes EncodedInfo(const std::string& oid, const Bytes& parameters,
                  const Bytes& bits);

// Whether it is an OID that can be encoded.
bool IsOid(const std::string& dotted);

// The OIDs in DER, those inside constructed values too.
std::vector<std::string> OidsIn(const Bytes& der);

}  // namespace korvan::tools

#endif  // KORVAN_TOOLS_PUBLIC_KEY_INFO_H_
