#include <korvan/platform/asn1_record.h>
#include <korvan/public_key.h>

#include <cstring>

#include "pubkey/handed_out.h"
#include "pubkey/key_blob.h"

namespace korvan {
namespace {

// The provider's own GOST R 34.10-94, whose certificates carry the bare key.
constexpr ALG_ID kBareKeyAlgorithm = 0x2E29;

}  // namespace

int KRVEncodePublicKeyAndParametrs(
    unsigned int /*uUnused1*/, const char* /*pszUnused2*/,
    const unsigned char* pbBlob, unsigned int cbBlob, unsigned int /*uUnused5*/,
    unsigned int /*uUnused6*/, unsigned char** ppbKey, unsigned int* pcbKey,
    unsigned char** ppbParams, unsigned int* pcbParams) {
  if (pbBlob == nullptr || cbBlob == 0) {
    return pubkey::Fail(ERROR_INVALID_PARAMETER);
  }
  if (ppbKey != nullptr) {
    pubkey::TakeBack(*ppbKey);
  }
  if (ppbParams != nullptr) {
    pubkey::TakeBack(*ppbParams);
  }
  pubkey::KeyBlobHeader header;
  if (cbBlob < sizeof(header)) {
    return pubkey::Fail(NTE_BAD_KEY);
  }
  std::memcpy(&header, pbBlob, sizeof(header));
  const unsigned int key_size = header.bitLen >> 3;
  const unsigned int parameters_size =
      cbBlob - static_cast<unsigned int>(sizeof(header)) - key_size;
  if (static_cast<int>(parameters_size) < 0) {
    return pubkey::Fail(NTE_BAD_KEY);
  }

  const unsigned char* const parameters = pbBlob + sizeof(header);
  const unsigned char* encoded = parameters + parameters_size;
  unsigned int encoded_size = key_size;
  CASNTBaseRecord record;
  if (header.head.aiKeyAlg != kBareKeyAlgorithm) {
    record.SetTag(pubkey::kOctetString);
    record.SetEntry(encoded, key_size);
    int status = 0;
    const IdentObj& encoding = record.GetEncodedRecord(&status);
    if (status != 0) {
      return pubkey::Fail(DIGSIG_E_ENCODE);
    }
    encoded = encoding.data;
    encoded_size = encoding.length;
  }
  *pcbKey = encoded_size;
  *pcbParams = parameters_size;

  if (ppbKey != nullptr) {
    if (!pubkey::HandOut(*ppbKey, encoded_size)) {
      return 0;
    }
    pubkey::Append(*ppbKey, encoded, encoded_size);
  }
  if (ppbParams != nullptr && parameters_size != 0) {
    if (!pubkey::HandOut(*ppbParams, parameters_size)) {
      return 0;
    }
    pubkey::Append(*ppbParams, parameters, parameters_size);
  }
  return 1;
}

}  // namespace korvan
