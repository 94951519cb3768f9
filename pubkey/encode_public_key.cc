// A key blob to the parts of a certificate's public key.
#include <korvan/platform/asn1_record.h>
#include <korvan/public_key.h>

#include <cstring>

#include "pubkey/failure.h"
#include "pubkey/key_blob.h"
#include "pubkey/octet_string.h"
#include "pubkey/output_buffer.h"

namespace korvan {
namespace {

// The provider's own GOST R 34.10-94. Its certificates carry the bare key.
constexpr ALG_ID kBareKeyAlgorithm = 0x2E29;

// The caller's pointers. Those to buffers may be null: then only sizes are
// asked for.
struct Outputs {
  unsigned char** key;
  unsigned int* key_size;
  unsigned char** parameters;
  unsigned int* parameters_size;
};

int StoreCopies(const Outputs& outputs, pubkey::ByteView key,
                pubkey::ByteView parameters) {
  *outputs.key_size = static_cast<unsigned int>(key.size());
  *outputs.parameters_size = static_cast<unsigned int>(parameters.size());
  if (outputs.key != nullptr && !pubkey::AllocateCopy(*outputs.key, key)) {
    return 0;
  }
  if (outputs.parameters != nullptr && !parameters.empty() &&
      !pubkey::AllocateCopy(*outputs.parameters, parameters)) {
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
    pubkey::FreeEarlierBuffer(*ppbKey);
  }
  if (ppbParams != nullptr) {
    pubkey::FreeEarlierBuffer(*ppbParams);
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
  const pubkey::ByteView parameters(pbBlob + sizeof(header), parameters_size);
  const pubkey::ByteView key(parameters.data() + parameters.size(), key_size);
  if (header.head.aiKeyAlg == kBareKeyAlgorithm) {
    return StoreCopies(outputs, key, parameters);
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
  return StoreCopies(outputs, pubkey::ByteView(encoded, encoding.length),
                     parameters);
}

}  // namespace korvan
