#include <korvan/platform/asn1_record.h>
#include <korvan/public_key.h>

#include <cstring>
#include <span>

#include "pubkey/handed_out.h"
#include "pubkey/key_blob.h"

namespace korvan {
namespace {

// The provider's own GOST R 34.10-94, whose certificates carry the bare key.
constexpr ALG_ID kBareKeyAlgorithm = 0x2E29;

using Bytes = std::span<const unsigned char>;

// Where the caller wants what; the buffers' pointers may be null.
struct Outputs {
  unsigned char** key;
  unsigned int* key_size;
  unsigned char** parameters;
  unsigned int* parameters_size;
};

int HandOut(const Outputs& outputs, Bytes key, Bytes parameters) {
  *outputs.key_size = static_cast<unsigned int>(key.size());
  *outputs.parameters_size = static_cast<unsigned int>(parameters.size());
  if (outputs.key != nullptr && !pubkey::HandOutCopy(*outputs.key, key)) {
    return 0;
  }
  if (outputs.parameters != nullptr && !parameters.empty() &&
      !pubkey::HandOutCopy(*outputs.parameters, parameters)) {
    return 0;
  }
  return 1;
}

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

  const Outputs outputs = {ppbKey, pcbKey, ppbParams, pcbParams};
  const Bytes parameters(pbBlob + sizeof(header), parameters_size);
  const Bytes key(parameters.data() + parameters.size(), key_size);
  if (header.head.aiKeyAlg == kBareKeyAlgorithm) {
    return HandOut(outputs, key, parameters);
  }
  CASNTBaseRecord record;
  record.SetTag(pubkey::kOctetString);
  record.SetEntry(key.data(), key_size);
  int status = 0;
  const IdentObj& encoding = record.GetEncodedRecord(&status);
  if (status != 0) {
    return pubkey::Fail(DIGSIG_E_ENCODE);
  }
  const auto* const encoded = static_cast<const unsigned char*>(encoding.data);
  return HandOut(outputs, Bytes(encoded, encoding.length), parameters);
}

}  // namespace korvan
