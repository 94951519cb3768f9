// A certificate's public key to a key blob.
#include <korvan/oid_info.h>
#include <korvan/platform/asn1_record.h>
#include <korvan/public_key.h>

#include <cstdint>

#include "pubkey/failure.h"
#include "pubkey/key_blob.h"
#include "pubkey/octet_string.h"
#include "pubkey/output_buffer.h"

namespace korvan {
namespace {

void UnwrapOctetString(const CRYPT_BIT_BLOB& bits, IdentObj& key);

}  // namespace

int KRVConvertPublicKeyInfo(unsigned int /*uUnused1*/,
                            const _CERT_PUBLIC_KEY_INFO* info,
                            unsigned int /*uUnused3*/,
                            unsigned int /*uUnused4*/, unsigned char** ppBlob,
                            unsigned int* pcbBlob) {
  if (info == nullptr || pcbBlob == nullptr) {
    return pubkey::Fail(ERROR_INVALID_PARAMETER);
  }
  pubkey::FreeEarlierBuffer(*ppBlob);
  const COidData* const algorithm =
      FindOIDInfo(CRYPT_OID_INFO_OID_KEY, info->Algorithm.pszObjId,
                  CRYPT_PUBKEY_ALG_OID_GROUP_ID);
  if (algorithm == nullptr) {
    return pubkey::Fail(NTE_BAD_ALGID);
  }
  IdentObj key(info->PublicKey.pbData, info->PublicKey.cbData);
  UnwrapOctetString(info->PublicKey, key);

  const pubkey::KeyBlobHeader header = {
      {PUBLICKEYBLOB, pubkey::kBlobVersion, 0, algorithm->Algid},
      pubkey::kMagic,
      key.length * 8};
  // A copy: the size may be asked for where theirs stands.
  const CRYPT_OBJID_BLOB parameters = info->Algorithm.Parameters;
  const std::uint64_t size =
      std::uint64_t{sizeof(header)} + parameters.cbData + key.length;
  *pcbBlob = static_cast<unsigned int>(size);
  if (size != *pcbBlob) {
    // A size beyond 32 bits counts as a failed allocation.
    return pubkey::Fail(NTE_NO_MEMORY);
  }
  if (!pubkey::Allocate(*ppBlob, *pcbBlob)) {
    return 0;
  }
  unsigned char* next = pubkey::Append(*ppBlob, &header, sizeof(header));
  next = pubkey::Append(next, parameters.pbData, parameters.cbData);
  pubkey::Append(next, key.data, key.length);
  return 1;
}

namespace {

// If the key, which is the whole bit string, is an OCTET STRING with a header
// of two or three bytes, replaces it by its content. Only the lengths are
// compared, so a header longer than needed and a byte too many at the end pass
// as well. Existing keys rely on that.
void UnwrapOctetString(const CRYPT_BIT_BLOB& bits, IdentObj& key) {
  CASNTBaseRecord record;
  record.SetEncodedEntry(key);
  const unsigned int content_size = record.GetEntrySize();
  // Below three bytes the first bound wraps round, and nothing passes.
  if (record.GetIsConstraction() || record.GetTag() != pubkey::kOctetString ||
      content_size < bits.cbData - 3 || content_size >= bits.cbData - 1) {
    return;
  }
  int status = 0;
  // The key is assigned before it is checked, and put back if the check fails:
  // a host sees the calls of its classes, in this order.
  key = record.GetRecord(&status);
  if (status != 0 || key.length != record.GetEntrySize()) {
    key = IdentObj(bits.pbData, bits.cbData);
  }
}

}  // namespace
}  // namespace korvan
