// The library's conversions of keys, on values and with failures in words.
#ifndef KORVAN_TOOLS_BLOB_CONVERSION_H_
#define KORVAN_TOOLS_BLOB_CONVERSION_H_

#include <korvan/cryptoapi.h>

#include <cstddef>
#include <string>
#include <vector>

#include "tools/public_key_info.h"

namespace korvan::tools {

// The key blob of a public key. Throws a Failure where there is none.
Bytes ToBlob(const PublicKeyInfo& info);

// What a blob comes from.
struct Pieces {
  Bytes bits;
  Bytes parameters;
};

// Takes a blob apart. Throws a Failure where it is none.
Pieces FromBlob(const Bytes& blob);

// Two fields of a blob that ToBlob made or FromBlob took.
ALG_ID AlgidOf(const Bytes& blob);
DWORD BitLengthOf(const Bytes& blob);

// The OIDs of the public-key algorithms that the registry has for an ALG_ID,
// the one that its lookup returns first.
std::vector<std::string> OidsOf(ALG_ID algid);

// Why a public key info does not come back from its blob as it was.
std::string ReasonForAnotherWayBack(const PublicKeyInfo& info,
                                    const Bytes& blob);

}  // namespace korvan::tools

#endif  // KORVAN_TOOLS_BLOB_CONVERSION_H_
