#include <korvan/oid_info.h>
#include <korvan/platform/asn1_record.h>
#include <korvan/public_key.h>

#include <cstdint>

#include "pubkey/handed_out.h"
#include "pubkey/key_blob.h"

namespace korvan {
namespace {

// Leaves of `key`, the whole bit string, the content of the OCTET STRING that
// it is, if its header takes two or three bytes. Only the lengths are looked
// at, so a longer header than needed and a byte left over at the end pass too;
// those keys are known unwrapped, and stay so.
void Unwrap(const CRYPT_BIT_BLOB& bits, IdentObj& key) {
  CASNTBaseRecord record;
  record.SetEncodedEntry(key);
  const unsigned int content = record.GetEntrySize();
  // Below three bytes the first bound wraps round and nothing passes.
  if (record.GetIsConstraction() || record.GetTag() != pubkey::kOctetString ||
      content < bits.cbData - 3 || content >= bits.cbData - 1) {
    return;
  }
  int status = 0;
  key = record.GetRecord(&status);
  if (status != 0 || key.length != record.GetEntrySize()) {
    key = IdentObj(bits.pbData, bits.cbData);
  }
}

}  // namespace

int KRVConvertPublicKeyInfo(unsigned int /*uUnused1*/,
                            const _CERT_PUBLIC_KEY_INFO* info,
                            unsigned int /*uUnused3*/,
                            unsigned int /*uUnused4*/, unsigned char** ppBlob,
                            unsigned int* pcbBlob) {
  if (info == nullptr || pcbBlob == nullptr) {
    return pubkey::Fail(ERROR_INVALID_PARAMETER);
  }
  pubkey::TakeBack(*ppBlob);
  const COidData* const algorithm =
      FindOIDInfo(CRYPT_OID_INFO_OID_KEY, info->Algorithm.pszObjId,
                  CRYPT_PUBKEY_ALG_OID_GROUP_ID);
  if (algorithm == nullptr) {
    return pubkey::Fail(NTE_BAD_ALGID);
  }
  IdentObj key(info->PublicKey.pbData, info->PublicKey.cbData);
  Unwrap(info->PublicKey, key);

  const pubkey::KeyBlobHeader header = {
      {PUBLICKEYBLOB, pubkey::kBlobVersion, 0, algorithm->Algid},
      pubkey::kMagic,
      key.length * 8};
  const CRYPT_OBJID_BLOB& parameters = info->Algorithm.Parameters;
  const std::uint64_t size =
      std::uint64_t{sizeof(header)} + parameters.cbData + key.length;
  *pcbBlob = static_cast<unsigned int>(size);
  if (size != *pcbBlob) {
    // A blob that 32 bits can't count can't be had, like one without memory.
    return pubkey::Fail(NTE_NO_MEMORY);
  }
  if (!pubkey::HandOut(*ppBlob, *pcbBlob)) {
    return 0;
  }
  unsigned char* next = pubkey::Append(*ppBlob, &header, sizeof(header));
  next = pubkey::Append(next, parameters.pbData, parameters.cbData);
  pubkey::Append(next, key.data, key.length);
  return 1;
}

}  // namespace korvan
