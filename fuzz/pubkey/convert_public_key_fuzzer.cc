// Makes blobs of any keys and parameters, beside the plain model.

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "pubkey/conversions.h"
#include "pubkey/model.h"
#include "support/bytes.h"

using korvan::test::Bytes;

// The first byte parts the rest: so many parameters, then the key.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes,
                                      std::size_t size) {
  if (size == 0) {
    return 0;
  }
  const std::size_t count = bytes[0] < size ? bytes[0] : size - 1;
  const Bytes parameters(bytes + 1, bytes + 1 + count);
  const Bytes bits(bytes + 1 + count, bytes + size);
  const auto call =
      korvan::test::Convert(korvan::test::kGost2001, parameters, bits);
  if (call.result != 1 ||
      call.blob != korvan::test::ModelBlob(0x2E23, parameters, bits)) {
    std::abort();
  }
  return 0;
}
