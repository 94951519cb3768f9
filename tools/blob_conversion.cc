// Calls of the library, and why what comes back may differ.
#include "tools/blob_conversion.h"

#include <korvan/oid_info.h>
#include <korvan/platform/last_error.h>
#include <korvan/public_key.h>

#include <algorithm>
#include <cstdlib>
#include <memory>

#include "tools/oid_search.h"
#include "tools/program.h"

namespace korvan::tools {

namespace {

// Frees what the library hands out.
struct Freer {
  void operator()(unsigned char* buffer) const { std::free(buffer); }
};
using HandedOut = std::unique_ptr<unsigned char, Freer>;

// The provider's own GOST R 34.10-94, whose key stands bare in a certificate.
constexpr ALG_ID kBareKey = 0x2E29;

[[noreturn]] void FailWith(DWORD last_error, const std::string& bad_input,
                           Status bad_status) {
  switch (last_error) {
    case NTE_BAD_ALGID:
    case NTE_BAD_KEY:
      throw Failure(bad_status, bad_input);
    case NTE_NO_MEMORY:
      throw Failure(Status::kInputOutput, "out of memory");
    default:
      throw Failure(Status::kRefused, "last error " + Hex(last_error));
  }
}

DWORD NumberAt(const Bytes& blob, std::size_t at) {
  DWORD number = 0;
  for (std::size_t i = 4; i > 0; --i) {
    number = number << 8 | blob[at + i - 1];
  }
  return number;
}

}  // namespace

Bytes ToBlob(const PublicKeyInfo& info) {
  // The library only reads what it is given.
  std::string oid = info.oid;
  Bytes parameters = info.parameters;
  Bytes bits = info.bits;
  CERT_PUBLIC_KEY_INFO given = {};
  given.Algorithm.pszObjId = oid.data();
  given.Algorithm.Parameters = {static_cast<DWORD>(parameters.size()),
                                parameters.data()};
  given.PublicKey = {static_cast<DWORD>(bits.size()), bits.data(),
                     info.unused_bits};
  unsigned char* blob = nullptr;
  unsigned int size = 0;
  const int done = KRVConvertPublicKeyInfo(0, &given, 0, 0, &blob, &size);
  const HandedOut owner(blob);
  if (done == 0) {
    FailWith(GetLastError(),
             oid + " is no public-key algorithm of the registry",
             Status::kNotFound);
  }
  return Bytes(blob, blob + size);
}

Pieces FromBlob(const Bytes& blob) {
  if (blob.empty()) {
    throw Failure(Status::kRefused, "is empty");
  }
  unsigned char* key = nullptr;
  unsigned char* parameters = nullptr;
  unsigned int key_size = 0;
  unsigned int parameters_size = 0;
  const int done = KRVEncodePublicKeyAndParametrs(
      0, nullptr, blob.data(), static_cast<unsigned int>(blob.size()), 0, 0,
      &key, &key_size, &parameters, &parameters_size);
  const HandedOut key_owner(key);
  const HandedOut parameters_owner(parameters);
  if (done == 0) {
    FailWith(GetLastError(), "is too short for a blob and its key",
             Status::kRefused);
  }
  Pieces pieces;
  pieces.bits.assign(key, key + key_size);
  if (parameters != nullptr) {
    pieces.parameters.assign(parameters, parameters + parameters_size);
  }
  return pieces;
}

ALG_ID AlgidOf(const Bytes& blob) { return NumberAt(blob, 4); }

DWORD BitLengthOf(const Bytes& blob) { return NumberAt(blob, 12); }

std::vector<std::string> OidsOf(ALG_ID algid) {
  std::vector<std::string> oids;
  const auto add = [&](const COidData& record) {
    if (std::ranges::find(oids, record.pszOID) == oids.end()) {
      oids.emplace_back(record.pszOID);
    }
  };
  if (const COidData* const first = FindOIDInfo(
          CRYPT_OID_INFO_ALGID_KEY, &algid, CRYPT_PUBKEY_ALG_OID_GROUP_ID)) {
    add(*first);
  }
  Key key{CRYPT_OID_INFO_ALGID_KEY, {}, {}, {algid, 0}};
  for (const COidData* const record :
       Matches(key, CRYPT_PUBKEY_ALG_OID_GROUP_ID)) {
    add(*record);
  }
  return oids;
}

std::string ReasonForAnotherWayBack(const PublicKeyInfo& info,
                                    const Bytes& blob) {
  if (info.unused_bits != 0) {
    return "The bit string has unused bits, and a blob has none.";
  }
  const bool is_unwrapped = BitLengthOf(blob) / 8 != info.bits.size();
  if (AlgidOf(blob) == kBareKey) {
    return is_unwrapped
               ? "The key is an OCTET STRING and was unwrapped; and on the way "
                 "back the key of 0x2E29 is not wrapped again."
               : "The public key info is not in DER, and comes back so.";
  }
  return is_unwrapped
             ? "The key's OCTET STRING is not in DER, and comes back so."
             : "The key is no OCTET STRING with a header of two or three "
               "bytes, so the blob has it whole; and on the way back the key "
               "of every algorithm but 0x2E29 is put into an OCTET STRING.";
}

}  // namespace korvan::tools
