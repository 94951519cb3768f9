// The ASN.1 type that wraps a key in a certificate.
#ifndef KORVAN_PUBKEY_OCTET_STRING_H_
#define KORVAN_PUBKEY_OCTET_STRING_H_

namespace korvan::pubkey {

// The tag of a universal OCTET STRING (X.690, 8.7).
constexpr unsigned int kOctetString = 4;

}  // namespace korvan::pubkey

#endif  // KORVAN_PUBKEY_OCTET_STRING_H_
